#include "protocol/qt_serial_port.h"

#include <poll.h>

#include <QFileInfo>

namespace halvex {

QtSerialPort::QtSerialPort(QObject* parent) : SerialPort(parent), port_(new QSerialPort(this)) {
    connect(port_, &QSerialPort::readyRead, this, &SerialPort::dataArrived);
    connect(port_, &QSerialPort::errorOccurred, this, &QtSerialPort::onError);
}

void QtSerialPort::onError(QSerialPort::SerialPortError error) {
    switch (error) {
        case QSerialPort::ResourceError:
        case QSerialPort::ReadError:
        case QSerialPort::WriteError:
        case QSerialPort::PermissionError:
        case QSerialPort::DeviceNotFoundError:
            break;
        default:
            return;
    }
    deviceFailed(port_->errorString());
}

QString QtSerialPort::whyGone(const QString& reported) {
    // A by-id link or a device node that has vanished: the adapter is out.
    if (!QFileInfo::exists(device_)) {
        return QStringLiteral("the device is no longer there");
    }
    // A terminal whose far end hung up (an adapter being removed, the other
    // side of a pseudo-terminal closed) says so without being read.
    pollfd check{};
    check.fd = static_cast<int>(port_->handle());
    check.events = 0;
    if (check.fd < 0 || ::poll(&check, 1, 0) < 0 || (check.revents & POLLNVAL) != 0) {
        return QStringLiteral("the device went away (%1)").arg(reported);
    }
    if ((check.revents & POLLHUP) != 0) {
        return QStringLiteral("the line hung up");
    }
    if ((check.revents & POLLERR) != 0) {
        return QStringLiteral("the device went away (%1)").arg(reported);
    }
    return {};
}

bool QtSerialPort::reopenInPlace() {
    // What the kernel still holds of a reply stays: only the library's own
    // buffer goes with the close.
    port_->close();
    port_->clearError();
    return openDevice();
}

void QtSerialPort::abandonDevice() {
    // No flush: the device is gone, and a flush would only fail on it.
    port_->close();
    emit closed();
}

bool QtSerialPort::openDevice() {
    port_->setPortName(device_);
    if (!port_->open(QIODevice::ReadWrite)) {
        return false;
    }
    // Pseudo-terminals accept any speed; a real port that refuses the speed
    // or the format is as unusable as one that did not open.
    const bool configured =
        port_->setBaudRate(baudRate_) && port_->setDataBits(QSerialPort::Data8) &&
        port_->setParity(QSerialPort::NoParity) && port_->setStopBits(QSerialPort::OneStop) &&
        port_->setFlowControl(QSerialPort::NoFlowControl);
    if (!configured) {
        port_->close();
        return false;
    }
    return true;
}

bool QtSerialPort::open(const QString& device, qint32 baudRate) {
    if (port_->isOpen()) {
        port_->close();
    }
    device_ = device;
    baudRate_ = baudRate;
    if (!openDevice()) {
        return false;
    }
    port_->clear();
    return true;
}

void QtSerialPort::close() {
    if (port_->isOpen()) {
        port_->flush();
        port_->close();
        emit closed();
    }
}

bool QtSerialPort::isOpen() const {
    return port_->isOpen();
}

bool QtSerialPort::writeByte(Byte value) {
    const char c = static_cast<char>(value);
    if (port_->write(&c, 1) == 1) {
        return true;
    }
    deviceFailed(QStringLiteral("writing to it failed: %1").arg(port_->errorString()));
    return false;
}

int QtSerialPort::bytesWaiting() {
    return static_cast<int>(port_->bytesAvailable());
}

std::vector<Byte> QtSerialPort::peekWaiting() {
    const QByteArray waiting = port_->peek(port_->bytesAvailable());
    return std::vector<Byte>(waiting.cbegin(), waiting.cend());
}

void QtSerialPort::consume(int count) {
    port_->skip(count);
}

}  // namespace halvex
