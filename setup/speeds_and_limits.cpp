#include "setup/speeds_and_limits.h"

#include <string>

#include "console/controls_from_reply.h"
#include "console/handler_wiring.h"
#include "protocol/senders.h"
#include "setup/checked_scroll.h"
#include "views/pages/setup_page.h"

namespace halvex {

namespace {
constexpr Byte kRead = 0x80;
constexpr Byte kSecondVariant = 0x40;
constexpr int kSecondVariantBit = 6;
constexpr Byte kMaxDecel = 63;

// A ramp or maximum of 0 is shown as 1.
Byte atLeastOne(Byte value) {
    return value == 0 ? 1 : value;
}

// Low and high byte as one signed 16-bit number, without folding: above
// 32767 it does not fit.
long word(Byte lo, Byte hi) {
    const long sum = lo + 256L * hi;
    if (sum > 32767) {
        throw RangeFault(RangeFault::Overflow, "overflow: " + std::to_string(sum));
    }
    return sum;
}
}  // namespace

SpeedsAndLimits::SpeedsAndLimits(ConsoleContext& context, SetupPage& page, QObject* parent)
    : QObject(parent), context_(context), page_(page) {
    connectControls();
}

void SpeedsAndLimits::connectControls() {
    FormState& state = context_.state;
    const auto bind = [this, &state](QPushButton* button, const char* name,
                                     void (SpeedsAndLimits::*handler)()) {
        onEvent(state, button, &QPushButton::clicked, this, name,
                [this, handler] { (this->*handler)(); });
    };
    bind(page_.GetRateBut, "GetRateBut_Click", &SpeedsAndLimits::GetRateBut_Click);
    bind(page_.SetRateBut, "SetRateBut_Click", &SpeedsAndLimits::SetRateBut_Click);
    bind(page_.GetCMaxBut, "GetCMaxBut_Click", &SpeedsAndLimits::GetCMaxBut_Click);
    bind(page_.SetCMaxBut, "SetCMaxBut_Click", &SpeedsAndLimits::SetCMaxBut_Click);
    bind(page_.GetIMaxBut, "GetIMaxBut_Click", &SpeedsAndLimits::GetIMaxBut_Click);
    bind(page_.SetIMaxBut, "SetIMaxBut_Click", &SpeedsAndLimits::SetIMaxBut_Click);
    bind(page_.GetPStepBut, "GetPStepBut_Click", &SpeedsAndLimits::GetPStepBut_Click);
    bind(page_.SetPStepBut, "SetPStepBut_Click", &SpeedsAndLimits::SetPStepBut_Click);
    bind(page_.GetTStepBut, "GetTStepBut_Click", &SpeedsAndLimits::GetTStepBut_Click);
    bind(page_.SetTStepBut, "SetTStepBut_Click", &SpeedsAndLimits::SetTStepBut_Click);
    bind(page_.SetMaxPairBut, "SetMaxPairBut_Click", &SpeedsAndLimits::SetMaxPairBut_Click);
    bind(page_.SetMinPairBut, "SetMinPairBut_Click", &SpeedsAndLimits::SetMinPairBut_Click);
    bind(page_.SetTiltBut, "SetTiltBut_Click", &SpeedsAndLimits::SetTiltBut_Click);
}

void SpeedsAndLimits::registerDecoders() {
    Receiver& receiver = context_.receiver;
    receiver.registerDecoder(kRates, [this] { decodeRates(); });
    receiver.registerDecoder(kRamps, [this] { decodeRamps(); });
    receiver.registerDecoder(kTopSpeeds, [this] { decodeTopSpeeds(); });
    receiver.registerDecoder(kPanMinMax,
                             [this] { decodeMinMax(page_.PMinScroll, page_.PMaxScroll); });
    receiver.registerDecoder(kTiltMinMax,
                             [this] { decodeMinMax(page_.TMinScroll, page_.TMaxScroll); });
    receiver.registerDecoder(kMaxima, [this] { decodeMaxima(); });
    receiver.registerDecoder(kMaximaSet, [this] { decodeMaxima(); });
}

void SpeedsAndLimits::registerReads(ReadHandlers& reads) {
    reads["GetRateBut"] = [this] { GetRateBut_Click(); };
    reads["GetPStepBut"] = [this] { GetPStepBut_Click(); };
    reads["GetTStepBut"] = [this] { GetTStepBut_Click(); };
    reads["GetCMaxBut"] = [this] { GetCMaxBut_Click(); };
    reads["GetIMaxBut"] = [this] { GetIMaxBut_Click(); };
}

void SpeedsAndLimits::send(const std::vector<Byte>& message) {
    sendMessage(context_.state, context_.link, message);
}

void SpeedsAndLimits::GetRateBut_Click() {
    send({kRates, kRead, 0, 0, 0, 0, 0, 0, 0});
}

void SpeedsAndLimits::SetRateBut_Click() {
    send({kRates, byteOf(page_.PSafeScroll), byteOf(page_.PRampScroll), byteOf(page_.PDecelScroll),
          0, byteOf(page_.TSafeScroll), byteOf(page_.TRampScroll), byteOf(page_.TDecelScroll), 0});
}

void SpeedsAndLimits::GetCMaxBut_Click() {
    send({kTopSpeeds, kRead, 0, 0});
}

void SpeedsAndLimits::SetCMaxBut_Click() {
    send({kTopSpeeds, 0x00, byteOf(page_.PTopScroll), byteOf(page_.TTopScroll)});
}

void SpeedsAndLimits::GetIMaxBut_Click() {
    send({kTopSpeeds, kRead | kSecondVariant, 0, 0});
}

void SpeedsAndLimits::SetIMaxBut_Click() {
    send({kTopSpeeds, kSecondVariant, byteOf(page_.PITopScroll), byteOf(page_.TITopScroll)});
}

void SpeedsAndLimits::GetPStepBut_Click() {
    send({kPanMinMax, kRead, 0, 0, 0, 0});
}

void SpeedsAndLimits::SetPStepBut_Click() {
    std::vector<Byte> message{kPanMinMax, 0x00};
    appendLowHigh(message, page_.PMinScroll);
    appendLowHigh(message, page_.PMaxScroll);
    send(message);
}

void SpeedsAndLimits::GetTStepBut_Click() {
    send({kTiltMinMax, kRead, 0, 0, 0, 0});
}

void SpeedsAndLimits::SetTStepBut_Click() {
    std::vector<Byte> message{kTiltMinMax, 0x00};
    appendLowHigh(message, page_.TMinScroll);
    appendLowHigh(message, page_.TMaxScroll);
    send(message);
}

void SpeedsAndLimits::SetMaxPairBut_Click() {
    send({kMaximaSet, byteOf(page_.PMaxScroll), byteOf(page_.TMaxScroll)});
}

void SpeedsAndLimits::SetMinPairBut_Click() {
    send({kMinimaOrTilt, byteOf(page_.PMinScroll), byteOf(page_.TMinScroll)});
}

void SpeedsAndLimits::SetTiltBut_Click() {
    std::vector<Byte> message{kMinimaOrTilt, static_cast<Byte>(byteOf(page_.TSafeScroll) & 0x7F),
                              byteOf(page_.TRampScroll)};
    appendLowHigh(message, page_.TMinScroll);
    appendLowHigh(message, page_.TMaxScroll);
    send(message);
}

void SpeedsAndLimits::decodeRates() {
    ControlsFromReply quiet(context_.state);
    const ByteTable& rx = context_.state.RxBuffer;
    const auto decel = [](Byte value) { return value > kMaxDecel ? Byte{1} : value; };
    setScrollChecked(page_.PSafeScroll, rx[1] & 0x7F);
    setScrollChecked(page_.PRampScroll, rx[2]);
    setScrollChecked(page_.PDecelScroll, decel(rx[3]));
    setScrollChecked(page_.TSafeScroll, rx[5] & 0x7F);
    setScrollChecked(page_.TRampScroll, rx[6]);
    setScrollChecked(page_.TDecelScroll, decel(rx[7]));
}

void SpeedsAndLimits::decodeRamps() {
    ControlsFromReply quiet(context_.state);
    const ByteTable& rx = context_.state.RxBuffer;
    setScrollChecked(page_.PRampScroll, atLeastOne(rx[1] & 0x7F));
    setScrollChecked(page_.TRampScroll, atLeastOne(rx[2] & 0x7F));
}

void SpeedsAndLimits::decodeTopSpeeds() {
    ControlsFromReply quiet(context_.state);
    const ByteTable& rx = context_.state.RxBuffer;
    if (BitIsSet(rx[1], kSecondVariantBit)) {
        setScrollChecked(page_.PITopScroll, rx[2]);
        setScrollChecked(page_.TITopScroll, rx[3]);
    } else {
        setScrollChecked(page_.PTopScroll, rx[2]);
        setScrollChecked(page_.TTopScroll, rx[3]);
    }
}

void SpeedsAndLimits::decodeMinMax(QScrollBar* minimum, QScrollBar* maximum) {
    ControlsFromReply quiet(context_.state);
    const ByteTable& rx = context_.state.RxBuffer;
    setScrollChecked(minimum, word(rx[1], rx[2]));
    setScrollChecked(maximum, word(rx[3], rx[4]));
}

void SpeedsAndLimits::decodeMaxima() {
    ControlsFromReply quiet(context_.state);
    const ByteTable& rx = context_.state.RxBuffer;
    const Byte pan = atLeastOne(rx[1]);
    const Byte tilt = atLeastOne(rx[2]);
    // A value below 16 is a range fault of the bar, which keeps its value:
    // the read-outs follow their bars, so they show what Set would send.
    setScrollChecked(page_.PMaxScroll, pan);
    setScrollChecked(page_.TMaxScroll, tilt);
}

}  // namespace halvex
