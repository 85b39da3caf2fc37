#pragma once

#include <functional>
#include <optional>
#include <vector>

#include "session/jog_sources.h"

namespace halvex {

// What a stick axis drives.
enum class JogAxis { Pan, Tilt, Zoom1, Focus1, Zoom2, Focus2 };

// What a controller button does: the console's own buttons and checks.
enum class ButtonAction {
    Stop,
    Reset,
    MoveHome,
    MoveCenter,
    SoftLimitOverride,
    PanLowSpeed,
    TiltLowSpeed,
    GoToPreset,  // with the preset number in ButtonBinding::preset
};

// How an axis turns into a speed: nothing inside the dead zone (a stick
// never rests exactly on its centre), then full speed reached at the end of
// travel along value^curve, so that a small push gives fine control.
struct AxisResponse {
    double deadZone = 0.15;  // fraction of travel either side of the centre
    double curve = 2.0;      // 1: linear
    bool invert = false;
};

struct AxisBinding {
    int axis = 0;  // SDL's axis index (game controller or plain joystick)
    JogAxis target = JogAxis::Pan;
    AxisResponse response;
};

struct ButtonBinding {
    int button = 0;  // SDL's button index
    ButtonAction action = ButtonAction::Stop;
    int preset = 0;  // for GoToPreset, 0..9
};

struct ControllerMapping {
    std::vector<AxisBinding> axes;
    std::vector<ButtonBinding> buttons;
};

// A raw SDL axis value (-32768..32767) as -1..1 after dead zone and curve.
double shapedAxis(int raw, const AxisResponse& response);

// A standard game controller: left stick pan and tilt, right stick zoom and
// focus of camera 1; B stops, Start moves home, Back to the physical centre,
// X and Y the low-speed checks.
ControllerMapping standardControllerMapping();
// A joystick SDL has no controller mapping for (a flight stick): X pans, Y
// tilts, and nothing else moves unless the operator maps it (a throttle
// lever does not spring back to centre, so it must never jog by default).
ControllerMapping plainJoystickMapping();

// What the mapped axes ask for; axisValue gives the raw value of an axis.
JogDemand demandFrom(const ControllerMapping& mapping, const std::function<int(int)>& axisValue);

}  // namespace halvex
