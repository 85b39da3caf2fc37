#pragma once

#include <utility>
#include <vector>

#include "protocol/in_process_port.h"

namespace halvex::testing {

// The in-process port with the faults tests need: a device that will not
// open, writes that fail, bytes that come down the line from nowhere, and a
// connection that takes its time, as a network port's does.
class TestPort : public InProcessPort {
  public:
    using InProcessPort::InProcessPort;

    bool open(const QString& device, qint32 baudRate) override {
        if (openFails_ || !InProcessPort::open(device, baudRate)) {
            return false;
        }
        connecting_ = slowConnection_;
        ++opens_;
        return true;
    }
    void close() override {
        connecting_ = false;
        held_.clear();
        InProcessPort::close();
    }
    bool stillConnecting() const override { return isOpen() && connecting_; }
    bool writeByte(Byte value) override {
        if (writeFails_ && isOpen()) {
            deviceFailed(QStringLiteral("writing to it failed"));
            return false;
        }
        if (stillConnecting()) {
            held_.push_back(value);
            return true;
        }
        return InProcessPort::writeByte(value);
    }
    // The port reports an error while the device is still there, as the
    // serial library does for a wakeup that found nothing to read; the
    // reopen loses whatever had come in.
    void raiseFalseAlarm() {
        stillThere_ = true;
        deviceFailed(QStringLiteral("Resource temporarily unavailable"));
    }
    // From now on open() leaves the port connecting until connectionDone().
    void setSlowConnection(bool slow) { slowConnection_ = slow; }
    // The connection is made (what was written meanwhile goes out) or fails
    // as a refused one does.
    void connectionDone(bool made) {
        if (!stillConnecting()) {
            return;
        }
        if (!made) {
            refused_ = true;
            deviceFailed(QStringLiteral("the device server refused the connection"));
            return;
        }
        connecting_ = false;
        for (Byte value : std::exchange(held_, {})) {
            InProcessPort::writeByte(value);
        }
        emit connectionMade();
    }
    int opens() const { return opens_; }
    void setOpenFails(bool fails) { openFails_ = fails; }
    // Every write fails, as on an adapter that was pulled out.
    void setWriteFails(bool fails) { writeFails_ = fails; }
    void injectIncoming(const std::vector<Byte>& bytes) { deliver(bytes); }

  protected:
    QString whyGone(const QString& reported) override {
        if (std::exchange(refused_, false)) {
            return reported;
        }
        return stillThere_ ? QString() : InProcessPort::whyGone(reported);
    }
    bool reopenInPlace() override {
        stillThere_ = false;
        consume(bytesWaiting());
        return true;
    }

  private:
    bool stillThere_ = false;
    bool openFails_ = false;
    bool writeFails_ = false;
    bool slowConnection_ = false;
    bool connecting_ = false;
    bool refused_ = false;
    int opens_ = 0;
    std::vector<Byte> held_;
};

}  // namespace halvex::testing
