#include "protocol/port_map.h"

#include <QByteArray>

namespace halvex {

QString comPortDevice(int portNumber) {
    const QByteArray variable = "HALVEX_COM" + QByteArray::number(portNumber);
    const QByteArray mapped = qgetenv(variable.constData());
    if (!mapped.isEmpty()) {
        return QString::fromLocal8Bit(mapped);
    }
    return QStringLiteral("/dev/ttyS%1").arg(portNumber - 1);
}

}  // namespace halvex
