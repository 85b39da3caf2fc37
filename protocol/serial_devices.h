#pragma once

#include <QList>
#include <QString>

namespace halvex {

// A serial device present on this machine, as the Port menu offers it.
struct SerialDevice {
    // The name to keep: the stable /dev/serial/by-id/... link when there is
    // one (it survives replugging into another socket), else the device node.
    QString path;
    QString node;  // /dev/ttyUSB0
    QString description;
    QString manufacturer;
    QString serialNumber;

    // "/dev/serial/by-id/usb-FTDI_...  FT232R USB UART, FTDI, serial A12345"
    QString label() const;
};

// The serial devices QSerialPortInfo finds, with their stable names.
QList<SerialDevice> serialDevicesPresent();

// The link in `byIdFolder` that points at `node`, or `node` itself.
QString stableDeviceName(const QString& node,
                         const QString& byIdFolder = QStringLiteral("/dev/serial/by-id"));

}  // namespace halvex
