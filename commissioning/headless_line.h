#pragma once

#include <QString>

#include "commissioning/unit_line.h"
#include "protocol/form_state.h"
#include "protocol/link.h"
#include "protocol/receiver.h"
#include "protocol/serial_port.h"

namespace halvex::commissioning {

// The console's line without its window, for commissioning from the command
// line: the same form state, link (one frame a tick, the reply watchdog) and
// receive path as the console's, on a port of its own. Needs an event loop
// but no display.
class HeadlessLine {
  public:
    // Owns `port` unless it has a parent already.
    explicit HeadlessLine(SerialPort* port, int tickMs = Link::kTickMs);
    ~HeadlessLine();
    HeadlessLine(const HeadlessLine&) = delete;
    HeadlessLine& operator=(const HeadlessLine&) = delete;

    // Opens the port and starts the tick; false when the port will not open.
    bool open(const QString& device, qint32 baudRate);

    FormState& state() { return state_; }
    Link& link() { return link_; }
    const ReplyTap& tap() const { return tap_; }

  private:
    FormState state_;
    Link link_;
    Receiver receiver_;
    ReplyTap tap_;
    SerialPort* port_;
};

}  // namespace halvex::commissioning
