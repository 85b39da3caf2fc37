// Preset commands: 0x40 read, 0x41 store angles, 0x42 store the current
// position, 0x43 add the current lens positions, 0x94 clear all. Each answers
// with the preset record.

#include "sim/command_table.h"

namespace halvex::sim {

namespace {

constexpr Byte kNoSuchPreset = 255;

// n, pan(3), tilt(3) in reported angles, then the four lens bytes; 255 and
// zeros for a number the unit does not have.
Response presetRecord(const UnitState& state, Byte code, int number) {
    Reply reply(code);
    if (!Presets::valid(number)) {
        reply.byte(kNoSuchPreset);
        for (int i = 0; i < 10; ++i) {
            reply.byte(0);
        }
        return Response::answer(reply);
    }
    const Preset& preset = state.presets.at(number);
    reply.byte(number);
    reply.angle(preset.pan + state.settings.panOffset);
    reply.angle(preset.tilt + state.settings.tiltOffset);
    for (Byte lens : preset.lens) {
        reply.byte(lens);
    }
    return Response::answer(reply);
}

std::array<Byte, 4> currentLens(const UnitState& state) {
    return {state.lenses.position(0), state.lenses.position(1), state.lenses.position(2),
            state.lenses.position(3)};
}

Response readPreset(UnitState& state, const Command& command) {
    return presetRecord(state, command.code(), command.byte(1));
}

Response storeAngles(UnitState& state, const Command& command) {
    const int number = command.byte(1);
    if (Presets::valid(number)) {
        Preset& preset = state.presets.at(number);
        preset.pan = command.angle(2) - state.settings.panOffset;
        preset.tilt = command.angle(5) - state.settings.tiltOffset;
    }
    return presetRecord(state, command.code(), number);
}

Response storeCurrent(UnitState& state, const Command& command) {
    const int number = command.byte(1);
    if (Presets::valid(number)) {
        Preset& preset = state.presets.at(number);
        preset.pan = state.motion.mechanicalPan();
        preset.tilt = state.motion.mechanicalTilt();
        preset.lens = currentLens(state);
    }
    return presetRecord(state, command.code(), number);
}

Response addLens(UnitState& state, const Command& command) {
    const int number = command.byte(1);
    if (Presets::valid(number)) {
        state.presets.at(number).lens = currentLens(state);
    }
    return presetRecord(state, command.code(), number);
}

Response clearAll(UnitState& state, const Command& command) {
    state.presets.clearAll();
    return Response::answer(Reply(command.code()));
}

}  // namespace

void addPresetCommands(CommandTable& table) {
    table.add(0x40, 1, readPreset);
    table.add(0x41, 7, storeAngles);
    table.add(0x42, 1, storeCurrent);
    table.add(0x43, 1, addLens);
    table.add(0x94, 0, clearAll);
}

}  // namespace halvex::sim
