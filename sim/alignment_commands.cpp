// Angle offsets, soft limits, resolver centre and the two long alignment
// procedures: 0x80..0x85, 0x81 limits, 0x90/0x91 centre, 0x9D encoder
// alignment, 0x9E homing cycle.

#include <cstdlib>

#include "sim/angles.h"
#include "sim/command_table.h"

namespace halvex::sim {

namespace {

constexpr std::int32_t kResolverCountsPerTurn = 65536;

std::int32_t toResolver(std::int32_t hundredths) {
    return static_cast<std::int32_t>(static_cast<std::int64_t>(hundredths) *
                                     kResolverCountsPerTurn / kFullTurn);
}

Response offsetsReply(const UnitState& state, Byte code) {
    return Response::answer(
        Reply(code).angle(state.settings.panOffset).angle(state.settings.tiltOffset));
}

// Offsets beyond a full turn of pan or half a turn of tilt make no sense
// and are not taken.
void setOffsets(UnitState& state, std::int32_t pan, std::int32_t tilt) {
    if (std::abs(pan) <= kFullTurn && std::abs(tilt) <= 2 * kTiltEnd) {
        state.settings.panOffset = pan;
        state.settings.tiltOffset = tilt;
    }
}

Response setAngleOffsets(UnitState& state, const Command& command) {
    setOffsets(state, command.angle(1), command.angle(4));
    return offsetsReply(state, command.code());
}

Response alignToCentre(UnitState& state, const Command& command) {
    setOffsets(state, -state.motion.mechanicalPan(), -state.motion.mechanicalTilt());
    return offsetsReply(state, command.code());
}

Response alignToCoordinates(UnitState& state, const Command& command) {
    setOffsets(state, command.angle(1) - state.motion.mechanicalPan(),
               command.angle(4) - state.motion.mechanicalTilt());
    return offsetsReply(state, command.code());
}

Response zeroOffsets(UnitState& state, const Command& command) {
    setOffsets(state, 0, 0);
    return offsetsReply(state, command.code());
}

Response readOffsets(UnitState& state, const Command& command) {
    return offsetsReply(state, command.code());
}

// Byte 1 is the limit index, OR 0x80 to read instead of setting the limit
// at the current position. The reply gives the limit in reported angles.
Response softLimit(UnitState& state, const Command& command) {
    const int index = command.byte(1) & 0x7F;
    Reply reply(command.code());
    reply.byte(index);
    if (index > kLimitDown) {
        return Response::answer(reply.angle(0));
    }
    const bool isPan = index == kLimitCw || index == kLimitCcw;
    auto& limit = state.settings.softLimits[index];
    if (!command.isRead()) {
        limit = isPan ? state.motion.mechanicalPan() : state.motion.mechanicalTilt();
    }
    return Response::answer(
        reply.angle(limit + (isPan ? state.settings.panOffset : state.settings.tiltOffset)));
}

Response centreReadings(const UnitState& state, Byte code) {
    return Response::answer(Reply(code)
                                .angle(state.settings.panResolverCentre)
                                .angle(state.settings.tiltResolverCentre));
}

Response readCentre(UnitState& state, const Command& command) {
    return centreReadings(state, command.code());
}

// The current position becomes the mechanical centre.
Response setCentre(UnitState& state, const Command& command) {
    state.settings.panResolverCentre += toResolver(state.motion.mechanicalPan());
    state.settings.tiltResolverCentre += toResolver(state.motion.mechanicalTilt());
    state.motion.recentre();
    return centreReadings(state, command.code());
}

Response encoderAlignment(UnitState& state, const Command& command) {
    const Reply reply =
        Reply(command.code())
            .angle(state.settings.panResolverCentre + toResolver(state.motion.mechanicalPan()))
            .angle(state.settings.tiltResolverCentre + toResolver(state.motion.mechanicalTilt()));
    state.motion.stop();
    state.procedure = LongProcedure{state.nowMs + state.options.alignmentMs, reply.message()};
    return Response::nothing();
}

Response homingCycle(UnitState& state, const Command& command) {
    // An axis with a latched fault never finds its index.
    const bool panFound = !state.motion.panFaulted();
    const bool tiltFound = !state.motion.tiltFaulted();
    const Reply reply =
        Reply(command.code())
            .byte((panFound ? 1 : 0) | (tiltFound ? 2 : 0))
            .angle(panFound ? state.settings.panResolverCentre + state.settings.panEncoder : 0)
            .angle(tiltFound ? state.settings.tiltResolverCentre + state.settings.tiltEncoder : 0);
    state.motion.stop();
    state.procedure = LongProcedure{state.nowMs + state.options.homingMs, reply.message()};
    return Response::nothing();
}

}  // namespace

void addAlignmentCommands(CommandTable& table) {
    table.add(0x80, 6, setAngleOffsets);
    table.add(0x81, 1, softLimit);
    table.add(0x82, 0, alignToCentre);
    table.add(0x83, 6, alignToCoordinates);
    table.add(0x84, 0, zeroOffsets);
    table.add(0x85, 0, readOffsets);
    table.add(0x90, 0, readCentre);
    table.add(0x91, 0, setCentre);
    table.add(0x9D, 0, encoderAlignment);
    table.add(0x9E, 0, homingCycle);
}

}  // namespace halvex::sim
