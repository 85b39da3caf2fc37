#include "live_video/stream_description.h"

#include <QUrl>

namespace halvex {

namespace {

// The decoding side, the same for every kind.
#define HALVEX_DECODE_TAIL                                                                 \
    " parsebin name=parse tee name=split allow-not-linked=true ! decodebin ! "             \
    "videoconvert ! video/x-raw,format=BGRx ! appsink name=sink sync=false max-buffers=1 " \
    "drop=true enable-last-sample=false"

// latency=0 and drop-on-latency: the picture is for steering the unit, and
// a late frame is worth less than a missing one. Only the video stream.
constexpr StreamDescription kRtsp{
    "rtspsrc name=src latency=0 drop-on-latency=true ! application/x-rtp,media=video "
    "!" HALVEX_DECODE_TAIL,
    "location"};
// Plain RTP has no description of what it carries: H.264 with the usual
// dynamic payload type, as video encoders send by default.
constexpr StreamDescription kRtp{
    "udpsrc name=src caps=\"application/x-rtp,media=video,clock-rate=90000,encoding-name=H264,"
    "payload=96\" !" HALVEX_DECODE_TAIL,
    "uri"};
// An MPEG transport stream; parsebin finds out what it carries.
constexpr StreamDescription kUdp{"udpsrc name=src !" HALVEX_DECODE_TAIL, "uri"};
constexpr StreamDescription kSrt{"srtsrc name=src !" HALVEX_DECODE_TAIL, "uri"};
constexpr StreamDescription kDevice{"v4l2src name=src !" HALVEX_DECODE_TAIL, "device"};
// An MJPEG camera: multipart JPEGs, stamped as they arrive.
constexpr StreamDescription kHttp{
    "souphttpsrc name=src is-live=true do-timestamp=true !" HALVEX_DECODE_TAIL, "location"};

#undef HALVEX_DECODE_TAIL

}  // namespace

std::optional<StreamDescription> streamDescription(VideoSource::Kind kind) {
    switch (kind) {
        case VideoSource::Kind::None:
            return std::nullopt;
        case VideoSource::Kind::Device:
            return kDevice;
        case VideoSource::Kind::Rtsp:
            return kRtsp;
        case VideoSource::Kind::Rtp:
            return kRtp;
        case VideoSource::Kind::Udp:
            return kUdp;
        case VideoSource::Kind::Srt:
            return kSrt;
        case VideoSource::Kind::Http:
            return kHttp;
    }
    return std::nullopt;
}

QString sourceProperty(const VideoSource& source) {
    if (source.kind != VideoSource::Kind::Rtp) {
        return source.address;
    }
    QUrl url(source.address);
    url.setScheme(QStringLiteral("udp"));
    return url.toString();
}

std::optional<const char*> recordingParser(const QString& capsName) {
    struct Entry {
        const char* caps;
        const char* parser;
    };
    // Matroska wants H.264 and H.265 in their "avc"/"hvc1" form, which
    // the parsers make from the byte streams that arrive.
    static constexpr Entry kParsers[] = {
        {"video/x-h264", "h264parse"}, {"video/x-h265", "h265parse"},
        {"image/jpeg", "jpegparse"},   {"video/mpeg", ""},
        {"video/x-vp8", ""},           {"video/x-vp9", ""},
        {"video/x-av1", "av1parse"},   {"video/x-raw", ""},
    };
    for (const Entry& entry : kParsers) {
        if (capsName == QLatin1String(entry.caps)) {
            return entry.parser;
        }
    }
    return std::nullopt;
}

}  // namespace halvex
