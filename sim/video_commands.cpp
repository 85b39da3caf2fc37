// Video, on-screen display and auxiliary outputs: 0x63 legacy video,
// 0x64 video mode and power, 0x66 aux outputs, 0x70 angle display,
// 0x71 name display, 0x75 site name.

#include "sim/command_table.h"

namespace halvex::sim {

namespace {

constexpr int kPowerUpBit = 6;
constexpr Byte kPowerBits = 0x0C;  // camera 1 and camera 2 power

Response videoMode(UnitState& state, const Command& command) {
    Settings& s = state.settings;
    if (!command.isRead()) {
        s.videoMode = command.byte(1) & 0x3F;
        // The short form of the command sets the mode alone.
        if (command.payloadSize() >= 2) {
            s.videoPower = command.byte(2) & kPowerBits;
        }
        if (BitIsSet(command.byte(1), kPowerUpBit)) {
            state.powerUp.videoMode = s.videoMode;
            state.powerUp.videoPower = s.videoPower;
        }
    }
    return Response::answer(Reply(command.code()).byte(s.videoMode).byte(s.videoPower));
}

Response legacyVideo(UnitState& state, const Command& command) {
    Settings& s = state.settings;
    if (!command.isRead()) {
        s.legacyVideo = command.byte(1) & 0x03;
        s.videoPower = command.byte(1) & kPowerBits;
    }
    return Response::answer(Reply(command.code()).byte(s.legacyVideo | s.videoPower));
}

Response auxOutputs(UnitState& state, const Command& command) {
    if (!command.isRead()) {
        state.settings.aux = command.byte(1) & 0x0F;
    }
    return Response::answer(Reply(command.code()).byte(state.settings.aux));
}

// Angle (0x70) and name (0x71) displays share one setting layout: line in
// bits 0-3, on in bit 4, signed in bit 5.
Response displaySetting(const Command& command, Byte& live, Byte& powerUp) {
    if (!command.isRead()) {
        live = command.byte(1) & 0x3F;
        if (BitIsSet(command.byte(1), kPowerUpBit)) {
            powerUp = live;
        }
    }
    return Response::answer(Reply(command.code()).byte(live));
}

Response angleDisplay(UnitState& state, const Command& command) {
    return displaySetting(command, state.settings.angleDisplay, state.powerUp.angleDisplay);
}

Response nameDisplay(UnitState& state, const Command& command) {
    return displaySetting(command, state.settings.nameDisplay, state.powerUp.nameDisplay);
}

Response siteName(UnitState& state, const Command& command) {
    for (std::size_t i = 0; i < state.settings.siteName.size(); ++i) {
        const Byte value = command.byte(1 + i);
        state.settings.siteName[i] = value >= 32 && value <= 127 ? value : ' ';
    }
    return Response::answer(Reply(command.code()));
}

}  // namespace

void addVideoCommands(CommandTable& table) {
    table.add(0x63, 1, legacyVideo);
    table.add(0x64, 1, videoMode);
    table.add(0x66, 1, auxOutputs);
    table.add(0x70, 1, angleDisplay);
    table.add(0x71, 1, nameDisplay);
    table.add(0x75, 12, siteName);
}

}  // namespace halvex::sim
