#include "commissioning/headless_line.h"

namespace halvex::commissioning {

HeadlessLine::HeadlessLine(SerialPort* port, int tickMs)
    : link_(state_, tickMs), receiver_(state_, link_), tap_(state_, receiver_), port_(port) {
    if (port_->parent() == nullptr) {
        port_->setParent(&state_);
    }
    link_.setPort(port_);
    receiver_.attachPort(port_);
}

HeadlessLine::~HeadlessLine() {
    link_.stop();
    port_->close();
}

bool HeadlessLine::open(const QString& device, qint32 baudRate) {
    if (!port_->open(device, baudRate)) {
        return false;
    }
    link_.Timer2().start();
    return true;
}

}  // namespace halvex::commissioning
