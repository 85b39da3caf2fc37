#include "live_video/preset_thumbnails.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QImageReader>
#include <QPointer>
#include <QRegularExpression>
#include <QSaveFile>
#include <QStandardPaths>

#include "live_video/live_video.h"
#include "protocol/vocabulary.h"
#include "session/session.h"

namespace halvex {

namespace {
// A name past this is cut: a folder name has limits of its own.
constexpr int kLongestLineName = 64;
// What a decoded thumbnail may take, in megabytes, whatever its header says.
constexpr int kDecodeLimitMb = 8;
}  // namespace

PresetThumbnails::PresetThumbnails(Session& session, std::function<QImage()> picture,
                                   std::function<QString()> unit, QObject* parent)
    : QObject(parent), picture_(std::move(picture)), unit_(std::move(unit)) {
    connect(&session, &Session::presetStoredHere, this, &PresetThumbnails::keep);
    watchReplies(session);
}

void PresetThumbnails::watchReplies(Session& session) {
    // The session announces no clearing and no storing at typed angles; the
    // unit's answers to them say it, whoever asked. The receiver outlives
    // this object, so its watcher looks first.
    const QPointer<PresetThumbnails> self(this);
    session.receiver().addReplyWatcher([self](const std::vector<Byte>& reply) {
        if (self == nullptr || reply.empty()) {
            return;
        }
        if (reply[0] == vocab::ClearAllPresets::kCode) {
            self->forgetAll();
        } else if (reply[0] == vocab::StorePreset::kCode && reply.size() > 1) {
            self->forget(static_cast<int>(vocab::get(reply, vocab::preset_record::kPreset)));
        }
    });
}

QString PresetThumbnails::folder() const {
    return QStandardPaths::writableLocation(QStandardPaths::AppDataLocation) +
           QStringLiteral("/thumbnails/") + unit_();
}

QString PresetThumbnails::fileOf(int number) const {
    return folder() + QStringLiteral("/preset-%1.png").arg(number);
}

QImage PresetThumbnails::thumbnail(int number) const {
    const QFileInfo file(fileOf(number));
    if (!file.isFile() || file.size() > kMostFileBytes) {
        return {};
    }
    QImageReader reader(file.filePath(), "png");
    reader.setAutoDetectImageFormat(false);
    reader.setAllocationLimit(kDecodeLimitMb);
    const QSize size = reader.size();
    if (!size.isValid() || size.width() > kMostSide || size.height() > kMostSide) {
        return {};
    }
    return reader.read();
}

void PresetThumbnails::keep(int number) {
    const QImage picture = picture_ ? picture_() : QImage();
    if (picture.isNull()) {
        forget(number);
        return;
    }
    const QImage small =
        picture.scaled(kWidth, kWidth, Qt::KeepAspectRatio, Qt::SmoothTransformation)
            .convertToFormat(QImage::Format_RGB32);
    QDir().mkpath(folder());
    QSaveFile file(fileOf(number));
    if (!file.open(QIODevice::WriteOnly) || !small.save(&file, "PNG") || !file.commit()) {
        // A full disk or a folder that cannot be written: the preset is
        // stored all the same, and an old picture would show the wrong place.
        QFile::remove(fileOf(number));
    }
    emit changed(number);
}

void PresetThumbnails::forget(int number) {
    if (QFile::remove(fileOf(number))) {
        emit changed(number);
    }
}

void PresetThumbnails::forgetAll() {
    QDir pictures(folder());
    for (const QString& name :
         pictures.entryList({QStringLiteral("preset-*.png")}, QDir::Files | QDir::Hidden)) {
        pictures.remove(name);
    }
    emit allChanged();
}

QString unitFolderName(const QString& line, int unitId) {
    static const QRegularExpression unsafe(QStringLiteral("[^A-Za-z0-9._-]+"));
    QString name = line;
    name.replace(unsafe, QStringLiteral("_"));
    // No hidden folder, nor one that climbs out of the thumbnails.
    while (name.startsWith(u'_') || name.startsWith(u'.')) {
        name.remove(0, 1);
    }
    name.truncate(kLongestLineName);
    while (name.endsWith(u'_') || name.endsWith(u'.')) {
        name.chop(1);
    }
    if (name.isEmpty()) {
        name = QStringLiteral("line");
    }
    return name + QStringLiteral("-unit%1").arg(unitId);
}

QImage pictureToKeep(const std::array<OutputPicture, 2>& outputs) {
    for (const OutputPicture& output : outputs) {
        if (output.playing && !output.frame.isNull()) {
            return output.frame;
        }
    }
    return {};
}

QImage pictureToKeep(LiveVideo& video) {
    std::array<OutputPicture, 2> outputs;
    for (int output = 0; output < LiveVideo::kOutputs; ++output) {
        const VideoPipeline& pipeline = video.pipeline(output);
        outputs.at(static_cast<std::size_t>(output)) = {
            pipeline.state() == VideoPipeline::State::Playing, pipeline.lastFrame()};
    }
    return pictureToKeep(outputs);
}

}  // namespace halvex
