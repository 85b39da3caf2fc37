#include "views/widgets/gauge_scale.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace halvex {
namespace {

// Every tick lies in the range, ascending, on a multiple of the step.
void expectWellFormed(const GaugeTicks& ticks, double low, double high) {
    ASSERT_FALSE(ticks.major.empty());
    EXPECT_TRUE(std::is_sorted(ticks.major.begin(), ticks.major.end()));
    EXPECT_TRUE(std::is_sorted(ticks.minor.begin(), ticks.minor.end()));
    for (double tick : ticks.major) {
        EXPECT_GE(tick, low);
        EXPECT_LE(tick, high);
        EXPECT_NEAR(std::remainder(tick, ticks.step), 0.0, ticks.step * 1e-9);
    }
    for (double tick : ticks.minor) {
        EXPECT_GE(tick, low);
        EXPECT_LE(tick, high);
        EXPECT_GT(std::abs(std::remainder(tick, ticks.step)), ticks.step * 1e-6)
            << tick << " lies on a major tick";
    }
}

TEST(GaugeTicks, PanRangeGetsRoundTicksThroughZero) {
    const GaugeTicks ticks = gaugeTicks(-180.0, 180.0, 8);
    expectWellFormed(ticks, -180.0, 180.0);
    EXPECT_EQ(ticks.step, 50.0);
    EXPECT_NE(std::find(ticks.major.begin(), ticks.major.end(), 0.0), ticks.major.end());
    EXPECT_EQ(ticks.major.front(), -150.0);
    EXPECT_EQ(ticks.major.back(), 150.0);
}

TEST(GaugeTicks, ReversedAndFractionalRanges) {
    const GaugeTicks reversed = gaugeTicks(90.0, -90.0, 8);
    expectWellFormed(reversed, -90.0, 90.0);
    EXPECT_EQ(reversed.major, gaugeTicks(-90.0, 90.0, 8).major);

    const GaugeTicks small = gaugeTicks(0.0, 1.0, 5);
    expectWellFormed(small, 0.0, 1.0);
    EXPECT_DOUBLE_EQ(small.step, 0.2);
    EXPECT_EQ(small.major.front(), 0.0);
    EXPECT_DOUBLE_EQ(small.major.back(), 1.0);
}

TEST(GaugeTicks, UnusableRangesGiveNoTicks) {
    const double inf = std::numeric_limits<double>::infinity();
    const double nan = std::numeric_limits<double>::quiet_NaN();
    EXPECT_TRUE(gaugeTicks(5.0, 5.0, 8).major.empty());
    EXPECT_TRUE(gaugeTicks(-inf, inf, 8).major.empty());
    EXPECT_TRUE(gaugeTicks(nan, 10.0, 8).major.empty());
    EXPECT_TRUE(gaugeTicks(0.0, 10.0, 0).major.empty());
    EXPECT_TRUE(gaugeTicks(-1e308, 1e308, 8).major.empty());
}

TEST(GaugeTicks, RangeFarFromZeroStaysBounded) {
    // Tick indices here are past 2^53, where counting by adding one would never end.
    const GaugeTicks ticks = gaugeTicks(1e30, 1e30 + 1e15, 8);
    EXPECT_LE(ticks.major.size() + ticks.minor.size(), 400u);
}

}  // namespace
}  // namespace halvex
