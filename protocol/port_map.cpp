#include "protocol/port_map.h"

#include <QByteArray>
#include <QSettings>

namespace halvex {

namespace {
// ~/.config/halvex/halvex.conf, beside the HALVEX.BIN of a menu-started console.
constexpr const char* kOrganization = "halvex";
constexpr const char* kApplication = "halvex";

QString settingsKey(int portNumber) {
    return QStringLiteral("Ports/COM%1").arg(portNumber);
}
}  // namespace

PortMapping comPortMapping(int portNumber) {
    const QByteArray variable = "HALVEX_COM" + QByteArray::number(portNumber);
    const QByteArray mapped = qgetenv(variable.constData());
    if (!mapped.isEmpty()) {
        return {QString::fromLocal8Bit(mapped), PortSource::Environment};
    }
    const QSettings settings(QSettings::NativeFormat, QSettings::UserScope,
                             QLatin1String(kOrganization), QLatin1String(kApplication));
    const QString chosen = settings.value(settingsKey(portNumber)).toString();
    if (!chosen.isEmpty()) {
        return {chosen, PortSource::Settings};
    }
    return {QStringLiteral("/dev/ttyS%1").arg(portNumber - 1), PortSource::Default};
}

QString comPortDevice(int portNumber) {
    return comPortMapping(portNumber).device;
}

void setComPortDevice(int portNumber, const QString& device) {
    QSettings settings(QSettings::NativeFormat, QSettings::UserScope, QLatin1String(kOrganization),
                       QLatin1String(kApplication));
    if (device.isEmpty()) {
        settings.remove(settingsKey(portNumber));
    } else {
        settings.setValue(settingsKey(portNumber), device);
    }
}

}  // namespace halvex
