#include "session/session.h"

#include "protocol/device_port.h"

namespace halvex {

Session::Session(SerialPort* port, int tickMs, QObject* parent)
    : QObject(parent),
      link_(state_, tickMs),
      receiver_(state_, link_),
      port_(port != nullptr ? port : new DevicePort(this)) {
    if (port_->parent() == nullptr) {
        port_->setParent(this);
    }
    link_.setPort(port_);
    receiver_.attachPort(port_);
}

Session::~Session() {
    link_.stop();
}

bool Session::open(const QString& device, qint32 baudRate) {
    if (!port_->open(device, baudRate)) {
        return false;
    }
    link_.Timer2().start();
    return true;
}

}  // namespace halvex
