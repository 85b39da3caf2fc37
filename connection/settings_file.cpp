#include "connection/settings_file.h"

#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

namespace halvex {

namespace {
constexpr int kFileSize = 6;
}

bool SettingsFile::exists() const {
    return QFileInfo::exists(path_);
}

std::optional<PortSettings> SettingsFile::read(QString& error) const {
    QFile file(path_);
    if (!file.open(QIODevice::ReadOnly)) {
        error = QStringLiteral("The settings file \"%1\" could not be read: %2.")
                    .arg(path_, file.errorString());
        return std::nullopt;
    }
    const QByteArray bytes = file.read(kFileSize);
    if (bytes.size() < kFileSize) {
        error = QStringLiteral("The settings file \"%1\" holds %2 bytes; it needs 6.")
                    .arg(path_)
                    .arg(bytes.size());
        return std::nullopt;
    }
    const auto byte = [&bytes](int i) { return static_cast<std::uint8_t>(bytes[i]); };
    PortSettings settings;
    settings.comPort = static_cast<std::int16_t>(byte(0) | (byte(1) << 8));
    settings.baudRate = static_cast<std::int32_t>(
        static_cast<std::uint32_t>(byte(2)) | (static_cast<std::uint32_t>(byte(3)) << 8) |
        (static_cast<std::uint32_t>(byte(4)) << 16) | (static_cast<std::uint32_t>(byte(5)) << 24));
    return settings;
}

bool SettingsFile::write(const PortSettings& settings, QString& error) const {
    const auto port = static_cast<std::uint16_t>(settings.comPort);
    const auto baud = static_cast<std::uint32_t>(settings.baudRate);
    const char bytes[kFileSize] = {
        static_cast<char>(port & 0xFF),         static_cast<char>(port >> 8),
        static_cast<char>(baud & 0xFF),         static_cast<char>((baud >> 8) & 0xFF),
        static_cast<char>((baud >> 16) & 0xFF), static_cast<char>(baud >> 24)};
    // Written to a temporary and renamed, so a failed write never leaves a
    // half-written file behind. Unbuffered, because a buffered write that the
    // disk cuts short (full, or over the size limit) still commits as whole.
    QSaveFile file(path_);
    if (file.open(QIODevice::WriteOnly | QIODevice::Unbuffered)) {
        if (file.write(bytes, kFileSize) == kFileSize && file.commit()) {
            return true;
        }
        error = QStringLiteral("The settings file \"%1\" could not be written: %2.")
                    .arg(path_, file.errorString());
        return false;
    }
    // No new file may be made beside it (a folder where only the file itself
    // is writable): write the file in place.
    QFile inPlace(path_);
    if (!exists() ||
        !inPlace.open(QIODevice::WriteOnly | QIODevice::Truncate | QIODevice::Unbuffered) ||
        inPlace.write(bytes, kFileSize) != kFileSize || !inPlace.flush()) {
        const bool inPlaceFailed = inPlace.error() != QFileDevice::NoError;
        error = QStringLiteral("The settings file \"%1\" could not be written: %2.")
                    .arg(path_, inPlaceFailed ? inPlace.errorString() : file.errorString());
        return false;
    }
    return true;
}

}  // namespace halvex
