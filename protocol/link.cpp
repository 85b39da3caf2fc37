#include "protocol/link.h"

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

void Link::Timer1_Timer() {
    state_.ConnectTimedOut = true;
}

void Link::Timer2_Timer() {
    if (!state_.SendInProgress) {
        if (jogSender_) {
            jogSender_();
        }
    } else {
        state_.SendGate = true;
    }
}

void Link::Timer4_Timer() {
    state_.setLamp(LinkLamp::Fault);
    state_.LinkFault = true;
    timer4_.stop();
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

void Link::SendFrame(int count) {
    state_.SendGate = false;
    state_.TxBuffer[count] =
        Calc_LRC(state_.TxBuffer, count, frameAddress(state_.UnitId, state_.AddressOverride));

    // With the port closed there is nobody to send to and no tick to wait for.
    if (port_ == nullptr || !port_->isOpen()) {
        return;
    }
    waitUntil(state_, [this] { return static_cast<bool>(state_.SendGate); });
    if (!port_->isOpen()) {
        return;
    }

    transmit(count);
}

void Link::transmit(int count) {
    if (port_ == nullptr || !port_->isOpen()) {
        return;
    }
    QString capture = hexByte(kStx);
    port_->writeByte(kStx);

    const Byte address = frameAddress(state_.UnitId, state_.AddressOverride);
    state_.AddressOverride = kNoOverride;
    writeStuffed(address, capture);
    // The capture names the configured unit, even when an override went out.
    capture += hexByte(state_.UnitId);

    for (int index = 0; index <= count; ++index) {
        const Byte value = state_.TxBuffer[index];
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

}  // namespace halvex
