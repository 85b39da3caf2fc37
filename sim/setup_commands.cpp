// Unit setup: 0x86 ramps, 0x92 rates, 0x93 minima and tilt set, 0x95
// directions, 0x96 comm time-out, 0x97 heater, 0x98/0x99 maxima, 0x9A
// firmware and clock, 0x9C top speeds, 0x9F address, 0xA1/0xA2 minimum and
// maximum, 0xA3 diagnostics, 0xA5 encoders.

#include <algorithm>
#include <chrono>

#include "sim/command_table.h"

namespace halvex::sim {

namespace {

constexpr Byte kMaxCommTimeout = 120;
constexpr Byte kMaxAddress = 99;
constexpr int kSecondVariantBit = 6;

Byte atLeastOne(Byte value) {
    return std::max<Byte>(value, 1);
}
Byte asByte(std::uint16_t value) {
    return static_cast<Byte>(std::min<std::uint16_t>(value, 255));
}
std::uint16_t word(Byte lo, Byte hi) {
    return static_cast<std::uint16_t>(lo | (hi << 8));
}

Response rampReport(UnitState& state, const Command& command) {
    return Response::answer(Reply(command.code())
                                .byte(state.settings.panRates.ramp)
                                .byte(state.settings.tiltRates.ramp));
}

void setRates(AxisRates& rates, Byte safe, Byte ramp, Byte decel) {
    rates.safe = atLeastOne(safe & 0x7F);
    rates.ramp = atLeastOne(ramp);
    rates.decel = std::clamp<Byte>(decel, 1, 63);
}

Response rates(UnitState& state, const Command& command) {
    Settings& s = state.settings;
    if (!command.isRead()) {
        if (command.payloadSize() < 7) {
            return Response::refuse();
        }
        setRates(s.panRates, command.byte(1), command.byte(2), command.byte(3));
        setRates(s.tiltRates, command.byte(5), command.byte(6), command.byte(7));
    }
    return Response::answer(Reply(command.code())
                                .byte(s.panRates.safe)
                                .byte(s.panRates.ramp)
                                .byte(s.panRates.decel)
                                .byte(0)
                                .byte(s.tiltRates.safe)
                                .byte(s.tiltRates.ramp)
                                .byte(s.tiltRates.decel));
}

// Two layouts share 0x93: the minimum pair (one byte each) and the longer
// tilt set (safe speed, ramp, minimum and maximum words).
Response minimaOrTiltSet(UnitState& state, const Command& command) {
    Settings& s = state.settings;
    if (command.payloadSize() >= 6) {
        s.tiltRates.safe = atLeastOne(command.byte(1) & 0x7F);
        s.tiltRates.ramp = atLeastOne(command.byte(2));
        s.tiltMin = word(command.byte(3), command.byte(4)) & 0x7FFF;
        s.tiltMax = word(command.byte(5), command.byte(6)) & 0x7FFF;
        return Response::answer(Reply(command.code())
                                    .byte(s.tiltRates.safe)
                                    .byte(s.tiltRates.ramp)
                                    .word(s.tiltMin)
                                    .word(s.tiltMax));
    }
    s.panMin = command.byte(1);
    s.tiltMin = command.byte(2);
    return Response::answer(Reply(command.code()).byte(asByte(s.panMin)).byte(asByte(s.tiltMin)));
}

Response directions(UnitState& state, const Command& command) {
    if (!command.isRead()) {
        state.settings.directions = command.byte(1) & 0x3F;
    }
    return Response::answer(Reply(command.code()).byte(state.settings.directions));
}

Response commTimeout(UnitState& state, const Command& command) {
    if (!command.isRead()) {
        state.settings.commTimeoutSeconds = std::min(command.byte(1), kMaxCommTimeout);
    }
    return Response::answer(Reply(command.code()).byte(state.settings.commTimeoutSeconds));
}

Response heater(UnitState& state, const Command& command) {
    if (!command.isRead() && command.byte(1) <= 2) {
        state.settings.heater = command.byte(1);
    }
    return Response::answer(Reply(command.code()).byte(state.settings.heater));
}

Response maximaReply(const UnitState& state, Byte code) {
    return Response::answer(
        Reply(code).byte(asByte(state.settings.panMax)).byte(asByte(state.settings.tiltMax)));
}

Response readMaxima(UnitState& state, const Command& command) {
    return maximaReply(state, command.code());
}

Response setMaxima(UnitState& state, const Command& command) {
    state.settings.panMax = command.byte(1);
    state.settings.tiltMax = command.byte(2);
    return maximaReply(state, command.code());
}

Response firmware(UnitState& state, const Command& command) {
    CalendarDate date;
    if (state.options.clockDate) {
        date = *state.options.clockDate;
    } else {
        const std::chrono::year_month_day today{
            std::chrono::floor<std::chrono::days>(std::chrono::system_clock::now())};
        date = {static_cast<int>(today.year()), static_cast<int>(unsigned(today.month())),
                static_cast<int>(unsigned(today.day()))};
    }
    return Response::answer(Reply(command.code())
                                .byte(state.options.firmwareMajor)
                                .byte(state.options.firmwareMinor)
                                .byte(date.day)
                                .byte(date.month)
                                .byte(date.year - 2000));
}

// Byte 1: bit 7 read, bit 6 second variant; then pan and tilt.
Response topSpeeds(UnitState& state, const Command& command) {
    const bool second = BitIsSet(command.byte(1), kSecondVariantBit);
    Settings& s = state.settings;
    Byte& pan = second ? s.panJogTop : s.panTop;
    Byte& tilt = second ? s.tiltJogTop : s.tiltTop;
    if (!command.isRead()) {
        pan = atLeastOne(command.byte(2));
        tilt = atLeastOne(command.byte(3));
    }
    return Response::answer(Reply(command.code()).byte(second ? 0x40 : 0).byte(pan).byte(tilt));
}

Response address(UnitState& state, const Command& command) {
    Byte reported = state.settings.unitId;
    if (!command.isRead() && command.byte(1) <= kMaxAddress) {
        reported = command.byte(1);
        state.pendingId = reported;
    }
    return Response::answer(Reply(command.code()).byte(reported));
}

// Minimum and maximum words, low byte first, for pan (0xA1) or tilt (0xA2).
Response minMax(const Command& command, std::uint16_t& minimum, std::uint16_t& maximum) {
    if (!command.isRead()) {
        minimum = word(command.byte(2), command.byte(3)) & 0x7FFF;
        maximum = word(command.byte(4), command.byte(5)) & 0x7FFF;
    }
    return Response::answer(Reply(command.code()).word(minimum).word(maximum));
}

Response panMinMax(UnitState& state, const Command& command) {
    return minMax(command, state.settings.panMin, state.settings.panMax);
}

Response tiltMinMax(UnitState& state, const Command& command) {
    return minMax(command, state.settings.tiltMin, state.settings.tiltMax);
}

// No diagnostics are kept; the request is acknowledged.
Response diagnostics(UnitState&, const Command& command) {
    return Response::answer(Reply(command.code()));
}

Response encoders(UnitState& state, const Command& command) {
    Settings& s = state.settings;
    if (!command.isRead()) {
        s.panEncoder = word(command.byte(2), command.byte(3)) & 0x7FFF;
        s.tiltEncoder = word(command.byte(4), command.byte(5)) & 0x7FFF;
    }
    return Response::answer(Reply(command.code()).word(s.panEncoder).word(s.tiltEncoder));
}

}  // namespace

void addSetupCommands(CommandTable& table) {
    table.add(0x86, 0, rampReport);
    table.add(0x92, 1, rates);
    table.add(0x93, 2, minimaOrTiltSet);
    table.add(0x95, 1, directions);
    table.add(0x96, 1, commTimeout);
    table.add(0x97, 1, heater);
    table.add(0x98, 0, readMaxima);
    table.add(0x99, 2, setMaxima);
    table.add(0x9A, 0, firmware);
    table.add(0x9C, 3, topSpeeds);
    table.add(0x9F, 1, address);
    table.add(0xA1, 5, panMinMax);
    table.add(0xA2, 5, tiltMinMax);
    table.add(0xA3, 0, diagnostics);
    table.add(0xA5, 5, encoders);
}

}  // namespace halvex::sim
