#include "protocol/in_process_port.h"

#include <algorithm>

namespace halvex {

namespace {
// How often the peer's clock moves while the port is open, so that things the
// unit does on its own (moves, tours, camera answers) reach the console.
constexpr int kClockIntervalMs = 20;
}  // namespace

InProcessPort::InProcessPort(UnitPeer* peer, QObject* parent) : SerialPort(parent), peer_(peer) {
    clockTimer_.setInterval(kClockIntervalMs);
    connect(&clockTimer_, &QTimer::timeout, this, &InProcessPort::pump);
}

bool InProcessPort::open(const QString& /*device*/, qint32 baudRate) {
    baudRate_ = baudRate;
    open_ = true;
    incoming_.clear();
    clock_.start();
    clockTimer_.start();
    return true;
}

void InProcessPort::close() {
    const bool wasOpen = open_;
    open_ = false;
    clockTimer_.stop();
    incoming_.clear();
    if (wasOpen) {
        emit closed();
    }
}

bool InProcessPort::writeByte(Byte value) {
    if (!open_) {
        return false;
    }
    if (peer_ != nullptr) {
        peer_->receiveFromConsole(&value, 1);
    }
    schedulePump();
    return true;
}

int InProcessPort::bytesWaiting() {
    return static_cast<int>(incoming_.size());
}

std::vector<Byte> InProcessPort::peekWaiting() {
    return std::vector<Byte>(incoming_.begin(), incoming_.end());
}

void InProcessPort::consume(int count) {
    const auto taken = std::min(incoming_.size(), static_cast<std::size_t>(count));
    incoming_.erase(incoming_.begin(), incoming_.begin() + static_cast<std::ptrdiff_t>(taken));
}

void InProcessPort::deliver(const std::vector<Byte>& bytes) {
    incoming_.insert(incoming_.end(), bytes.begin(), bytes.end());
    if (!incoming_.empty()) {
        emit dataArrived();
    }
}

void InProcessPort::schedulePump() {
    if (pumpScheduled_) {
        return;
    }
    pumpScheduled_ = true;
    QTimer::singleShot(0, this, [this] {
        pumpScheduled_ = false;
        pump();
    });
}

bool InProcessPort::collect() {
    if (!open_ || peer_ == nullptr) {
        return false;
    }
    peer_->advanceTo(clock_.elapsed());
    const std::vector<Byte> out = peer_->takeOutput();
    incoming_.insert(incoming_.end(), out.begin(), out.end());
    return !out.empty();
}

void InProcessPort::pump() {
    // Like a real port: an event for bytes that came, none for bytes that
    // are still waiting.
    if (collect()) {
        emit dataArrived();
    }
}

}  // namespace halvex
