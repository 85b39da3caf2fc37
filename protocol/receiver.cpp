#include "protocol/receiver.h"

#include <QTimer>

#include "protocol/capture_line.h"
#include "protocol/fault_guard.h"
#include "protocol/flag_scope.h"
#include "protocol/link.h"

namespace halvex {

namespace {
// A frame still arriving is waited for this many character times (and at
// least the floor, to ride over scheduling jitter) before it counts as cut.
constexpr int kSettleCharacters = 8;
constexpr int kSettleFloorMs = 20;

}  // namespace

Receiver::Receiver(FormState& state, Link& link, QObject* parent)
    : QObject(parent), state_(state), link_(link) {}

void Receiver::attachPort(SerialPort* port) {
    if (port_ != nullptr) {
        disconnect(port_, nullptr, this, nullptr);
    }
    port_ = port;
    if (port_ != nullptr) {
        connect(port_, &SerialPort::dataArrived, this, &Receiver::onDataArrived);
    }
}

void Receiver::registerDecoder(Byte code, Decoder decoder) {
    decoders_[code] = std::move(decoder);
}

void Receiver::addRefreshHook(std::function<void()> hook) {
    refreshHooks_.push_back(std::move(hook));
}

void Receiver::addReplyWatcher(ReplyWatcher watcher) {
    replyWatchers_.push_back(std::move(watcher));
}

void Receiver::onDataArrived() {
    if (reading_) {
        return;
    }
    guarded(state_, "SerPort1_OnComm", [this] { ReceiveFrame(); });
    scheduleLeftovers();
}

void Receiver::scheduleLeftovers() {
    // A second frame that came with the first stays in the port; raise the
    // event again for it, as the port itself would.
    if (leftoversScheduled_ || port_ == nullptr || !port_->isOpen() || port_->bytesWaiting() == 0) {
        return;
    }
    leftoversScheduled_ = true;
    QTimer::singleShot(0, this, [this] {
        leftoversScheduled_ = false;
        if (port_ != nullptr && port_->isOpen() && port_->bytesWaiting() > 0) {
            onDataArrived();
        }
    });
}

int Receiver::settleMs() const {
    return port_->characterTimeMs(kSettleCharacters, kSettleFloorMs);
}

void Receiver::showFault() {
    state_.setLamp(LinkLamp::Fault);
}

Byte Receiver::readUnstuffed(int waiting, Byte& raw, CaptureLine& capture) {
    raw = port_->readByte();
    if (raw != kEsc) {
        return raw;
    }
    // An escape needs its partner; if it has not come yet, give it a moment.
    if (waiting >= 2 || port_->waitForBytes(settleMs())) {
        capture.addEscape();
        return static_cast<Byte>(port_->readByte() & 0x7F);
    }
    return raw;
}

void Receiver::ReceiveFrame() {
    if (port_ == nullptr) {
        return;
    }
    CaptureLine capture;
    bool complete = false;
    {
        // A data event raised by a short wait inside the read must not start
        // a second read.
        FlagScope reading(reading_);
        complete = readFrame(capture);
    }
    if (!complete) {
        return;
    }
    if (!replyWatchers_.empty()) {
        std::vector<Byte> reply;
        for (int i = 0; i < replyLength_; ++i) {
            reply.push_back(state_.RxBuffer[i]);
        }
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

// Steps up to the LRC check; true when the frame is good and should be
// dispatched.
bool Receiver::readFrame(CaptureLine& capture) {
    link_.noteReceiveEvent();
    int waiting = port_->bytesWaiting();
    if (waiting == 0) {
        showFault();
        return false;
    }
    link_.Timer4().stop();

    // Hunt for the ACK that starts a reply. The count test comes first: an
    // ACK that is the last byte waiting only counts if more bytes follow it.
    int count = 0;
    bool found = false;
    while (true) {
        const Byte value = port_->readByte();
        ++count;
        if (count == waiting) {
            found = value == kAck && port_->waitForBytes(settleMs());
            break;
        }
        if (value == kAck) {
            found = true;
            break;
        }
    }
    if (!found) {
        showFault();
        port_->discardInput();
        return false;
    }

    capture.add(kAck);
    waiting = port_->bytesWaiting();
    if (waiting < 1 && port_->waitForBytes(settleMs())) {
        waiting = port_->bytesWaiting();
    }
    if (waiting < 1) {
        showFault();
        port_->discardInput();
        return false;
    }

    Byte raw = 0;
    const Byte address = readUnstuffed(waiting, raw, capture);
    if (address < 100) {
        emit receivingIdChanged(QStringLiteral("Currently Receiving ID Of %1").arg(address));
    }
    capture.add(address);

    int index = 0;
    bool ended = false;
    while (true) {
        waiting = port_->bytesWaiting();
        if (waiting == 0 && port_->waitForBytes(settleMs())) {
            waiting = port_->bytesWaiting();
        }
        if (waiting == 0) {
            break;
        }
        const Byte value = readUnstuffed(waiting, raw, capture);
        state_.RxBuffer[index] = value;
        capture.add(value);
        ++index;
        if (raw == kEtx) {
            ended = true;
            break;
        }
    }
    emit frameReceived(capture.text());

    if (!ended) {
        showFault();
        return false;
    }
    if (!Check_LRC(state_.RxBuffer, index - 2, state_.UnitId)) {
        state_.LinkFault = true;
        showFault();
        return false;
    }
    replyLength_ = index - 2;
    state_.LinkFault = false;
    state_.setLamp(LinkLamp::Good);
    state_.LastResponseCode = state_.RxBuffer[0];
    return true;
}

}  // namespace halvex
