#pragma once

#include "protocol/in_process_port.h"

namespace halvex::testing {

// The in-process port with the faults tests need: a device that will not
// open, and bytes that come down the line from nowhere.
class TestPort : public InProcessPort {
  public:
    using InProcessPort::InProcessPort;

    bool open(const QString& device, qint32 baudRate) override {
        return !openFails_ && InProcessPort::open(device, baudRate);
    }
    void setOpenFails(bool fails) { openFails_ = fails; }
    void injectIncoming(const std::vector<Byte>& bytes) { deliver(bytes); }

  private:
    bool openFails_ = false;
};

}  // namespace halvex::testing
