#pragma once

#include <QString>
#include <cstdint>
#include <optional>

namespace halvex {

// The port choice kept between runs: "HALVEX.BIN" in the current directory,
// six bytes, little-endian: port number (16 bits) then speed (32 bits).
struct PortSettings {
    std::int16_t comPort = 1;
    std::int32_t baudRate = 9600;
};

class SettingsFile {
  public:
    static constexpr const char* kFileName = "HALVEX.BIN";

    explicit SettingsFile(QString path = QString::fromLatin1(kFileName)) : path_(std::move(path)) {}

    bool exists() const;
    // On failure each fills `error` with a sentence naming the file: read
    // returns nothing, write false.
    std::optional<PortSettings> read(QString& error) const;
    bool write(const PortSettings& settings, QString& error) const;

    const QString& path() const { return path_; }

  private:
    QString path_;
};

}  // namespace halvex
