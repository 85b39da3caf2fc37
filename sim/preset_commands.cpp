// Preset commands: reading a preset, storing angles, storing the current
// position, adding the current lens positions, and clearing them all. Each
// but the clearing answers with the preset record.

#include "sim/command_table.h"

namespace halvex::sim {

namespace {

// The number, the angles in reported hundredths and the four lens bytes;
// the no-preset number and zeros for a number the unit does not have.
Response presetRecord(const UnitState& state, Byte code, int number) {
    namespace v = vocab::preset_record;
    Reply reply = Reply::of<vocab::PresetRecord>(code);
    if (!Presets::valid(number)) {
        return Response::answer(reply.set(v::kPreset, v::kNoPreset));
    }
    const Preset& preset = state.presets.at(number);
    reply.set(v::kPreset, static_cast<std::uint32_t>(number));
    reply.setSigned(v::kPan, preset.pan + state.settings.panOffset);
    reply.setSigned(v::kTilt, preset.tilt + state.settings.tiltOffset);
    for (std::size_t i = 0; i < preset.lens.size(); ++i) {
        reply.set(v::kLens.at(i), preset.lens[i]);
    }
    return Response::answer(reply);
}

std::array<Byte, 4> currentLens(const UnitState& state) {
    return {state.lenses.position(0), state.lenses.position(1), state.lenses.position(2),
            state.lenses.position(3)};
}

template <class M>
int presetOf(const Command& command, vocab::Field<M> place) {
    return static_cast<int>(command.field(place));
}

Response readPreset(UnitState& state, const Command& command) {
    return presetRecord(state, command.code(), presetOf(command, vocab::preset_request::kPreset));
}

Response storeAngles(UnitState& state, const Command& command) {
    namespace v = vocab::store_preset;
    const int number = presetOf(command, v::kPreset);
    if (Presets::valid(number)) {
        Preset& preset = state.presets.at(number);
        preset.pan = command.signedField(v::kPan) - state.settings.panOffset;
        preset.tilt = command.signedField(v::kTilt) - state.settings.tiltOffset;
    }
    return presetRecord(state, command.code(), number);
}

Response storeCurrent(UnitState& state, const Command& command) {
    const int number = presetOf(command, vocab::store_current_position::kPreset);
    if (Presets::valid(number)) {
        Preset& preset = state.presets.at(number);
        preset.pan = state.motion.mechanicalPan();
        preset.tilt = state.motion.mechanicalTilt();
        preset.lens = currentLens(state);
    }
    return presetRecord(state, command.code(), number);
}

Response addLens(UnitState& state, const Command& command) {
    const int number = presetOf(command, vocab::add_lens_positions::kPreset);
    if (Presets::valid(number)) {
        state.presets.at(number).lens = currentLens(state);
    }
    return presetRecord(state, command.code(), number);
}

Response clearAll(UnitState& state, const Command&) {
    state.presets.clearAll();
    return Response::answer(Reply::of<vocab::ClearAllPresets>());
}

}  // namespace

void addPresetCommands(CommandTable& table) {
    table.add<vocab::PresetRequest>(readPreset);
    table.add<vocab::StorePreset>(storeAngles);
    table.add<vocab::StoreCurrentPosition>(storeCurrent);
    table.add<vocab::AddLensPositions>(addLens);
    table.add<vocab::ClearAllPresets>(clearAll);
}

}  // namespace halvex::sim
