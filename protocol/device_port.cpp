#include "protocol/device_port.h"

#include "protocol/qt_serial_port.h"
#include "protocol/rfc2217_port.h"
#include "protocol/tcp_port.h"

namespace halvex {

namespace {
SerialPort* makePort(PortKind kind, QObject* parent) {
    switch (kind) {
        case PortKind::RawTcp:
            return new TcpPort(parent);
        case PortKind::Rfc2217:
            return new Rfc2217Port(parent);
        case PortKind::Local:
            break;
    }
    return new QtSerialPort(parent);
}
}  // namespace

DevicePort::DevicePort(QObject* parent) : SerialPort(parent) {
    use(PortKind::Local);
}

void DevicePort::use(PortKind kind) {
    if (port_ != nullptr) {
        if (kind == kind_) {
            return;
        }
        port_->close();
        port_->disconnect(this);
        port_->deleteLater();
    }
    kind_ = kind;
    // A child, so whoever holds this port still reaches the library's own
    // objects under it.
    port_ = makePort(kind, this);
    connect(port_, &SerialPort::dataArrived, this, &SerialPort::dataArrived);
    connect(port_, &SerialPort::closed, this, &SerialPort::closed);
    connect(port_, &SerialPort::lost, this, &SerialPort::lost);
    connect(port_, &SerialPort::reopened, this, &SerialPort::reopened);
    connect(port_, &SerialPort::connectionMade, this, &SerialPort::connectionMade);
    connect(port_, &SerialPort::notice, this, &SerialPort::notice);
}

bool DevicePort::open(const QString& device, qint32 baudRate) {
    use(portKindOf(device));
    return port_->open(device, baudRate);
}

void DevicePort::close() {
    port_->close();
}

bool DevicePort::isOpen() const {
    return port_->isOpen();
}

bool DevicePort::stillConnecting() const {
    return port_->stillConnecting();
}

qint32 DevicePort::baudRate() const {
    return port_->baudRate();
}

int DevicePort::transportPauseMs() const {
    return port_->transportPauseMs();
}

bool DevicePort::writeByte(Byte value) {
    return port_->writeByte(value);
}

int DevicePort::bytesWaiting() {
    return port_->bytesWaiting();
}

std::vector<Byte> DevicePort::peekWaiting() {
    return port_->peekWaiting();
}

void DevicePort::consume(int count) {
    port_->consume(count);
}

}  // namespace halvex
