#include "protocol/qt_serial_port.h"

namespace halvex {

QtSerialPort::QtSerialPort(QObject* parent) : SerialPort(parent) {
    connect(&port_, &QSerialPort::readyRead, this, &SerialPort::dataArrived);
    connect(&port_, &QSerialPort::errorOccurred, this, &QtSerialPort::onError);
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
    deviceFailed(QStringLiteral("the device went away (%1)").arg(port_.errorString()));
}

void QtSerialPort::abandonDevice() {
    // No flush: the device is gone, and a flush would only fail on it.
    port_.close();
    emit closed();
}

bool QtSerialPort::open(const QString& device, qint32 baudRate) {
    if (port_.isOpen()) {
        port_.close();
    }
    baudRate_ = baudRate;
    port_.setPortName(device);
    if (!port_.open(QIODevice::ReadWrite)) {
        return false;
    }
    // Pseudo-terminals accept any speed; a real port that refuses the speed
    // or the format is as unusable as one that did not open.
    const bool configured = port_.setBaudRate(baudRate) && port_.setDataBits(QSerialPort::Data8) &&
                            port_.setParity(QSerialPort::NoParity) &&
                            port_.setStopBits(QSerialPort::OneStop) &&
                            port_.setFlowControl(QSerialPort::NoFlowControl);
    if (!configured) {
        port_.close();
        return false;
    }
    port_.clear();
    return true;
}

void QtSerialPort::close() {
    if (port_.isOpen()) {
        port_.flush();
        port_.close();
        emit closed();
    }
}

bool QtSerialPort::isOpen() const {
    return port_.isOpen();
}

bool QtSerialPort::writeByte(Byte value) {
    const char c = static_cast<char>(value);
    if (port_.write(&c, 1) == 1) {
        return true;
    }
    deviceFailed(QStringLiteral("writing to it failed (%1)").arg(port_.errorString()));
    return false;
}

int QtSerialPort::bytesWaiting() {
    return static_cast<int>(port_.bytesAvailable());
}

Byte QtSerialPort::readByte() {
    char c = 0;
    if (port_.read(&c, 1) != 1) {
        return 0;
    }
    return static_cast<Byte>(c);
}

void QtSerialPort::discardInput() {
    port_.readAll();
    port_.clear(QSerialPort::Input);
}

bool QtSerialPort::waitForBytes(int msecs) {
    if (port_.bytesAvailable() > 0) {
        return true;
    }
    port_.waitForReadyRead(msecs);
    return port_.bytesAvailable() > 0;
}

}  // namespace halvex
