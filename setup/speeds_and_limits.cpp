#include "setup/speeds_and_limits.h"

#include <string>

#include "console/controls_from_reply.h"
#include "console/handler_wiring.h"
#include "protocol/senders.h"
#include "protocol/vocabulary.h"
#include "setup/checked_scroll.h"
#include "views/pages/setup_page.h"

namespace halvex {

namespace {
namespace v = vocab;
constexpr Byte kMaxDecel = 63;

template <class M>
std::vector<Byte> withBits(std::vector<Byte> message, v::Bit<M> bit) {
    message[static_cast<std::size_t>(bit.offset)] =
        v::withBit(message[static_cast<std::size_t>(bit.offset)], bit, true);
    return message;
}

// A ramp or maximum of 0 is shown as 1.
Byte atLeastOne(std::uint32_t value) {
    return value == 0 ? 1 : static_cast<Byte>(value);
}

// A two-byte field as a signed 16-bit number, without folding: above 32767
// it does not fit.
template <class M>
long word(const ByteTable& rx, v::Field<M> field) {
    const long sum = v::get(rx, field);
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
    onClick(state, page_.GetRateBut, this, "GetRateBut_Click", &SpeedsAndLimits::GetRateBut_Click);
    onClick(state, page_.SetRateBut, this, "SetRateBut_Click", &SpeedsAndLimits::SetRateBut_Click);
    onClick(state, page_.GetCMaxBut, this, "GetCMaxBut_Click", &SpeedsAndLimits::GetCMaxBut_Click);
    onClick(state, page_.SetCMaxBut, this, "SetCMaxBut_Click", &SpeedsAndLimits::SetCMaxBut_Click);
    onClick(state, page_.GetIMaxBut, this, "GetIMaxBut_Click", &SpeedsAndLimits::GetIMaxBut_Click);
    onClick(state, page_.SetIMaxBut, this, "SetIMaxBut_Click", &SpeedsAndLimits::SetIMaxBut_Click);
    onClick(state, page_.GetPStepBut, this, "GetPStepBut_Click",
            &SpeedsAndLimits::GetPStepBut_Click);
    onClick(state, page_.SetPStepBut, this, "SetPStepBut_Click",
            &SpeedsAndLimits::SetPStepBut_Click);
    onClick(state, page_.GetTStepBut, this, "GetTStepBut_Click",
            &SpeedsAndLimits::GetTStepBut_Click);
    onClick(state, page_.SetTStepBut, this, "SetTStepBut_Click",
            &SpeedsAndLimits::SetTStepBut_Click);
    onClick(state, page_.SetMaxPairBut, this, "SetMaxPairBut_Click",
            &SpeedsAndLimits::SetMaxPairBut_Click);
    onClick(state, page_.SetMinPairBut, this, "SetMinPairBut_Click",
            &SpeedsAndLimits::SetMinPairBut_Click);
    onClick(state, page_.SetTiltBut, this, "SetTiltBut_Click", &SpeedsAndLimits::SetTiltBut_Click);
}

void SpeedsAndLimits::registerDecoders() {
    Receiver& receiver = context_.receiver;
    receiver.registerDecoder(v::Rates::kCode, [this] { decodeRates(); });
    receiver.registerDecoder(v::Ramps::kCode, [this] { decodeRamps(); });
    receiver.registerDecoder(v::TopSpeedsReply::kCode, [this] { decodeTopSpeeds(); });
    receiver.registerDecoder(v::PanStepsReply::kCode, [this] {
        decodeMinMax<v::pan_steps_reply>(page_.PMinScroll, page_.PMaxScroll);
    });
    receiver.registerDecoder(v::TiltStepsReply::kCode, [this] {
        decodeMinMax<v::tilt_steps_reply>(page_.TMinScroll, page_.TMaxScroll);
    });
    // The maxima come back under the code of either command.
    receiver.registerDecoder(v::Maxima::kCode, [this] { decodeMaxima(); });
    receiver.registerDecoder(v::MaximumPair::kCode, [this] { decodeMaxima(); });
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
    send(v::readRequest<v::Rates>());
}

void SpeedsAndLimits::SetRateBut_Click() {
    using Pan = v::rates::Pan;
    using Tilt = v::rates::Tilt;
    std::vector<Byte> message = v::blank<v::Rates>();
    v::put(message, Pan::kSafeSpeedByte, byteOf(page_.PSafeScroll));
    v::put(message, Pan::kRamp, byteOf(page_.PRampScroll));
    v::put(message, Pan::kDeceleration, byteOf(page_.PDecelScroll));
    v::put(message, Tilt::kSafeSpeedByte, byteOf(page_.TSafeScroll));
    v::put(message, Tilt::kRamp, byteOf(page_.TRampScroll));
    v::put(message, Tilt::kDeceleration, byteOf(page_.TDecelScroll));
    send(message);
}

void SpeedsAndLimits::GetCMaxBut_Click() {
    send(v::readRequest<v::TopSpeeds>());
}

void SpeedsAndLimits::SetCMaxBut_Click() {
    std::vector<Byte> message = v::blank<v::TopSpeeds>();
    v::put(message, v::top_speeds::kPan, byteOf(page_.PTopScroll));
    v::put(message, v::top_speeds::kTilt, byteOf(page_.TTopScroll));
    send(message);
}

void SpeedsAndLimits::GetIMaxBut_Click() {
    send(withBits(v::readRequest<v::TopSpeeds>(), v::top_speeds::kSecond));
}

void SpeedsAndLimits::SetIMaxBut_Click() {
    std::vector<Byte> message = withBits(v::blank<v::TopSpeeds>(), v::top_speeds::kSecond);
    v::put(message, v::top_speeds::kPan, byteOf(page_.PITopScroll));
    v::put(message, v::top_speeds::kTilt, byteOf(page_.TITopScroll));
    send(message);
}

void SpeedsAndLimits::GetPStepBut_Click() {
    send(v::readRequest<v::PanSteps>());
}

void SpeedsAndLimits::SetPStepBut_Click() {
    std::vector<Byte> message = v::blank<v::PanSteps>();
    putWord(message, v::pan_steps::kMinimum, page_.PMinScroll);
    putWord(message, v::pan_steps::kMaximum, page_.PMaxScroll);
    send(message);
}

void SpeedsAndLimits::GetTStepBut_Click() {
    send(v::readRequest<v::TiltSteps>());
}

void SpeedsAndLimits::SetTStepBut_Click() {
    std::vector<Byte> message = v::blank<v::TiltSteps>();
    putWord(message, v::tilt_steps::kMinimum, page_.TMinScroll);
    putWord(message, v::tilt_steps::kMaximum, page_.TMaxScroll);
    send(message);
}

void SpeedsAndLimits::SetMaxPairBut_Click() {
    std::vector<Byte> message = v::blank<v::MaximumPair>();
    v::put(message, v::maximum_pair::kPan, byteOf(page_.PMaxScroll));
    v::put(message, v::maximum_pair::kTilt, byteOf(page_.TMaxScroll));
    send(message);
}

void SpeedsAndLimits::SetMinPairBut_Click() {
    std::vector<Byte> message = v::blank<v::MinimumPair>();
    v::put(message, v::minimum_pair::kPan, byteOf(page_.PMinScroll));
    v::put(message, v::minimum_pair::kTilt, byteOf(page_.TMinScroll));
    send(message);
}

void SpeedsAndLimits::SetTiltBut_Click() {
    namespace tilt = v::tilt_settings;
    std::vector<Byte> message = v::blank<v::TiltSettings>();
    v::put(message, tilt::kSafeSpeed, byteOf(page_.TSafeScroll));
    v::put(message, tilt::kRamp, byteOf(page_.TRampScroll));
    putWord(message, tilt::kMinimum, page_.TMinScroll);
    putWord(message, tilt::kMaximum, page_.TMaxScroll);
    send(message);
}

void SpeedsAndLimits::decodeRates() {
    using Pan = v::rates_reply::Pan;
    using Tilt = v::rates_reply::Tilt;
    ControlsFromReply quiet(context_.state);
    const ByteTable& rx = context_.state.RxBuffer;
    const auto decel = [](std::uint32_t value) { return value > kMaxDecel ? 1 : value; };
    setScrollChecked(page_.PSafeScroll, v::get(rx, Pan::kSafeSpeed));
    setScrollChecked(page_.PRampScroll, v::get(rx, Pan::kRamp));
    setScrollChecked(page_.PDecelScroll, decel(v::get(rx, Pan::kDeceleration)));
    setScrollChecked(page_.TSafeScroll, v::get(rx, Tilt::kSafeSpeed));
    setScrollChecked(page_.TRampScroll, v::get(rx, Tilt::kRamp));
    setScrollChecked(page_.TDecelScroll, decel(v::get(rx, Tilt::kDeceleration)));
}

void SpeedsAndLimits::decodeRamps() {
    ControlsFromReply quiet(context_.state);
    const ByteTable& rx = context_.state.RxBuffer;
    setScrollChecked(page_.PRampScroll, atLeastOne(v::get(rx, v::ramps::kPan)));
    setScrollChecked(page_.TRampScroll, atLeastOne(v::get(rx, v::ramps::kTilt)));
}

void SpeedsAndLimits::decodeTopSpeeds() {
    namespace reply = v::top_speeds_reply;
    ControlsFromReply quiet(context_.state);
    const ByteTable& rx = context_.state.RxBuffer;
    const auto variant = static_cast<Byte>(v::get(rx, reply::kVariant));
    const bool second = v::isSet(variant, reply::kSecond);
    setScrollChecked(second ? page_.PITopScroll : page_.PTopScroll, v::get(rx, reply::kPan));
    setScrollChecked(second ? page_.TITopScroll : page_.TTopScroll, v::get(rx, reply::kTilt));
}

template <class Range>
void SpeedsAndLimits::decodeMinMax(QScrollBar* minimum, QScrollBar* maximum) {
    ControlsFromReply quiet(context_.state);
    const ByteTable& rx = context_.state.RxBuffer;
    setScrollChecked(minimum, word(rx, Range::kMinimum));
    setScrollChecked(maximum, word(rx, Range::kMaximum));
}

void SpeedsAndLimits::decodeMaxima() {
    ControlsFromReply quiet(context_.state);
    const ByteTable& rx = context_.state.RxBuffer;
    const Byte pan = atLeastOne(v::get(rx, v::maxima::kPan));
    const Byte tilt = atLeastOne(v::get(rx, v::maxima::kTilt));
    // A value below 16 is a range fault of the bar, which keeps its value:
    // the read-outs follow their bars, so they show what Set would send.
    setScrollChecked(page_.PMaxScroll, pan);
    setScrollChecked(page_.TMaxScroll, tilt);
}

}  // namespace halvex
