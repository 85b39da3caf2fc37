#pragma once

#include <QString>
#include <QStringList>
#include <QTemporaryDir>
#include <cstdint>
#include <memory>

namespace halvex {

class VornixU;

namespace fuzz {

class FeedPort;
class SilenceablePeer;

// The whole console, online against the virtual unit on an in-process port,
// with every reply decoder the window registers. After going online the unit
// falls silent, and the receive path hears only the bytes fed to it.
class ReceiveHarness {
  public:
    // Needs a QApplication. Point QSettings somewhere harmless first.
    ReceiveHarness();
    ~ReceiveHarness();
    ReceiveHarness(const ReceiveHarness&) = delete;
    ReceiveHarness& operator=(const ReceiveHarness&) = delete;

    bool online() const { return online_; }

    // Puts the bytes on the line in one burst and runs the receive path until
    // the port is drained. Returns what is wrong afterwards (a flag left set,
    // an exception that was not a range fault), or an empty string.
    QString feed(const std::uint8_t* data, std::size_t size);

  private:
    QString checkInvariants() const;

    QTemporaryDir directory_;
    std::unique_ptr<SilenceablePeer> peer_;
    FeedPort* port_ = nullptr;
    std::unique_ptr<VornixU> window_;
    QStringList unexpectedErrors_;
    bool online_ = false;
};

}  // namespace fuzz
}  // namespace halvex
