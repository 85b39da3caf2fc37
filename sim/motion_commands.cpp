// Jog and move commands: 0x31 jog, 0x32 go to preset, 0x33 absolute move,
// 0x34 delta move, 0x35 centre, 0x36 home, 0x3A absolute move with lenses.

#include "sim/angles.h"
#include "sim/command_table.h"
#include "sim/report.h"

namespace halvex::sim {

namespace {

ReportedTarget currentPosition(const UnitState& state) {
    return {state.motion.reportedPan(state.settings), state.motion.reportedTilt(state.settings)};
}

// Starts a move to reported angles and answers with where the unit is now
// heading: the target, a held axis's current angle, or the current position
// when the target lies outside the range.
Response moveAndReport(UnitState& state, Byte code, std::int32_t pan, std::int32_t tilt) {
    const ReportedTarget current = currentPosition(state);
    if (!state.motion.moveToReported(pan, tilt, state.settings)) {
        return Response::answer(targetReport(code, state, current));
    }
    ReportedTarget target{pan == kHoldAxis ? current.pan : pan,
                          tilt == kHoldAxis ? current.tilt : tilt};
    if (state.settings.continuousPan()) {
        target.pan = static_cast<std::int32_t>(wrapPan(target.pan - state.settings.panOffset)) +
                     state.settings.panOffset;
    }
    return Response::answer(targetReport(code, state, target));
}

Response moveToPreset(UnitState& state, Byte code, int number) {
    if (!Presets::valid(number)) {
        return Response::answer(targetReport(code, state, currentPosition(state)));
    }
    const Preset& preset = state.presets.at(number);
    if (preset.hasLens()) {
        state.lenses.moveTo(preset.lens, state.settings);
    }
    return moveAndReport(state, code, preset.pan + state.settings.panOffset,
                         preset.tilt + state.settings.tiltOffset);
}

Response jog(UnitState& state, const Command& command) {
    using namespace vocab;
    const JogRequest request{static_cast<Byte>(command.field(jog::kFlagsByte)),
                             static_cast<Byte>(command.field(jog::kPanSpeed)),
                             static_cast<Byte>(command.field(jog::kTiltSpeed))};
    std::array<Byte, 4> lensJog{};
    for (std::size_t i = 0; i < lensJog.size(); ++i) {
        lensJog[i] = static_cast<Byte>(command.field(jog::kLensJog[i]));
    }
    bool anySpeed = request.panSpeed != 0 || request.tiltSpeed != 0;
    for (Byte value : lensJog) {
        anySpeed = anySpeed || (value >> 1) != 0;
    }
    if (anySpeed) {
        state.endAutomation();
    }
    state.motion.jog(request, state.settings);
    state.lenses.jog(lensJog, state.settings);
    if (isSet(request.flags, jog::kStop)) {
        state.endAutomation();
        state.motion.stop();
        state.lenses.stop();
    }
    return Response::answer(jogReport(state));
}

Response goToPreset(UnitState& state, const Command& command) {
    return moveToPreset(state, command.code(), command.byte(1));
}

Response absoluteMove(UnitState& state, const Command& command) {
    return moveAndReport(state, command.code(), command.angle(1), command.angle(4));
}

Response deltaMove(UnitState& state, const Command& command) {
    const ReportedTarget current = currentPosition(state);
    return moveAndReport(state, command.code(), current.pan + command.angle(1),
                         current.tilt + command.angle(4));
}

Response centre(UnitState& state, const Command& command) {
    return moveAndReport(state, command.code(), state.settings.panOffset,
                         state.settings.tiltOffset);
}

Response home(UnitState& state, const Command& command) {
    return moveToPreset(state, command.code(), Presets::kHome);
}

Response absoluteMoveWithLenses(UnitState& state, const Command& command) {
    Response response = moveAndReport(state, command.code(), command.angle(1), command.angle(4));
    state.lenses.moveTo({command.byte(7), command.byte(8), command.byte(9), command.byte(10)},
                        state.settings);
    // The reply carries the lens positions as they were when it was built.
    return response;
}

}  // namespace

void addMotionCommands(CommandTable& table) {
    table.add(vocab::JogMessage::kCode, vocab::JogMessage::kLength - 1, jog);
    table.add(0x32, 1, goToPreset);
    table.add(0x33, 6, absoluteMove);
    table.add(0x34, 6, deltaMove);
    table.add(0x35, 0, centre);
    table.add(0x36, 0, home);
    table.add(0x3A, 10, absoluteMoveWithLenses);
}

}  // namespace halvex::sim
