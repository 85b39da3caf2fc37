// The session's drive settings: safe speeds, ramps and decelerations, the
// two pairs of top speeds, the step ranges and the maxima and minima.
#include <string>

#include "protocol/senders.h"
#include "protocol/vocabulary.h"
#include "session/session.h"
#include "session/signed_word.h"

namespace halvex {

namespace {
namespace v = vocab;

// A two-byte field of a reply as a signed 16-bit number, without folding:
// above 32767 it does not fit, and the reply is a range fault.
template <class M>
int signedWord(const ByteTable& rx, v::Field<M> field) {
    const std::uint32_t sum = v::get(rx, field);
    if (sum > 32767) {
        throw RangeFault(RangeFault::Overflow, "overflow: " + std::to_string(sum));
    }
    return static_cast<int>(sum);
}

template <class Reply>
AxisDrive axisDriveOf(const ByteTable& rx) {
    return {static_cast<int>(v::get(rx, Reply::kSafeSpeed)),
            static_cast<int>(v::get(rx, Reply::kRamp)),
            static_cast<int>(v::get(rx, Reply::kDeceleration))};
}

template <class Command>
void putAxisDrive(std::vector<Byte>& message, const AxisDrive& drive) {
    v::put(message, Command::kSafeSpeedByte, checkedByte(drive.safeSpeed));
    v::put(message, Command::kRamp, checkedByte(drive.ramp));
    v::put(message, Command::kDeceleration, checkedByte(drive.deceleration));
}

// The top speeds command, with the bit that picks the second pair.
std::vector<Byte> topSpeedsMessage(std::vector<Byte> message, TopSpeedSet set) {
    const auto bit = v::top_speeds::kSecond;
    const auto at = static_cast<std::size_t>(bit.offset);
    message[at] = v::withBit(message[at], bit, set == TopSpeedSet::Second);
    return message;
}

template <class Range, class Command>
std::vector<Byte> stepRangeMessage(const StepRange& range) {
    std::vector<Byte> message = v::blank<Command>();
    putSignedWord(message, Range::kMinimum, range.minimum);
    putSignedWord(message, Range::kMaximum, range.maximum);
    return message;
}

template <class Range>
StepRange stepRangeOf(const ByteTable& rx) {
    // Both words are checked before either is kept.
    const int minimum = signedWord(rx, Range::kMinimum);
    return {minimum, signedWord(rx, Range::kMaximum)};
}

template <class Command>
std::vector<Byte> pairMessage(v::Field<Command> pan, v::Field<Command> tilt,
                              const AxisPair& values) {
    std::vector<Byte> message = v::blank<Command>();
    v::put(message, pan, checkedByte(values.pan));
    v::put(message, tilt, checkedByte(values.tilt));
    return message;
}
}  // namespace

void Session::watchDriveReports() {
    receiver_.registerDecoder(v::Rates::kCode, [this] {
        const ByteTable& rx = state_.RxBuffer;
        status_.Rates = {axisDriveOf<v::rates_reply::Pan>(rx),
                         axisDriveOf<v::rates_reply::Tilt>(rx)};
        emit driveRatesReported(status_.Rates);
    });
    receiver_.registerDecoder(v::Ramps::kCode, [this] {
        const ByteTable& rx = state_.RxBuffer;
        status_.Rates.pan.ramp = static_cast<int>(v::get(rx, v::ramps::kPan));
        status_.Rates.tilt.ramp = static_cast<int>(v::get(rx, v::ramps::kTilt));
        emit rampsReported({status_.Rates.pan.ramp, status_.Rates.tilt.ramp});
    });
    receiver_.registerDecoder(v::TopSpeedsReply::kCode, [this] {
        namespace reply = v::top_speeds_reply;
        const ByteTable& rx = state_.RxBuffer;
        const auto variant = static_cast<Byte>(v::get(rx, reply::kVariant));
        const TopSpeedSet set =
            v::isSet(variant, reply::kSecond) ? TopSpeedSet::Second : TopSpeedSet::First;
        AxisPair& speeds = status_.TopSpeeds[set == TopSpeedSet::Second ? 1 : 0];
        speeds = {static_cast<int>(v::get(rx, reply::kPan)),
                  static_cast<int>(v::get(rx, reply::kTilt))};
        emit topSpeedsReported(set, speeds);
    });
    receiver_.registerDecoder(v::PanStepsReply::kCode, [this] {
        status_.PanSteps = stepRangeOf<v::pan_steps_reply>(state_.RxBuffer);
        emit panStepsReported(status_.PanSteps);
    });
    receiver_.registerDecoder(v::TiltStepsReply::kCode, [this] {
        status_.TiltSteps = stepRangeOf<v::tilt_steps_reply>(state_.RxBuffer);
        emit tiltStepsReported(status_.TiltSteps);
    });
    // The maxima come back under the code of either command.
    const auto maxima = [this] {
        const ByteTable& rx = state_.RxBuffer;
        status_.Maxima = {static_cast<int>(v::get(rx, v::maxima::kPan)),
                          static_cast<int>(v::get(rx, v::maxima::kTilt))};
        emit maximaReported(status_.Maxima);
    };
    receiver_.registerDecoder(v::Maxima::kCode, maxima);
    receiver_.registerDecoder(v::MaximumPair::kCode, maxima);
}

QCoro::Task<Outcome> Session::setDriveRates(DriveRates rates, Requester requester) {
    return exchange(requester, [rates] {
        std::vector<Byte> message = v::blank<v::Rates>();
        putAxisDrive<v::rates::Pan>(message, rates.pan);
        putAxisDrive<v::rates::Tilt>(message, rates.tilt);
        return message;
    });
}

QCoro::Task<Outcome> Session::readDriveRates(Requester requester) {
    return exchange(requester, [] { return v::readRequest<v::Rates>(); });
}

QCoro::Task<Outcome> Session::setTopSpeeds(TopSpeedSet set, AxisPair speeds, Requester requester) {
    return exchange(requester, [set, speeds] {
        return topSpeedsMessage(pairMessage(v::top_speeds::kPan, v::top_speeds::kTilt, speeds),
                                set);
    });
}

QCoro::Task<Outcome> Session::readTopSpeeds(TopSpeedSet set, Requester requester) {
    return exchange(requester,
                    [set] { return topSpeedsMessage(v::readRequest<v::TopSpeeds>(), set); });
}

QCoro::Task<Outcome> Session::setPanSteps(StepRange range, Requester requester) {
    return exchange(requester,
                    [range] { return stepRangeMessage<v::pan_steps, v::PanSteps>(range); });
}

QCoro::Task<Outcome> Session::readPanSteps(Requester requester) {
    return exchange(requester, [] { return v::readRequest<v::PanSteps>(); });
}

QCoro::Task<Outcome> Session::setTiltSteps(StepRange range, Requester requester) {
    return exchange(requester,
                    [range] { return stepRangeMessage<v::tilt_steps, v::TiltSteps>(range); });
}

QCoro::Task<Outcome> Session::readTiltSteps(Requester requester) {
    return exchange(requester, [] { return v::readRequest<v::TiltSteps>(); });
}

QCoro::Task<Outcome> Session::setMaxima(AxisPair maxima, Requester requester) {
    return exchange(requester, [maxima] {
        return pairMessage(v::maximum_pair::kPan, v::maximum_pair::kTilt, maxima);
    });
}

QCoro::Task<Outcome> Session::setMinima(AxisPair minima, Requester requester) {
    return exchange(requester, [minima] {
        return pairMessage(v::minimum_pair::kPan, v::minimum_pair::kTilt, minima);
    });
}

QCoro::Task<Outcome> Session::setTiltDrive(int safeSpeed, int ramp, StepRange range,
                                           Requester requester) {
    return exchange(requester, [safeSpeed, ramp, range] {
        namespace tilt = v::tilt_settings;
        std::vector<Byte> message = v::blank<v::TiltSettings>();
        v::put(message, tilt::kSafeSpeed, checkedByte(safeSpeed));
        v::put(message, tilt::kRamp, checkedByte(ramp));
        putSignedWord(message, tilt::kMinimum, range.minimum);
        putSignedWord(message, tilt::kMaximum, range.maximum);
        return message;
    });
}

}  // namespace halvex
