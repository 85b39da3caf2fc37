// Angle offsets, soft limits, the resolver centre and the two long
// alignment procedures: the encoders' first alignment and the homing cycle.

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
    using v = vocab::angle_offsets;
    return Response::answer(Reply::of<vocab::AngleOffsets>(code)
                                .setSigned(v::kPan, state.settings.panOffset)
                                .setSigned(v::kTilt, state.settings.tiltOffset));
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
    using v = vocab::set_angle_offsets;
    setOffsets(state, command.signedField(v::kPan), command.signedField(v::kTilt));
    return offsetsReply(state, command.code());
}

Response alignToCentre(UnitState& state, const Command& command) {
    setOffsets(state, -state.motion.mechanicalPan(), -state.motion.mechanicalTilt());
    return offsetsReply(state, command.code());
}

Response alignToCoordinates(UnitState& state, const Command& command) {
    using v = vocab::align_to_coordinates;
    setOffsets(state, command.signedField(v::kPan) - state.motion.mechanicalPan(),
               command.signedField(v::kTilt) - state.motion.mechanicalTilt());
    return offsetsReply(state, command.code());
}

Response zeroOffsets(UnitState& state, const Command& command) {
    setOffsets(state, 0, 0);
    return offsetsReply(state, command.code());
}

Response readOffsets(UnitState& state, const Command& command) {
    return offsetsReply(state, command.code());
}

// The limit's index, with the read bit to read it instead of setting it at
// the current position. The reply gives the limit in reported angles, and
// zero for an index the unit does not have.
Response softLimit(UnitState& state, const Command& command) {
    namespace v = vocab::soft_limit_reply;
    const int index = static_cast<int>(command.field(vocab::soft_limit::kLimit));
    Reply reply =
        Reply::of<vocab::SoftLimitReply>().set(v::kLimit, static_cast<std::uint32_t>(index));
    if (index > kLimitDown) {
        return Response::answer(reply);
    }
    const bool isPan = index == kLimitCw || index == kLimitCcw;
    auto& limit = state.settings.softLimits[index];
    if (!command.isRead()) {
        limit = isPan ? state.motion.mechanicalPan() : state.motion.mechanicalTilt();
    }
    return Response::answer(reply.setSigned(
        v::kPosition, limit + (isPan ? state.settings.panOffset : state.settings.tiltOffset)));
}

Response centreReadings(const UnitState& state, Byte code) {
    using v = vocab::centre_position;
    return Response::answer(Reply::of<vocab::CentrePosition>(code)
                                .setSigned(v::kPan, state.settings.panResolverCentre)
                                .setSigned(v::kTilt, state.settings.tiltResolverCentre));
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

Response encoderAlignment(UnitState& state, const Command&) {
    using v = vocab::encoder_alignment_finished;
    const Reply reply = Reply::of<vocab::EncoderAlignmentFinished>()
                            .setSigned(v::kPan, state.settings.panResolverCentre +
                                                    toResolver(state.motion.mechanicalPan()))
                            .setSigned(v::kTilt, state.settings.tiltResolverCentre +
                                                     toResolver(state.motion.mechanicalTilt()));
    state.motion.stop();
    state.procedure = LongProcedure{state.nowMs + state.options.alignmentMs, reply.message()};
    return Response::nothing();
}

Response homingCycle(UnitState& state, const Command&) {
    namespace v = vocab::homing_cycle_finished;
    // An axis with a latched fault never finds its index.
    const bool panFound = !state.motion.panFaulted();
    const bool tiltFound = !state.motion.tiltFaulted();
    const Reply reply =
        Reply::of<vocab::HomingCycleFinished>()
            .set(v::kPanIndexFound, panFound)
            .set(v::kTiltIndexFound, tiltFound)
            .setSigned(v::kPan,
                       panFound ? state.settings.panResolverCentre + state.settings.panEncoder : 0)
            .setSigned(
                v::kTilt,
                tiltFound ? state.settings.tiltResolverCentre + state.settings.tiltEncoder : 0);
    state.motion.stop();
    state.procedure = LongProcedure{state.nowMs + state.options.homingMs, reply.message()};
    return Response::nothing();
}

}  // namespace

void addAlignmentCommands(CommandTable& table) {
    table.add<vocab::SetAngleOffsets>(setAngleOffsets);
    table.add<vocab::SoftLimit>(softLimit);
    table.add<vocab::AlignToCentre>(alignToCentre);
    table.add<vocab::AlignToCoordinates>(alignToCoordinates);
    table.add<vocab::ZeroOffsets>(zeroOffsets);
    table.add<vocab::OffsetsRequest>(readOffsets);
    table.add<vocab::CentreRequest>(readCentre);
    table.add<vocab::SetCentre>(setCentre);
    table.add<vocab::EncoderAlignment>(encoderAlignment);
    table.add<vocab::HomingCycle>(homingCycle);
}

}  // namespace halvex::sim
