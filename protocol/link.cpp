#include "protocol/link.h"

#include <algorithm>

#include "protocol/capture_line.h"
#include "protocol/fault_guard.h"
#include "protocol/vocabulary.h"
#include "protocol/wait.h"

namespace halvex {

namespace {
// The frame as it goes on the line: start, stuffed address, message and
// LRC, end.
std::vector<Byte> wireImage(const FrameRecord& frame) {
    std::vector<Byte> wire{kStx};
    appendStuffed(wire, frame.address);
    for (Byte value : frame.message) {
        appendStuffed(wire, value);
    }
    wire.push_back(kEtx);
    return wire;
}
}  // namespace

Link::Link(FormState& state, int tickMs, QObject* parent) : QObject(parent), state_(state) {
    timer1_.setInterval(kConnectTimeoutMs);
    timer2_.setInterval(tickMs);
    // A coarse timer may run 5 % late; the tick bounds how soon a jog source
    // reaches the unit (at most one tick), so it keeps time.
    timer2_.setTimerType(Qt::PreciseTimer);
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
        connect(port_, &SerialPort::reopened, this, &Link::onPortReopened);
        // A wait for a network port's connection ends when it is made.
        connect(port_, &SerialPort::connectionMade, this, [this] { state_.notifyChanged(); });
    }
}

void Link::Timer1_Timer() {
    state_.ConnectTimedOut = true;
}

void Link::requestJogMessage() {
    if (!jogRequested_) {
        jogRequested_ = true;
        framesBeforeJog_ = queue_.size();
    }
}

void Link::Timer2_Timer() {
    // A write now would only fail too, and tell of a command lost that the
    // port's own report is about to account for: the frames wait for it.
    if (port_ != nullptr && port_->failing()) {
        return;
    }
    if (jogRequested_ && framesBeforeJog_ == 0 && jogSender_) {
        jogRequested_ = false;
        jogSender_();
    } else if (!queue_.empty()) {
        const std::shared_ptr<FrameRecord> frame = queue_.front();
        queue_.pop_front();
        if (jogRequested_ && framesBeforeJog_ > 0) {
            --framesBeforeJog_;
        }
        write(frame);
        state_.notifyChanged();
    } else if (!state_.SendInProgress && jogSender_) {
        jogRequested_ = false;
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

QCoro::Task<FrameTicket> Link::SendFrame(int count) {
    std::shared_ptr<FrameRecord> frame = takeFrame(count);
    emit frameQueued(frame);
    // With the port closed there is nobody to send to and no tick to wait for.
    if (!portOpen()) {
        frame->status = FrameRecord::Status::Dropped;
        emit frameDropped(frame, QStringLiteral("port closed"));
        co_return frame;
    }
    queue_.push_back(frame);
    const SendInProgressScope holding(state_);
    const int ahead = static_cast<int>(queue_.size());
    const bool went = co_await waitUntil(
        state_, [&frame] { return frame->status != FrameRecord::Status::Queued; },
        ahead * timer2_.interval() + sendGraceMs_, this);
    if (!went) {
        queue_.erase(std::remove(queue_.begin(), queue_.end(), frame), queue_.end());
        framesBeforeJog_ = std::min(framesBeforeJog_, queue_.size());
        frame->status = FrameRecord::Status::Dropped;
        emit frameDropped(frame, QStringLiteral("no transmit tick"));
        state_.reportFault(QStringLiteral("Command %1 not sent: no transmit tick")
                               .arg(hexText(frame->message.front())));
    }
    co_return frame;
}

void Link::transmit(int count) {
    if (!portOpen()) {
        return;
    }
    const std::shared_ptr<FrameRecord> frame = takeFrame(count);
    // A jog message that does not get out loses nothing: the next tick's
    // carries the same demand, and a stop or reset stays asked for until one
    // goes out. The port tells of its own failure.
    write(frame, Lost::Quietly);
    // Stop and reset requests are one-shot, and only the jog message carries
    // them: a command frame that takes a tick in between must not swallow a
    // stop that no frame has carried yet.
    if (wentOut(frame)) {
        state_.JogFlags = vocab::withBit(state_.JogFlags, vocab::jog::kStop, false);
        state_.JogFlags = vocab::withBit(state_.JogFlags, vocab::jog::kReset, false);
        state_.notifyChanged();
    }
}

bool Link::writeStuffed(Byte value, CaptureLine& capture) {
    if (!needsStuffing(value)) {
        return port_->writeByte(value);
    }
    capture.addEscape();
    return port_->writeByte(kEsc) && port_->writeByte(stuffed(value));
}

void Link::write(const std::shared_ptr<FrameRecord>& record, Lost lost) {
    FrameRecord& frame = *record;
    CaptureLine capture;
    capture.add(kStx);
    bool written = port_->writeByte(kStx) && writeStuffed(frame.address, capture);
    // The capture names the configured unit, even when an override went out.
    capture.add(frame.captureId);
    for (std::size_t i = 0; written && i < frame.message.size(); ++i) {
        written = writeStuffed(frame.message[i], capture);
        capture.add(frame.message[i]);
    }
    written = written && port_->writeByte(kEtx);
    if (!written) {
        // The port has taken it as a port error and closes; nothing will
        // answer a frame that did not get out whole.
        frame.status = FrameRecord::Status::Dropped;
        emit frameDropped(record, QStringLiteral("writing to the port failed"));
        if (lost == Lost::Told) {
            state_.reportFault(QStringLiteral("Command %1 not sent: writing to the port failed")
                                   .arg(hexText(frame.message.front())));
        }
        state_.notifyChanged();
        return;
    }
    capture.add(kEtx);
    frame.status = FrameRecord::Status::Sent;
    // A unit that stopped answering must not make this list grow.
    constexpr std::size_t kMostAwaited = 8;
    if (awaiting_.size() == kMostAwaited) {
        awaiting_.front()->unanswered = true;
        awaiting_.pop_front();
    }
    awaiting_.push_back(record);

    ++framesSent_;
    emit frameSent(capture.text());
    emit frameWritten(record, wireImage(frame));
    // Armed once and left running: re-arming on every frame would keep a
    // silent unit from ever being noticed while the jog message flows.
    if (!timer4_.isActive()) {
        timer4_.start();
    }
    state_.notifyChanged();
}

void Link::noteReceiveEvent() {
    ++receiveEvents_;
    if (!awaiting_.empty()) {
        awaiting_.front()->answered = true;
        awaiting_.pop_front();
        ++framesAnswered_;
    }
    state_.ReplyReceived = true;
}

void Link::abandonAwaitedReplies() {
    giveUpOnReplies();
    state_.notifyChanged();
}

int Link::replyTimeoutMs() const {
    return timer4_.interval() + kReplyGraceMs;
}

QCoro::Task<bool> Link::awaitReply(FrameTicket frame) {
    if (!frame || frame->status != FrameRecord::Status::Sent) {
        co_return false;
    }
    co_await waitUntil(
        state_, [&] { return frame->answered || frame->unanswered || !portOpen(); },
        replyTimeoutMs(), this);
    co_return frame->answered;
}

QCoro::Task<void> Link::awaitNextReply() {
    const quint64 events = receiveEvents_;
    const quint64 expiries = watchdogExpiries_;
    co_await waitUntil(
        state_,
        [&] { return receiveEvents_ != events || watchdogExpiries_ != expiries || !portOpen(); },
        replyTimeoutMs(), this);
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
        emit frameDropped(frame, why);
    }
    queue_.clear();
    framesBeforeJog_ = 0;
    // Wakes every wait: the senders of those frames, and reply waits.
    state_.notifyChanged();
    if (dropped > 0) {
        state_.reportFault(QStringLiteral("%1: %2 command(s) not sent").arg(why).arg(dropped));
    }
}

void Link::stop() {
    jogRequested_ = false;
    timer1_.stop();
    timer2_.stop();
    timer4_.stop();
    dropQueued(QStringLiteral("Link stopped"));
}

void Link::onPortClosed() {
    dropQueued(QStringLiteral("Port closed"));
}

void Link::onPortReopened() {
    // A reply that was on its way in may have gone with the reopen, and a
    // reply that had begun no longer holds the watchdog off: it watches the
    // frames still waiting for an answer, as after any other frame.
    if (!awaiting_.empty() && !timer4_.isActive()) {
        timer4_.start();
    }
}

}  // namespace halvex
