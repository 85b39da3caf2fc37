// Camera port commands: the cameras' serial lines, the lens configuration,
// bytes passed through to a camera and the cameras' answer time-outs.

#include <vector>

#include "sim/command_table.h"

namespace halvex::sim {

namespace {

Response portSettings(UnitState& state, const Command& command) {
    namespace v = vocab::camera_lines;
    auto& comm = state.settings.cameraComm;
    if (!command.isRead()) {
        comm = {static_cast<Byte>(command.field(v::kCamera1Line)),
                static_cast<Byte>(command.field(v::kCamera2Line))};
    }
    return Response::answer(Reply::of<vocab::CameraLines>()
                                .set(v::kCamera1Byte, comm[0])
                                .set(v::kCamera2Byte, comm[1]));
}

template <class Lens>
void takeLensSetup(Settings& s, const Command& command, int camera) {
    const auto at = static_cast<std::size_t>(camera);
    s.lensConfig[at] = static_cast<Byte>(command.field(Lens::kFlags));
    s.zoomMinSpeed[at] = static_cast<Byte>(command.field(Lens::kZoomMinimum));
    s.focusMinSpeed[at] = static_cast<Byte>(command.field(Lens::kFocusMinimum));
}

template <class Lens>
void reportLensSetup(Reply& reply, const Settings& s, int camera) {
    const auto at = static_cast<std::size_t>(camera);
    reply.set(Lens::kFlagsByte, s.lensConfig[at])
        .set(Lens::kZoomMinimum, s.zoomMinSpeed[at])
        .set(Lens::kFocusMinimum, s.focusMinSpeed[at]);
}

Response lensConfiguration(UnitState& state, const Command& command) {
    namespace v = vocab::lens_configuration;
    Settings& s = state.settings;
    if (!command.isRead()) {
        takeLensSetup<v::Lens1>(s, command, 0);
        takeLensSetup<v::Lens2>(s, command, 1);
    }
    Reply reply = Reply::of<vocab::LensConfiguration>();
    reportLensSetup<v::Lens1>(reply, s, 0);
    reportLensSetup<v::Lens2>(reply, s, 1);
    return Response::answer(reply);
}

Response passThrough(UnitState& state, const Command& command) {
    namespace v = vocab::camera_transmit;
    const std::size_t length = command.field(v::kCount);
    const int camera = static_cast<int>(command.field(v::kCamera));
    // Every byte the count announces must have arrived.
    if (command.payloadSize() + 1 < v::kData + length) {
        return Response::refuse();
    }
    // The type without second camera hardware has nothing on port 2.
    const bool present = camera == 0 || state.options.variant != 1;
    if (present) {
        std::vector<Byte> data;
        for (std::size_t i = 0; i < length; ++i) {
            data.push_back(command.byte(v::kData + i));
        }
        state.cameras[camera].send(data, state.nowMs, state.settings.cameraComm[camera],
                                   state.settings.cameraTimeout[camera], state.lensOf(camera));
    }
    return Response::answer(Reply::of<vocab::CameraTransmitDone>());
}

Response responseTimeouts(UnitState& state, const Command& command) {
    namespace v = vocab::camera_timeouts;
    constexpr std::array places{v::kCamera1, v::kCamera2};
    auto& timeouts = state.settings.cameraTimeout;
    if (!command.isRead()) {
        for (std::size_t camera = 0; camera < places.size(); ++camera) {
            const auto value = command.field(places[camera]);
            if (value >= 1 && value <= 100) {
                timeouts[camera] = static_cast<Byte>(value);
            }
        }
    }
    return Response::answer(Reply::of<vocab::CameraTimeouts>()
                                .set(v::kCamera1, timeouts[0])
                                .set(v::kCamera2, timeouts[1]));
}

}  // namespace

void addCameraCommands(CommandTable& table) {
    table.add<vocab::CameraLines>(portSettings);
    table.add<vocab::LensConfiguration>(lensConfiguration);
    table.add<vocab::CameraTransmit>(passThrough);
    table.add<vocab::CameraTimeouts>(responseTimeouts);
}

}  // namespace halvex::sim
