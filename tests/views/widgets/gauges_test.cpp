// The display widgets: a value to ticks, angle, text and pixels. How they
// look by night is held by the Pan/Tilt page's night picture.

#include <gtest/gtest.h>

#include <QSignalSpy>
#include <cmath>
#include <limits>

#include "views/widgets/gauge_scale.h"
#include "views/widgets/led_display.h"
#include "views/widgets/pan_gauge.h"
#include "views/widgets/status_lamp.h"

namespace halvex {
namespace {

constexpr double kInf = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

TEST(GaugeTicks, RoundStepsWithinTheRangeAndNoneForUnusableRanges) {
    // Low and high ends, the ticks asked for, and the step, first and last
    // tick given (step 0: no ticks at all).
    const std::tuple<double, double, int, double, double, double> cases[] = {
        {-180, 180, 8, 50, -150, 150}, {90, -90, 8, 20, -80, 80},
        {0, 1, 5, 0.2, 0, 1},          {5, 5, 8, 0, 0, 0},
        {kNaN, 10, 8, 0, 0, 0},        {0, 10, 0, 0, 0, 0}};
    for (const auto& [low, high, count, step, first, last] : cases) {
        SCOPED_TRACE(::testing::Message() << low << ".." << high);
        const GaugeTicks ticks = gaugeTicks(low, high, count);
        if (step == 0) {
            EXPECT_TRUE(ticks.major.empty());
            continue;
        }
        ASSERT_FALSE(ticks.major.empty());
        EXPECT_DOUBLE_EQ(ticks.step, step);
        EXPECT_DOUBLE_EQ(ticks.major.front(), first);
        EXPECT_DOUBLE_EQ(ticks.major.back(), last);
        for (double tick : ticks.major) {
            EXPECT_NEAR(std::remainder(tick, ticks.step), 0.0, ticks.step * 1e-9);
        }
        for (double tick : ticks.minor) {
            EXPECT_GE(tick, std::min(low, high));
            EXPECT_LE(tick, std::max(low, high));
            EXPECT_GT(std::abs(std::remainder(tick, ticks.step)), ticks.step * 1e-6) << tick;
        }
    }
    // Tick indices past 2^53, where counting by adding one would never end.
    const GaugeTicks far = gaugeTicks(1e30, 1e30 + 1e15, 8);
    EXPECT_LE(far.major.size() + far.minor.size(), 400u);
}

TEST(PanGauge, NeedleStaysOnTheScaleAndSweepsClockwise) {
    // The scale's ends, the value, and where the needle stands and at what
    // angle (0: not looked at).
    const std::array<double, 5> cases[] = {
        {-170, 170, 200.5, 170, -45}, {-170, 170, -500, -170, 225},
        {-170, 170, 12.25, 12.25, 0}, {-170, 170, kInf, 170, -45},
        {-170, 170, kNaN, -170, 225}, {-180, 180, 0, 0, 90},
        {100, -100, 120, 100, 225},   {5, 5, 7, 5, 225}};
    PanGauge gauge;
    QSignalSpy valueSpy(&gauge, &PanGauge::valueChanged);
    for (const auto& [minimum, maximum, value, needle, angle] : cases) {
        SCOPED_TRACE(::testing::Message() << minimum << ".." << maximum << " " << value);
        gauge.setValue(value);
        gauge.setRange(minimum, maximum);  // rescaling moves an out-of-range needle
        EXPECT_EQ(gauge.property("needleValue").toDouble(), needle);
        if (angle != 0) {
            EXPECT_DOUBLE_EQ(gauge.angleFor(gauge.needleValue()), angle);
        }
    }
    gauge.setValue(7);
    EXPECT_EQ(valueSpy.count(), 8) << "one signal per change, none for the same value";
    gauge.setValue(-200.456);  // past the scale: the number tells how far
    EXPECT_EQ(gauge.readout(), QStringLiteral("-200.46"));
    gauge.setValue(7);

    // Drawn at any size, with marks past the scale and odd scales; there are
    // only two pairs of marks.
    gauge.setRangeMarks(1, 10.0, 20.0);
    gauge.setRangeMarks(2, 1.0, 2.0);
    gauge.setRangeMarks(-1, 1.0, 2.0);
    gauge.clearRangeMarks(7);
    gauge.clearRangeMarks(-1);
    EXPECT_TRUE(gauge.rangeMarks(1).shown);
    EXPECT_EQ(gauge.rangeMarks(1).second, 20.0);
    gauge.setRangeMarks(0, -400.0, 400.0);
    const std::pair<double, double> scales[] = {{0, 0}, {kNaN, 10}, {-1e300, 1e300}};
    for (auto [minimum, maximum] : scales) {
        gauge.setRange(minimum, maximum);
        for (QSize size : {QSize(1, 1), QSize(900, 900)}) {
            gauge.resize(size);
            EXPECT_FALSE(gauge.grab().isNull());
        }
    }
}

TEST(LedDisplay, ShowsTheValueWithItsDecimalsAndFieldWidthAndDrawsItAtAnySize) {
    // Decimals, field width, value and the text shown.
    const std::tuple<int, int, double, const char*> cases[] = {
        {2, 0, -123.456, "-123.46"}, {2, 0, -0.001, "0.00"}, {0, 0, -0.6, "-1"},
        {3, 7, 1.5, "   1.500"},     {3, 2, 1.5, "1.500"},   {2, 0, kInf, "----"}};
    for (const auto& [decimals, width, value, text] : cases) {
        SCOPED_TRACE(text);
        LedDisplay led;
        led.setDecimals(decimals);
        led.setFieldWidth(width);
        led.setValue(value);
        EXPECT_EQ(led.text(), QString::fromLatin1(text));
    }
    LedDisplay led;
    led.setDecimals(-4);
    EXPECT_EQ(led.decimals(), 0);
    led.setDecimals(99);
    EXPECT_EQ(led.decimals(), LedDisplay::kMaxDecimals);
    QSignalSpy spy(&led, &LedDisplay::valueChanged);
    for (double v : {1.5, 1.5, kNaN, kNaN}) {
        led.setValue(v);
    }
    EXPECT_EQ(spy.count(), 2);

    led.setValue(1e300);  // hundreds of digits squeezed into the panel, at any size
    for (QSize size : {QSize(1, 1), QSize(60, 2), QSize(1600, 400)}) {
        led.resize(size);
        EXPECT_FALSE(led.grab().isNull());
    }
}

// How a lamp looks, lit or not, is held by the Pan/Tilt page's pictures.
TEST(StatusLamp, AnInvalidColourDrawsAtAnySizeEvenNone) {
    StatusLamp lamp;
    lamp.setColor(QColor());
    for (QSize size : {QSize(0, 0), QSize(1, 1), QSize(500, 500)}) {
        lamp.resize(size);
        EXPECT_EQ(lamp.grab().isNull(), size.isEmpty());
    }
}

}  // namespace
}  // namespace halvex
