// Jog and move commands: jog, go to preset, absolute and delta moves,
// centre, home and the absolute move with lens positions.

#include "protocol/vocabulary_lens_jog.h"
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
        anySpeed = anySpeed || lens_jog::speedOf(value) != 0;
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
    return moveToPreset(state, command.code(),
                        static_cast<int>(command.field(vocab::go_to_preset::kPreset)));
}

Response absoluteMove(UnitState& state, const Command& command) {
    namespace v = vocab::absolute_move;
    return moveAndReport(state, command.code(), command.signedField(v::kPan),
                         command.signedField(v::kTilt));
}

Response deltaMove(UnitState& state, const Command& command) {
    namespace v = vocab::delta_move;
    const ReportedTarget current = currentPosition(state);
    return moveAndReport(state, command.code(), current.pan + command.signedField(v::kPan),
                         current.tilt + command.signedField(v::kTilt));
}

Response centre(UnitState& state, const Command& command) {
    return moveAndReport(state, command.code(), state.settings.panOffset,
                         state.settings.tiltOffset);
}

Response home(UnitState& state, const Command& command) {
    return moveToPreset(state, command.code(), Presets::kHome);
}

Response absoluteMoveWithLenses(UnitState& state, const Command& command) {
    namespace v = vocab::absolute_move_with_lenses;
    Response response = moveAndReport(state, command.code(), command.signedField(v::kPan),
                                      command.signedField(v::kTilt));
    std::array<Byte, Lenses::kCount> lens{};
    for (std::size_t i = 0; i < lens.size(); ++i) {
        lens[i] = static_cast<Byte>(command.field(v::kLens[i]));
    }
    state.lenses.moveTo(lens, state.settings);
    // The reply carries the lens positions as they were when it was built.
    return response;
}

}  // namespace

void addMotionCommands(CommandTable& table) {
    table.add<vocab::JogMessage>(jog);
    table.add<vocab::GoToPreset>(goToPreset);
    table.add<vocab::AbsoluteMove>(absoluteMove);
    table.add<vocab::DeltaMove>(deltaMove);
    table.add<vocab::MoveToCentre>(centre);
    table.add<vocab::MoveToHome>(home);
    table.add<vocab::AbsoluteMoveWithLenses>(absoluteMoveWithLenses);
}

}  // namespace halvex::sim
