#include "live_video/video_source.h"

#include <QRegularExpression>
#include <QUrl>

namespace halvex {

namespace {

constexpr int kMaxAddressLength = 2048;

std::optional<VideoSource> refuse(const QString& text, const QString& reason, QString* why) {
    if (why != nullptr) {
        // What the operator typed, cut short: it may be anything.
        const QString shown = text.size() > 80 ? text.left(77) + QStringLiteral("...") : text;
        *why = QStringLiteral("not a video source: %1 (%2)").arg(shown, reason);
    }
    return std::nullopt;
}

// A capture device: /dev/videoN, or one of udev's stable names for it.
bool isDevicePath(const QString& path) {
    static const QRegularExpression device(
        QStringLiteral("^/dev/(video[0-9]{1,3}|v4l/by-(id|path)/[A-Za-z0-9._:+-]+)$"));
    return device.match(path).hasMatch();
}

// Which kind a URL's scheme stands for; None when it is none of ours.
VideoSource::Kind kindOfScheme(const QString& scheme) {
    if (scheme == QLatin1String("rtsp") || scheme == QLatin1String("rtsps")) {
        return VideoSource::Kind::Rtsp;
    }
    if (scheme == QLatin1String("rtp")) {
        return VideoSource::Kind::Rtp;
    }
    if (scheme == QLatin1String("udp")) {
        return VideoSource::Kind::Udp;
    }
    if (scheme == QLatin1String("srt")) {
        return VideoSource::Kind::Srt;
    }
    if (scheme == QLatin1String("http") || scheme == QLatin1String("https")) {
        return VideoSource::Kind::Http;
    }
    return VideoSource::Kind::None;
}

// The kinds that receive on a port rather than ask a server for a path.
bool needsPort(VideoSource::Kind kind) {
    return kind == VideoSource::Kind::Rtp || kind == VideoSource::Kind::Udp ||
           kind == VideoSource::Kind::Srt;
}

std::optional<VideoSource> parseUrl(const QString& text, QString* why) {
    const QUrl url(text, QUrl::StrictMode);
    if (!url.isValid()) {
        return refuse(text, QStringLiteral("not a well-formed address"), why);
    }
    const VideoSource::Kind kind = kindOfScheme(url.scheme().toLower());
    if (kind == VideoSource::Kind::None) {
        return refuse(text, QStringLiteral("unknown kind of address"), why);
    }
    if (url.host().isEmpty()) {
        return refuse(text, QStringLiteral("no host"), why);
    }
    if (needsPort(kind)) {
        if (url.port() <= 0) {
            return refuse(text, QStringLiteral("no port"), why);
        }
        // A path would be ignored without a word; the operator meant something else.
        if (!url.path().isEmpty() && url.path() != QLatin1String("/")) {
            return refuse(text, QStringLiteral("a path where only host and port belong"), why);
        }
        if (kind != VideoSource::Kind::Srt && url.hasQuery()) {
            return refuse(text, QStringLiteral("options where only host and port belong"), why);
        }
    }
    return VideoSource{kind, text};
}

}  // namespace

std::optional<VideoSource> parseVideoSource(const QString& given, QString* why) {
    const QString text = given.trimmed();
    if (text.isEmpty() || text.compare(QLatin1String("none"), Qt::CaseInsensitive) == 0) {
        return VideoSource{};
    }
    if (text.size() > kMaxAddressLength) {
        return refuse(text, QStringLiteral("too long"), why);
    }
    // Spaces and control characters belong in no address; a URL would
    // only carry them percent-encoded.
    for (const QChar c : text) {
        if (c.isSpace() || c.category() == QChar::Other_Control) {
            return refuse(text, QStringLiteral("spaces or control characters"), why);
        }
    }
    static const QLatin1String v4l2Scheme("v4l2://");
    if (text.startsWith(v4l2Scheme, Qt::CaseInsensitive)) {
        const QString path = text.mid(v4l2Scheme.size());
        if (!isDevicePath(path)) {
            return refuse(text, QStringLiteral("not a capture device"), why);
        }
        return VideoSource{VideoSource::Kind::Device, path};
    }
    if (text.startsWith(QLatin1Char('/'))) {
        if (!isDevicePath(text)) {
            return refuse(text, QStringLiteral("not a capture device"), why);
        }
        return VideoSource{VideoSource::Kind::Device, text};
    }
    return parseUrl(text, why);
}

QString sourceText(const VideoSource& source) {
    return source.kind == VideoSource::Kind::None ? QString() : source.address;
}

}  // namespace halvex
