// Unit setup: ramps, rates, the minima and the tilt set, directions, the
// comm time-out, the heater, the maxima, firmware and clock, top speeds,
// the address, each axis's minimum and maximum, diagnostics and encoders.

#include <algorithm>
#include <chrono>
#include <limits>

#include "sim/command_table.h"

namespace halvex::sim {

namespace {

constexpr Byte kMaxCommTimeout = 120;
constexpr Byte kMaxAddress = 99;
constexpr Byte kLastHeaterMode = 2;
// Step rates and encoder counts are kept as positive 16-bit numbers: the
// top bit of what arrives is dropped.
constexpr std::uint16_t kKeptWord = std::numeric_limits<std::int16_t>::max();

Byte atLeastOne(std::uint32_t value) {
    return static_cast<Byte>(std::max<std::uint32_t>(value, 1));
}
Byte asByte(std::uint16_t value) {
    return static_cast<Byte>(std::min<std::uint16_t>(value, 255));
}
template <class M>
std::uint16_t keptWord(const Command& command, vocab::Field<M> place) {
    return static_cast<std::uint16_t>(command.field(place) & kKeptWord);
}
template <class M>
Byte byteOf(const Command& command, vocab::Field<M> place) {
    return static_cast<Byte>(command.field(place));
}

Response rampReport(UnitState& state, const Command&) {
    namespace v = vocab::ramps;
    return Response::answer(Reply::of<vocab::Ramps>()
                                .set(v::kPanByte, state.settings.panRates.ramp)
                                .set(v::kTiltByte, state.settings.tiltRates.ramp));
}

template <class Axis>
void takeRates(AxisRates& rates, const Command& command) {
    rates.safe = atLeastOne(command.field(Axis::kSafeSpeed));
    rates.ramp = atLeastOne(command.field(Axis::kRamp));
    rates.decel =
        static_cast<Byte>(std::clamp<std::uint32_t>(command.field(Axis::kDeceleration), 1, 63));
}

template <class Axis>
void reportRates(Reply& reply, const AxisRates& rates) {
    reply.set(Axis::kSafeSpeedByte, rates.safe)
        .set(Axis::kRamp, rates.ramp)
        .set(Axis::kDeceleration, rates.decel);
}

Response rates(UnitState& state, const Command& command) {
    namespace v = vocab::rates;
    Settings& s = state.settings;
    if (!command.isRead()) {
        // Only the read request may be short; a set carries every rate.
        if (command.payloadSize() < static_cast<std::size_t>(v::Tilt::kDeceleration.offset)) {
            return Response::refuse();
        }
        takeRates<v::Pan>(s.panRates, command);
        takeRates<v::Tilt>(s.tiltRates, command);
    }
    Reply reply = Reply::of<vocab::RatesReply>();
    reportRates<vocab::rates_reply::Pan>(reply, s.panRates);
    reportRates<vocab::rates_reply::Tilt>(reply, s.tiltRates);
    return Response::answer(reply);
}

// Two layouts share one code: the minimum pair (one byte each) and the
// longer tilt set (safe speed, ramp, minimum and maximum words).
Response minimaOrTiltSet(UnitState& state, const Command& command) {
    Settings& s = state.settings;
    if (command.payloadSize() + 1 >= vocab::TiltSettings::kLength) {
        namespace v = vocab::tilt_settings;
        s.tiltRates.safe = atLeastOne(command.field(v::kSafeSpeed));
        s.tiltRates.ramp = atLeastOne(command.field(v::kRamp));
        s.tiltMin = keptWord(command, v::kMinimum);
        s.tiltMax = keptWord(command, v::kMaximum);
        return Response::answer(Reply::of<vocab::TiltSettings>()
                                    .set(v::kSafeSpeedByte, s.tiltRates.safe)
                                    .set(v::kRamp, s.tiltRates.ramp)
                                    .set(v::kMinimum, s.tiltMin)
                                    .set(v::kMaximum, s.tiltMax));
    }
    namespace v = vocab::minimum_pair;
    s.panMin = byteOf(command, v::kPan);
    s.tiltMin = byteOf(command, v::kTilt);
    return Response::answer(Reply::of<vocab::MinimumPair>()
                                .set(v::kPan, asByte(s.panMin))
                                .set(v::kTilt, asByte(s.tiltMin)));
}

Response directions(UnitState& state, const Command& command) {
    namespace v = vocab::directions;
    if (!command.isRead()) {
        state.settings.directions = byteOf(command, v::kNamedBits);
    }
    return Response::answer(
        Reply::of<vocab::Directions>().set(v::kBits, state.settings.directions));
}

Response commTimeout(UnitState& state, const Command& command) {
    namespace v = vocab::comm_timeout;
    if (!command.isRead()) {
        state.settings.commTimeoutSeconds = std::min(byteOf(command, v::kSeconds), kMaxCommTimeout);
    }
    return Response::answer(
        Reply::of<vocab::CommTimeout>().set(v::kSeconds, state.settings.commTimeoutSeconds));
}

Response heater(UnitState& state, const Command& command) {
    namespace v = vocab::heater;
    const Byte mode = byteOf(command, v::kModeByte);
    if (!command.isRead() && mode <= kLastHeaterMode) {
        state.settings.heater = mode;
    }
    return Response::answer(Reply::of<vocab::Heater>().set(v::kModeByte, state.settings.heater));
}

Response maximaReply(const UnitState& state, Byte code) {
    namespace v = vocab::maxima;
    return Response::answer(Reply::of<vocab::Maxima>(code)
                                .set(v::kPan, asByte(state.settings.panMax))
                                .set(v::kTilt, asByte(state.settings.tiltMax)));
}

Response readMaxima(UnitState& state, const Command& command) {
    return maximaReply(state, command.code());
}

Response setMaxima(UnitState& state, const Command& command) {
    namespace v = vocab::maximum_pair;
    state.settings.panMax = byteOf(command, v::kPan);
    state.settings.tiltMax = byteOf(command, v::kTilt);
    return maximaReply(state, command.code());
}

Response firmware(UnitState& state, const Command&) {
    namespace v = vocab::firmware;
    CalendarDate date;
    if (state.options.clockDate) {
        date = *state.options.clockDate;
    } else {
        const std::chrono::year_month_day today{
            std::chrono::floor<std::chrono::days>(std::chrono::system_clock::now())};
        date = {static_cast<int>(today.year()), static_cast<int>(unsigned(today.month())),
                static_cast<int>(unsigned(today.day()))};
    }
    return Response::answer(
        Reply::of<vocab::Firmware>()
            .set(v::kMajor, state.options.firmwareMajor)
            .set(v::kMinor, state.options.firmwareMinor)
            .set(v::kDay, static_cast<std::uint32_t>(date.day))
            .set(v::kMonth, static_cast<std::uint32_t>(date.month))
            .set(v::kYear, static_cast<std::uint32_t>(date.year - v::kYearBias)));
}

// The first pair of top speeds drives automated moves, the second a jog.
Response topSpeeds(UnitState& state, const Command& command) {
    namespace v = vocab::top_speeds;
    namespace r = vocab::top_speeds_reply;
    const bool second = command.isSet(v::kSecond);
    Settings& s = state.settings;
    Byte& pan = second ? s.panJogTop : s.panTop;
    Byte& tilt = second ? s.tiltJogTop : s.tiltTop;
    if (!command.isRead()) {
        pan = atLeastOne(command.field(v::kPan));
        tilt = atLeastOne(command.field(v::kTilt));
    }
    return Response::answer(Reply::of<vocab::TopSpeedsReply>()
                                .set(r::kSecond, second)
                                .set(r::kPan, pan)
                                .set(r::kTilt, tilt));
}

Response address(UnitState& state, const Command& command) {
    namespace v = vocab::unit_address;
    Byte reported = state.settings.unitId;
    const Byte asked = byteOf(command, v::kId);
    if (!command.isRead() && asked <= kMaxAddress) {
        reported = asked;
        state.pendingId = reported;
    }
    return Response::answer(Reply::of<vocab::UnitAddress>().set(v::kId, reported));
}

// An axis's minimum and maximum words: the command's range and the reply's.
template <class Answer, class Range, class ReplyRange>
Response minMax(const Command& command, std::uint16_t& minimum, std::uint16_t& maximum) {
    if (!command.isRead()) {
        minimum = keptWord(command, Range::kMinimum);
        maximum = keptWord(command, Range::kMaximum);
    }
    return Response::answer(
        Reply::of<Answer>().set(ReplyRange::kMinimum, minimum).set(ReplyRange::kMaximum, maximum));
}

Response panMinMax(UnitState& state, const Command& command) {
    return minMax<vocab::PanStepsReply, vocab::pan_steps, vocab::pan_steps_reply>(
        command, state.settings.panMin, state.settings.panMax);
}

Response tiltMinMax(UnitState& state, const Command& command) {
    return minMax<vocab::TiltStepsReply, vocab::tilt_steps, vocab::tilt_steps_reply>(
        command, state.settings.tiltMin, state.settings.tiltMax);
}

// No diagnostics are kept; the request is acknowledged.
Response diagnostics(UnitState&, const Command&) {
    return Response::answer(Reply::of<vocab::Diagnostics>());
}

Response encoders(UnitState& state, const Command& command) {
    namespace v = vocab::encoders;
    namespace r = vocab::encoders_reply;
    Settings& s = state.settings;
    if (!command.isRead()) {
        s.panEncoder = keptWord(command, v::kPan);
        s.tiltEncoder = keptWord(command, v::kTilt);
    }
    return Response::answer(
        Reply::of<vocab::EncodersReply>().set(r::kPan, s.panEncoder).set(r::kTilt, s.tiltEncoder));
}

}  // namespace

void addSetupCommands(CommandTable& table) {
    table.add<vocab::RampRequest>(rampReport);
    table.add<vocab::Rates>(rates);
    table.add<vocab::MinimumPair>(minimaOrTiltSet);
    table.add<vocab::Directions>(directions);
    table.add<vocab::CommTimeout>(commTimeout);
    table.add<vocab::Heater>(heater);
    table.add<vocab::MaximaRequest>(readMaxima);
    table.add<vocab::MaximumPair>(setMaxima);
    table.add<vocab::FirmwareRequest>(firmware);
    table.add<vocab::TopSpeeds>(topSpeeds);
    table.add<vocab::UnitAddress>(address);
    table.add<vocab::PanSteps>(panMinMax);
    table.add<vocab::TiltSteps>(tiltMinMax);
    table.add<vocab::DiagnosticsRequest>(diagnostics);
    table.add<vocab::Encoders>(encoders);
}

}  // namespace halvex::sim
