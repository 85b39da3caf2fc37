#pragma once

#include <QObject>
#include <QString>

#include "protocol/form_state.h"
#include "protocol/link.h"
#include "protocol/receiver.h"
#include "protocol/serial_port.h"

namespace halvex {

// One unit on one line, as everything that drives it shares it: the form
// state, the link (one frame a tick, the reply watchdog) and the receive
// path, on a port the session owns. No widgets: the console's window and the
// command line each hold one, and nothing else opens a line of its own.
class Session : public QObject {
    Q_OBJECT
  public:
    // Takes `port` unless it has a parent already; with none, the local
    // device or network address that the port settings name.
    explicit Session(SerialPort* port = nullptr, int tickMs = Link::kTickMs,
                     QObject* parent = nullptr);
    ~Session() override;
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    // Opens the port and starts the tick, for a caller that does without the
    // connection sequence; false when the port will not open.
    bool open(const QString& device, qint32 baudRate);

    FormState& state() { return state_; }
    Link& link() { return link_; }
    Receiver& receiver() { return receiver_; }
    SerialPort& port() { return *port_; }

  private:
    FormState state_;
    Link link_;
    Receiver receiver_;
    SerialPort* port_;
};

}  // namespace halvex
