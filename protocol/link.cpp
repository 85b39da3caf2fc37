#include "protocol/link.h"

#include <algorithm>

#include "protocol/fault_guard.h"
#include "protocol/wait.h"

namespace halvex {

QString hexByte(Byte value) {
    return QStringLiteral("%1 ").arg(value, 2, 16, QLatin1Char('0')).toUpper();
}

Link::Link(FormState& state, QObject* parent) : QObject(parent), state_(state) {
    timer1_.setInterval(kConnectTimeoutMs);
    timer2_.setInterval(kTickMs);
    timer4_.setInterval(kWatchdogMs);
    connect(&timer1_, &QTimer::timeout, this,
            [this] { guarded(state_, "Timer1_Timer", [this] { Timer1_Timer(); }); });
    connect(&timer2_, &QTimer::timeout, this,
            [this] { guarded(state_, "Timer2_Timer", [this] { Timer2_Timer(); }); });
    connect(&timer4_, &QTimer::timeout, this,
            [this] { guarded(state_, "Timer4_Timer", [this] { Timer4_Timer(); }); });
}

void Link::setPort(SerialPort* port) {
    if (port_ != nullptr) {
        disconnect(port_, nullptr, this, nullptr);
    }
    port_ = port;
    if (port_ != nullptr) {
        connect(port_, &SerialPort::closed, this, &Link::onPortClosed);
    }
}

void Link::Timer1_Timer() {
    state_.ConnectTimedOut = true;
}

void Link::Timer2_Timer() {
    if (!queue_.empty()) {
        const std::shared_ptr<FrameRecord> frame = queue_.front();
        queue_.pop_front();
        write(frame);
        state_.notifyChanged();
    } else if (!state_.SendInProgress && jogSender_) {
        jogSender_();
    }
}

void Link::Timer4_Timer() {
    state_.setLamp(LinkLamp::Fault);
    ++watchdogExpiries_;
    giveUpOnReplies();
    state_.LinkFault = true;
    timer4_.stop();
}

std::shared_ptr<FrameRecord> Link::takeFrame(int count) {
    const Byte address = frameAddress(state_.UnitId, state_.AddressOverride);
    state_.TxBuffer[count] = Calc_LRC(state_.TxBuffer, count, address);
    auto frame = std::make_shared<FrameRecord>();
    frame->address = address;
    frame->captureId = state_.UnitId;
    // The override is for exactly one frame: this one.
    state_.AddressOverride = kNoOverride;
    frame->message.reserve(static_cast<std::size_t>(count) + 1);
    for (int index = 0; index <= count; ++index) {
        frame->message.push_back(state_.TxBuffer[index]);
    }
    return frame;
}

FrameTicket Link::SendFrame(int count) {
    std::shared_ptr<FrameRecord> frame = takeFrame(count);
    // With the port closed there is nobody to send to and no tick to wait for.
    if (!portOpen()) {
        frame->status = FrameRecord::Status::Dropped;
        return frame;
    }
    queue_.push_back(frame);
    const int ahead = static_cast<int>(queue_.size());
    const bool went = waitUntil(
        state_, [&frame] { return frame->status != FrameRecord::Status::Queued; },
        ahead * timer2_.interval() + kSendGraceMs);
    if (!went) {
        queue_.erase(std::remove(queue_.begin(), queue_.end(), frame), queue_.end());
        frame->status = FrameRecord::Status::Dropped;
        state_.reportFault(QStringLiteral("Command %1not sent: no transmit tick")
                               .arg(hexByte(frame->message.front())));
    }
    return frame;
}

void Link::transmit(int count) {
    if (!portOpen()) {
        return;
    }
    write(takeFrame(count));
}

void Link::writeStuffed(Byte value, QString& capture) {
    if (needsStuffing(value)) {
        port_->writeByte(kEsc);
        capture += hexByte(kEsc);
        port_->writeByte(static_cast<Byte>(value | 0x80));
    } else {
        port_->writeByte(value);
    }
}

void Link::write(const std::shared_ptr<FrameRecord>& record) {
    FrameRecord& frame = *record;
    frame.status = FrameRecord::Status::Sent;
    // A unit that stopped answering must not make this list grow.
    constexpr std::size_t kMostAwaited = 8;
    if (awaiting_.size() == kMostAwaited) {
        awaiting_.front()->unanswered = true;
        awaiting_.pop_front();
    }
    awaiting_.push_back(record);

    QString capture = hexByte(kStx);
    port_->writeByte(kStx);
    writeStuffed(frame.address, capture);
    // The capture names the configured unit, even when an override went out.
    capture += hexByte(frame.captureId);
    for (const Byte value : frame.message) {
        writeStuffed(value, capture);
        capture += hexByte(value);
    }
    port_->writeByte(kEtx);
    capture += QStringLiteral("03");

    ++framesSent_;
    emit frameSent(capture);
    // Armed once and left running: re-arming on every frame would keep a
    // silent unit from ever being noticed while the jog message flows.
    if (!timer4_.isActive()) {
        timer4_.start();
    }
    // Stop and reset requests go out with one frame only.
    state_.JogFlags = ClearBit(state_.JogFlags, 1);
    state_.JogFlags = ClearBit(state_.JogFlags, 0);
    state_.notifyChanged();
}

void Link::noteReceiveEvent() {
    ++receiveEvents_;
    if (!awaiting_.empty()) {
        awaiting_.front()->answered = true;
        awaiting_.pop_front();
    }
    state_.ReplyReceived = true;
}

int Link::replyTimeoutMs() const {
    return timer4_.interval() + kReplyGraceMs;
}

bool Link::awaitReply(const FrameTicket& frame) {
    state_.ReplyReceived = false;
    if (!frame || frame->status != FrameRecord::Status::Sent) {
        return false;
    }
    waitUntil(
        state_, [&] { return frame->answered || frame->unanswered || !portOpen(); },
        replyTimeoutMs());
    return frame->answered;
}

bool Link::awaitNextReply() {
    state_.ReplyReceived = false;
    const quint64 events = receiveEvents_;
    const quint64 expiries = watchdogExpiries_;
    waitUntil(
        state_,
        [&] { return receiveEvents_ != events || watchdogExpiries_ != expiries || !portOpen(); },
        replyTimeoutMs());
    return receiveEvents_ != events;
}

void Link::giveUpOnReplies() {
    for (const auto& frame : awaiting_) {
        frame->unanswered = true;
    }
    awaiting_.clear();
}

void Link::dropQueued(const QString& why) {
    giveUpOnReplies();
    const auto dropped = queue_.size();
    for (const auto& frame : queue_) {
        frame->status = FrameRecord::Status::Dropped;
    }
    queue_.clear();
    // Wakes every wait: the senders of those frames, and reply waits.
    state_.notifyChanged();
    if (dropped > 0) {
        state_.reportFault(QStringLiteral("%1: %2 command(s) not sent").arg(why).arg(dropped));
    }
}

void Link::stop() {
    timer1_.stop();
    timer2_.stop();
    timer4_.stop();
    dropQueued(QStringLiteral("Link stopped"));
}

void Link::onPortClosed() {
    dropQueued(QStringLiteral("Port closed"));
}

}  // namespace halvex
