#include "input/controller_mapping.h"

#include <SDL_gamecontroller.h>

#include <algorithm>
#include <cmath>

namespace halvex {

namespace {
constexpr double kFullTravel = 32767.0;
// Lens jog bytes carry a speed up to 127.
constexpr double kFullLensSpeed = 127.0;

const AxisResponse kAsIs{};
const AxisResponse kInverted{AxisResponse{}.deadZone, AxisResponse{}.curve, true};

AxisDemand axisDemand(double value) {
    const auto speed = static_cast<Byte>(std::lround(std::abs(value) * 255.0));
    if (speed == 0) {
        return {};
    }
    return {speed, value > 0};
}
}  // namespace

double shapedAxis(int raw, const AxisResponse& response) {
    double value = std::clamp(raw / kFullTravel, -1.0, 1.0);
    if (response.invert) {
        value = -value;
    }
    const double deadZone = std::clamp(response.deadZone, 0.0, 0.95);
    const double magnitude = std::abs(value);
    if (magnitude <= deadZone) {
        return 0.0;
    }
    const double past = (magnitude - deadZone) / (1.0 - deadZone);
    const double shaped = std::pow(past, std::clamp(response.curve, 0.2, 5.0));
    return value < 0 ? -shaped : shaped;
}

ControllerMapping standardControllerMapping() {
    // SDL's stick Y axes grow downwards; pushing away means up, zoom in, focus far.
    ControllerMapping mapping;
    mapping.axes = {
        {SDL_CONTROLLER_AXIS_LEFTX, JogAxis::Pan, kAsIs},
        {SDL_CONTROLLER_AXIS_LEFTY, JogAxis::Tilt, kInverted},
        {SDL_CONTROLLER_AXIS_RIGHTY, JogAxis::Zoom1, kInverted},
        {SDL_CONTROLLER_AXIS_RIGHTX, JogAxis::Focus1, kAsIs},
    };
    mapping.buttons = {
        {SDL_CONTROLLER_BUTTON_B, ButtonAction::Stop},
        {SDL_CONTROLLER_BUTTON_START, ButtonAction::MoveHome},
        {SDL_CONTROLLER_BUTTON_BACK, ButtonAction::MoveCenter},
        {SDL_CONTROLLER_BUTTON_X, ButtonAction::PanLowSpeed},
        {SDL_CONTROLLER_BUTTON_Y, ButtonAction::TiltLowSpeed},
    };
    return mapping;
}

ControllerMapping plainJoystickMapping() {
    ControllerMapping mapping;
    mapping.axes = {
        {0, JogAxis::Pan, kAsIs},
        {1, JogAxis::Tilt, kInverted},
    };
    return mapping;
}

JogDemand demandFrom(const ControllerMapping& mapping, const std::function<int(int)>& axisValue) {
    JogDemand demand;
    for (const AxisBinding& binding : mapping.axes) {
        const double value = shapedAxis(axisValue(binding.axis), binding.response);
        switch (binding.target) {
            case JogAxis::Pan:
                demand.pan = axisDemand(value);
                break;
            case JogAxis::Tilt:
                demand.tilt = axisDemand(value);
                break;
            default: {
                const auto lens = static_cast<std::size_t>(static_cast<int>(binding.target) -
                                                           static_cast<int>(JogAxis::Zoom1));
                demand.lens[lens] =
                    lensJogByte(static_cast<int>(std::lround(value * kFullLensSpeed)));
                break;
            }
        }
    }
    return demand;
}

}  // namespace halvex
