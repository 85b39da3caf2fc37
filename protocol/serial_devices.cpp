#include "protocol/serial_devices.h"

#include <QDir>
#include <QFileInfo>
#include <QSerialPortInfo>
#include <QStringList>

namespace halvex {

QString SerialDevice::label() const {
    QStringList details;
    for (const QString& detail : {description, manufacturer}) {
        if (!detail.isEmpty() && !details.contains(detail)) {
            details << detail;
        }
    }
    if (!serialNumber.isEmpty()) {
        details << QStringLiteral("serial %1").arg(serialNumber);
    }
    if (details.isEmpty()) {
        return path;
    }
    return path + QStringLiteral("  ") + details.join(QStringLiteral(", "));
}

QString stableDeviceName(const QString& node, const QString& byIdFolder) {
    const QString target = QFileInfo(node).canonicalFilePath();
    if (target.isEmpty()) {
        return node;
    }
    const QDir folder(byIdFolder);
    for (const QFileInfo& link : folder.entryInfoList(QDir::System | QDir::Files, QDir::Name)) {
        if (link.isSymLink() && link.canonicalFilePath() == target) {
            return link.absoluteFilePath();
        }
    }
    return node;
}

QList<SerialDevice> serialDevicesPresent() {
    QList<SerialDevice> devices;
    for (const QSerialPortInfo& info : QSerialPortInfo::availablePorts()) {
        SerialDevice device;
        device.node = info.systemLocation();
        device.path = stableDeviceName(device.node);
        device.description = info.description();
        device.manufacturer = info.manufacturer();
        device.serialNumber = info.serialNumber();
        devices << device;
    }
    return devices;
}

}  // namespace halvex
