#include "recorder/recording_file.h"

#include <QCoreApplication>

#include "protocol/line_recording.h"

namespace halvex {

namespace {
bool writeAll(QFile& file, const std::vector<Byte>& bytes) {
    const auto size = static_cast<qint64>(bytes.size());
    return file.write(reinterpret_cast<const char*>(bytes.data()), size) == size && file.flush();
}
}  // namespace

QString RecordingFile::open(const QString& path, const QString& lineName) {
    close();
    file_.setFileName(path);
    if (!file_.open(QIODevice::WriteOnly | QIODevice::Truncate)) {
        return QStringLiteral("Cannot record to %1: %2").arg(path, file_.errorString());
    }
    const QString application = QStringLiteral("%1 %2").arg(QCoreApplication::applicationName(),
                                                            QCoreApplication::applicationVersion());
    if (!writeAll(file_, recording::recordingHeader(application.trimmed().toStdString(),
                                                    lineName.toStdString()))) {
        const QString error = file_.errorString();
        close();
        return QStringLiteral("Cannot record to %1: %2").arg(path, error);
    }
    records_ = 0;
    return {};
}

bool RecordingFile::write(const recording::LineRecord& record) {
    if (!file_.isOpen()) {
        return false;
    }
    if (!writeAll(file_, recording::recordingBlock(record))) {
        close();
        return false;
    }
    ++records_;
    return true;
}

void RecordingFile::close() {
    if (file_.isOpen()) {
        file_.close();
    }
}

}  // namespace halvex
