#include <gtest/gtest.h>

#include <SDL_gamecontroller.h>

#include <cmath>
#include <map>

#include "input/controller_mapping.h"

using namespace halvex;

TEST(ShapedAxis, NothingInsideTheDeadZoneThenTheCurveUpToFullAtTheEnd) {
    const AxisResponse linear{0.2, 1.0, false};
    EXPECT_EQ(shapedAxis(0, linear), 0.0);
    EXPECT_EQ(shapedAxis(6553, linear), 0.0);   // just inside 20 %
    EXPECT_GT(shapedAxis(6700, linear), 0.0);   // just past it
    EXPECT_LT(shapedAxis(6700, linear), 0.01);  // and starting from nothing
    EXPECT_NEAR(shapedAxis(19660, linear), 0.5, 0.001);
    EXPECT_DOUBLE_EQ(shapedAxis(32767, linear), 1.0);
    EXPECT_DOUBLE_EQ(shapedAxis(-32768, linear), -1.0);  // the far end clamps

    const AxisResponse squared{0.2, 2.0, true};
    EXPECT_NEAR(shapedAxis(19660, squared), -0.25, 0.001);
    EXPECT_NEAR(shapedAxis(-19660, squared), 0.25, 0.001);
    // Odd settings from a settings file still give a speed within range.
    const AxisResponse odd{7.0, -3.0, false};
    EXPECT_EQ(shapedAxis(30000, odd), 0.0);
    EXPECT_LE(std::abs(shapedAxis(32767, AxisResponse{-1.0, 99.0, false})), 1.0);
}

TEST(StandardControllerMapping, SticksGiveSpeedsDirectionsAndCameraOneLensBytes) {
    std::map<int, int> axes = {{SDL_CONTROLLER_AXIS_LEFTX, 32767},
                               {SDL_CONTROLLER_AXIS_LEFTY, 32767},
                               {SDL_CONTROLLER_AXIS_RIGHTY, -32768},
                               {SDL_CONTROLLER_AXIS_RIGHTX, -32768}};
    const auto read = [&axes](int axis) { return axes.count(axis) ? axes[axis] : 0; };
    JogDemand demand = demandFrom(standardControllerMapping(), read);
    EXPECT_EQ(demand.pan, (AxisDemand{255, true}));                 // right: clockwise
    EXPECT_EQ(demand.tilt, (AxisDemand{255, false}));               // pulled back: down
    EXPECT_EQ(demand.lens, (std::array<Byte, 4>{255, 254, 0, 0}));  // zoom in, focus near

    axes = {{SDL_CONTROLLER_AXIS_LEFTX, -16384}, {SDL_CONTROLLER_AXIS_LEFTY, -32768}};
    demand = demandFrom(standardControllerMapping(), read);
    EXPECT_EQ(demand.pan.direction, false);
    EXPECT_GT(demand.pan.speed, 40);
    EXPECT_LT(demand.pan.speed, 90);  // half way, squared, less the dead zone
    EXPECT_EQ(demand.tilt, (AxisDemand{255, true}));
    EXPECT_EQ(demand.lens, (std::array<Byte, 4>{}));

    // A stick resting a little off its centre asks for nothing.
    axes = {{SDL_CONTROLLER_AXIS_LEFTX, 3000}, {SDL_CONTROLLER_AXIS_RIGHTY, -3000}};
    EXPECT_FALSE(demandFrom(standardControllerMapping(), read).moving());
}

TEST(PlainJoystickMapping, OnlyTheStickMovesTheThrottleNever) {
    const auto read = [](int axis) { return axis == 2 ? 32767 : (axis == 1 ? -32768 : 0); };
    const JogDemand demand = demandFrom(plainJoystickMapping(), read);
    EXPECT_EQ(demand.pan, AxisDemand{});
    EXPECT_EQ(demand.tilt, (AxisDemand{255, true}));  // pushed forward: up
    EXPECT_EQ(demand.lens, (std::array<Byte, 4>{}));
    EXPECT_TRUE(plainJoystickMapping().buttons.empty());
}
