#include "protocol/serial_port.h"

#include <QTimer>
#include <algorithm>

namespace halvex {

SerialPort::SerialPort(QObject* parent) : QObject(parent) {
    // Bytes from the device show that it works, whatever came before.
    connect(this, &SerialPort::dataArrived, this, [this] { reopens_.clear(); });
}

int SerialPort::characterTimeMs(int characters, int floorMs) const {
    const qint32 baud = std::max<qint32>(baudRate(), 300);
    // Ten bits a character: start, eight data, stop.
    const int ms = static_cast<int>((characters * 10 * 1000LL + baud - 1) / baud);
    return std::max(ms, floorMs);
}

void SerialPort::deviceFailed(const QString& reason) {
    if (failurePending_ || !isOpen()) {
        return;
    }
    failurePending_ = true;
    QTimer::singleShot(0, this, [this, reason] {
        failurePending_ = false;
        if (isOpen()) {
            confirmFailure(reason);
        }
    });
}

void SerialPort::confirmFailure(const QString& reason) {
    // A serial library may report an error for a wakeup that found nothing
    // to read, and then stop listening to the device. The device is still
    // there: reopening it brings the notifications back without the
    // connection sequence.
    QString why = whyGone(reason);
    if (why.isEmpty()) {
        while (!reopens_.empty() && reopens_.front().elapsed() > kReopenWindowMs) {
            reopens_.pop_front();
        }
        if (static_cast<int>(reopens_.size()) >= kMostReopens) {
            why = QStringLiteral("it keeps failing (%1)").arg(reason);
        } else if (reopenInPlace()) {
            reopens_.emplace_back();
            reopens_.back().start();
            emit reopened(reason);
            return;
        } else {
            why = QStringLiteral("it could not be opened again (%1)").arg(reason);
        }
    }
    if (isOpen()) {
        abandonDevice();
    } else {
        emit closed();  // the reopen failed and left it closed
    }
    emit lost(why);
}

}  // namespace halvex
