#include "protocol/receiver.h"

#include <utility>

#include "protocol/capture_line.h"
#include "protocol/fault_guard.h"
#include "protocol/link.h"
#include "protocol/reply_scan.h"

namespace halvex {

namespace {
// An unfinished reply is waited for this many character times after its last
// byte (and at least the floor, to ride over scheduling jitter) before it
// counts as cut.
constexpr int kSettleCharacters = 8;
constexpr int kSettleFloorMs = 20;
}  // namespace

Receiver::Receiver(FormState& state, Link& link, QObject* parent)
    : QObject(parent), state_(state), link_(link) {
    settle_.setSingleShot(true);
    connect(&settle_, &QTimer::timeout, this, [this] {
        guarded(state_, "SerPort1_OnComm", [this] { onSettled(); });
        reportWire(recording::Verdict::Cut);
    });
}

void Receiver::attachPort(SerialPort* port) {
    if (port_ != nullptr) {
        disconnect(port_, nullptr, this, nullptr);
    }
    port_ = port;
    unfinished_ = false;
    settle_.stop();
    if (port_ != nullptr) {
        connect(port_, &SerialPort::dataArrived, this, &Receiver::onDataArrived);
        connect(port_, &SerialPort::reopened, this,
                [this] { guarded(state_, "SerPort1_OnComm", [this] { onPortReopened(); }); });
        connect(port_, &SerialPort::closed, this, [this] {
            unfinished_ = false;
            settle_.stop();
        });
    }
}

void Receiver::registerDecoder(Byte code, Decoder decoder) {
    decoders_[code] = std::move(decoder);
}

void Receiver::addRefreshHook(std::function<void()> hook) {
    refreshHooks_.push_back(std::move(hook));
}

int Receiver::settleMs() const {
    if (fixedSettleMs_ >= 0 || port_ == nullptr) {
        return std::max(fixedSettleMs_, 0);
    }
    return port_->characterTimeMs(kSettleCharacters, kSettleFloorMs) + port_->transportPauseMs();
}

void Receiver::addReplyWatcher(ReplyWatcher watcher) {
    replyWatchers_.push_back(std::move(watcher));
}

void Receiver::onDataArrived() {
    guarded(state_, "SerPort1_OnComm", [this] { ReceiveFrame(); });
    // A reply cut off by a range fault (one running past RxBuffer) still
    // shows in the log, as cut.
    reportWire(recording::Verdict::Cut);
    scheduleLeftovers();
}

void Receiver::onSettled() {
    if (!unfinished_) {
        return;
    }
    receive(true);
    scheduleLeftovers();
}

void Receiver::onPortReopened() {
    // Whatever of a reply had come went with the library's buffer: that reply
    // is lost, and the watchdog reports its frame as unanswered. Bytes still
    // waiting are looked at afresh.
    if (unfinished_) {
        unfinished_ = false;
        settle_.stop();
        showFault();
    }
    scheduleLeftovers();
}

void Receiver::scheduleLeftovers() {
    // A second reply that came with the first stays in the port, and the port
    // raises no event for bytes it already holds: raise it here. An
    // unfinished reply waits for its own event or the settle time instead.
    if (unfinished_ || leftoversScheduled_ || port_ == nullptr || !port_->isOpen() ||
        port_->bytesWaiting() == 0) {
        return;
    }
    leftoversScheduled_ = true;
    QTimer::singleShot(0, this, [this] {
        leftoversScheduled_ = false;
        if (!unfinished_ && port_ != nullptr && port_->isOpen() && port_->bytesWaiting() > 0) {
            onDataArrived();
        }
    });
}

void Receiver::showFault() {
    state_.setLamp(LinkLamp::Fault);
}

void Receiver::ReceiveFrame() {
    if (port_ != nullptr) {
        receive(false);
    }
}

void Receiver::receive(bool settled) {
    const int waiting = port_->bytesWaiting();
    if (waiting == 0) {
        // An event that finds nothing, or a reply whose bytes went with a
        // reopened port: the lamp says so, and a waiting sender is released.
        unfinished_ = false;
        link_.noteReceiveEvent();
        showFault();
        return;
    }
    // The unit is answering.
    link_.Timer4().stop();
    const std::vector<Byte> bytes = port_->peekWaiting();
    const ReplyScan scan = scanReply(bytes, settled);
    if (scan.outcome == ReplyScan::Outcome::Unfinished) {
        // Only new bytes put the settle time off again.
        if (!unfinished_ || waiting != unfinishedBytes_ || !settle_.isActive()) {
            settle_.start(settleMs());
        }
        unfinished_ = true;
        unfinishedBytes_ = waiting;
        return;
    }
    unfinished_ = false;
    settle_.stop();
    take(scan, bytes);
}

void Receiver::reportWire(recording::Verdict verdict) {
    if (!wire_.empty()) {
        emit frameRead(std::exchange(wire_, {}), verdict);
    }
}

void Receiver::take(const ReplyScan& scan, const std::vector<Byte>& waiting) {
    using recording::Verdict;
    // Out of the port first: whatever the decoders do, these bytes are done.
    port_->consume(static_cast<int>(scan.used));
    link_.noteReceiveEvent();
    const auto start = waiting.begin() + static_cast<std::ptrdiff_t>(scan.start);
    if (scan.start > 0) {
        emit frameRead(std::vector<Byte>(waiting.begin(), start), Verdict::Noise);
    }
    if (scan.outcome == ReplyScan::Outcome::NoStart) {
        showFault();
        return;
    }
    wire_.assign(start, waiting.begin() + static_cast<std::ptrdiff_t>(scan.used));

    // Every outcome past NoStart has read the address.
    const Byte address = *scan.address;
    if (address < 100) {
        emit receivingIdChanged(QStringLiteral("Currently Receiving ID Of %1").arg(address));
    }
    int index = 0;
    for (const Byte value : scan.body) {
        // A runaway reply stops here with a range fault, as its 1002nd byte
        // does not fit.
        state_.RxBuffer[index] = value;
        ++index;
    }
    CaptureLine capture;
    for (const Byte value : scan.capture) {
        capture.add(value);
    }
    emit frameReceived(capture.text());

    if (scan.outcome != ReplyScan::Outcome::Ended) {
        reportWire(Verdict::Cut);
        showFault();
        return;
    }
    if (!Check_LRC(state_.RxBuffer, index - 2, state_.UnitId)) {
        reportWire(Verdict::BadLrc);
        state_.LinkFault = true;
        showFault();
        return;
    }
    reportWire(Verdict::Good);
    state_.LinkFault = false;
    state_.setLamp(LinkLamp::Good);
    state_.LastResponseCode = state_.RxBuffer[0];
    if (!replyWatchers_.empty()) {
        // Code and payload, without the LRC and 0x03.
        const std::size_t length = scan.body.size() >= 2 ? scan.body.size() - 2 : 0;
        const std::vector<Byte> reply(scan.body.begin(),
                                      scan.body.begin() + static_cast<std::ptrdiff_t>(length));
        for (const auto& watcher : replyWatchers_) {
            watcher(reply);
        }
    }

    const auto decoder = decoders_.find(state_.RxBuffer[0]);
    if (decoder != decoders_.end()) {
        decoder->second();
    }
    for (const auto& hook : refreshHooks_) {
        hook();
    }
}

}  // namespace halvex
