// Camera port commands: 0x60 serial settings, 0x61 lens configuration,
// 0x62 bytes to a camera, 0x65 response time-outs.

#include <vector>

#include "sim/command_table.h"

namespace halvex::sim {

namespace {

Response portSettings(UnitState& state, const Command& command) {
    auto& comm = state.settings.cameraComm;
    if (!command.isRead()) {
        comm = {static_cast<Byte>(command.byte(1) & 0x7F),
                static_cast<Byte>(command.byte(2) & 0x7F)};
    }
    return Response::answer(Reply(command.code()).byte(comm[0]).byte(comm[1]));
}

Response lensConfiguration(UnitState& state, const Command& command) {
    Settings& s = state.settings;
    if (!command.isRead()) {
        s.lensConfig = {static_cast<Byte>(command.byte(1) & 0x7F),
                        static_cast<Byte>(command.byte(4) & 0x7F)};
        s.zoomMinSpeed = {command.byte(2), command.byte(5)};
        s.focusMinSpeed = {command.byte(3), command.byte(6)};
    }
    Reply reply(command.code());
    for (int camera = 0; camera < 2; ++camera) {
        reply.byte(s.lensConfig[camera]).byte(s.zoomMinSpeed[camera]).byte(s.focusMinSpeed[camera]);
    }
    return Response::answer(reply);
}

Response passThrough(UnitState& state, const Command& command) {
    const std::size_t length = command.byte(1) & 0x7F;
    const int camera = BitIsSet(command.byte(1), 7) ? 1 : 0;
    if (command.payloadSize() < 1 + length) {
        return Response::refuse();
    }
    // The type without second camera hardware has nothing on port 2.
    const bool present = camera == 0 || state.options.variant != 1;
    if (present) {
        std::vector<Byte> data;
        for (std::size_t i = 0; i < length; ++i) {
            data.push_back(command.byte(2 + i));
        }
        state.cameras[camera].send(data, state.nowMs, state.settings.cameraComm[camera],
                                   state.settings.cameraTimeout[camera], state.lensOf(camera));
    }
    return Response::answer(Reply(command.code()));
}

Response responseTimeouts(UnitState& state, const Command& command) {
    auto& timeouts = state.settings.cameraTimeout;
    if (!command.isRead()) {
        for (int camera = 0; camera < 2; ++camera) {
            const Byte value = command.byte(1 + camera);
            if (value >= 1 && value <= 100) {
                timeouts[camera] = value;
            }
        }
    }
    return Response::answer(Reply(command.code()).byte(timeouts[0]).byte(timeouts[1]));
}

}  // namespace

void addCameraCommands(CommandTable& table) {
    table.add(0x60, 2, portSettings);
    table.add(0x61, 6, lensConfiguration);
    table.add(0x62, 1, passThrough);
    table.add(0x65, 2, responseTimeouts);
}

}  // namespace halvex::sim
