#pragma once

#include "protocol/in_process_port.h"

namespace halvex::testing {

// The in-process port with the faults tests need: a device that will not
// open, writes that fail, and bytes that come down the line from nowhere.
class TestPort : public InProcessPort {
  public:
    using InProcessPort::InProcessPort;

    bool open(const QString& device, qint32 baudRate) override {
        return !openFails_ && InProcessPort::open(device, baudRate);
    }
    bool writeByte(Byte value) override {
        if (writeFails_ && isOpen()) {
            deviceFailed(QStringLiteral("writing to it failed"));
            return false;
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
    void setOpenFails(bool fails) { openFails_ = fails; }
    // Every write fails, as on an adapter that was pulled out.
    void setWriteFails(bool fails) { writeFails_ = fails; }
    void injectIncoming(const std::vector<Byte>& bytes) { deliver(bytes); }

  protected:
    QString whyGone(const QString& reported) override {
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
};

}  // namespace halvex::testing
