#include "protocol/serial_port.h"

#include <QTimer>
#include <algorithm>

namespace halvex {

int SerialPort::characterTimeMs(int characters, int floorMs) const {
    const qint32 baud = std::max<qint32>(baudRate(), 300);
    // Ten bits a character: start, eight data, stop.
    const int ms = static_cast<int>((characters * 10 * 1000LL + baud - 1) / baud);
    return std::max(ms, floorMs);
}

void SerialPort::deviceFailed(const QString& reason) {
    if (lossPending_ || !isOpen()) {
        return;
    }
    lossPending_ = true;
    QTimer::singleShot(0, this, [this, reason] {
        lossPending_ = false;
        if (isOpen()) {
            abandonDevice();
            emit lost(reason);
        }
    });
}

}  // namespace halvex
