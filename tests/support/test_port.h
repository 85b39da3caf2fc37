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
    void setOpenFails(bool fails) { openFails_ = fails; }
    // Every write fails, as on an adapter that was pulled out.
    void setWriteFails(bool fails) { writeFails_ = fails; }
    void injectIncoming(const std::vector<Byte>& bytes) { deliver(bytes); }

  private:
    bool openFails_ = false;
    bool writeFails_ = false;
};

}  // namespace halvex::testing
