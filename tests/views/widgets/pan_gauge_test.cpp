#include "views/widgets/pan_gauge.h"

#include <gtest/gtest.h>

#include <QSignalSpy>
#include <limits>

namespace halvex {
namespace {

TEST(PanGauge, ValueIsKeptAsSetWhileTheNeedleStaysOnTheScale) {
    PanGauge gauge;
    gauge.setRange(-170.0, 170.0);
    gauge.setValue(200.5);
    EXPECT_EQ(gauge.value(), 200.5);
    EXPECT_EQ(gauge.needleValue(), 170.0);
    gauge.setValue(-500.0);
    EXPECT_EQ(gauge.property("value").toDouble(), -500.0);
    EXPECT_EQ(gauge.property("needleValue").toDouble(), -170.0);
    gauge.setValue(12.25);
    EXPECT_EQ(gauge.needleValue(), 12.25);
    gauge.setValue(std::numeric_limits<double>::infinity());
    EXPECT_EQ(gauge.needleValue(), 170.0);
    gauge.setValue(std::numeric_limits<double>::quiet_NaN());
    EXPECT_EQ(gauge.needleValue(), -170.0);
}

TEST(PanGauge, RescalingMovesAnOutOfRangeNeedle) {
    PanGauge gauge;
    gauge.setRange(-90.0, 90.0);
    gauge.setValue(120.0);
    EXPECT_EQ(gauge.needleValue(), 90.0);
    gauge.setMaximum(150.0);
    EXPECT_EQ(gauge.needleValue(), 120.0);
    gauge.setMinimum(130.0);  // now below the scale
    EXPECT_EQ(gauge.needleValue(), 130.0);
    gauge.setRange(100.0, -100.0);
    EXPECT_EQ(gauge.needleValue(), 100.0);
}

TEST(PanGauge, ScaleSweepsClockwiseFromLowerLeftToLowerRight) {
    PanGauge gauge;
    gauge.setRange(-180.0, 180.0);
    EXPECT_DOUBLE_EQ(gauge.angleFor(-180.0), 225.0);
    EXPECT_DOUBLE_EQ(gauge.angleFor(0.0), 90.0);  // straight up
    EXPECT_DOUBLE_EQ(gauge.angleFor(180.0), -45.0);
    gauge.setValue(1000.0);
    EXPECT_DOUBLE_EQ(gauge.angleFor(gauge.needleValue()), -45.0);

    gauge.setRange(5.0, 5.0);  // no width: everything at the start, nothing divides by zero
    EXPECT_DOUBLE_EQ(gauge.angleFor(7.0), 225.0);
    EXPECT_EQ(gauge.needleValue(), 5.0);
}

TEST(PanGauge, PropertiesRoundTripAndNotifyOnChange) {
    PanGauge gauge;
    QSignalSpy minimumSpy(&gauge, &PanGauge::minimumChanged);
    QSignalSpy maximumSpy(&gauge, &PanGauge::maximumChanged);
    QSignalSpy valueSpy(&gauge, &PanGauge::valueChanged);
    ASSERT_TRUE(gauge.setProperty("minimum", -45.5));
    ASSERT_TRUE(gauge.setProperty("maximum", 300.25));
    ASSERT_TRUE(gauge.setProperty("value", 17.0));
    gauge.setValue(17.0);
    EXPECT_EQ(gauge.property("minimum").toDouble(), -45.5);
    EXPECT_EQ(gauge.property("maximum").toDouble(), 300.25);
    EXPECT_EQ(gauge.property("value").toDouble(), 17.0);
    EXPECT_EQ(minimumSpy.count(), 1);
    EXPECT_EQ(maximumSpy.count(), 1);
    EXPECT_EQ(valueSpy.count(), 1);
}

TEST(PanGauge, SecondRangeMarkIsNeverBelowTheFirst) {
    PanGauge gauge;
    QSignalSpy spy(&gauge, &PanGauge::rangeMarksChanged);
    EXPECT_FALSE(gauge.rangeMarks(0).shown);

    gauge.setRangeMarks(0, 10.0, 2.0);
    EXPECT_TRUE(gauge.rangeMarks(0).shown);
    EXPECT_EQ(gauge.rangeMarks(0).first, 10.0);
    EXPECT_EQ(gauge.rangeMarks(0).second, 10.0 + PanGauge::kMinRangeMarkGap);

    gauge.setRangeMarks(1, -30.0, 40.0);
    EXPECT_EQ(gauge.rangeMarks(1).second, 40.0);
    EXPECT_EQ(gauge.rangeMarks(0).second, 15.0) << "pairs are independent";

    gauge.clearRangeMarks(0);
    EXPECT_FALSE(gauge.rangeMarks(0).shown);
    EXPECT_EQ(spy.count(), 3);

    gauge.setRangeMarks(2, 1.0, 2.0);  // no such pair
    gauge.setRangeMarks(-1, 1.0, 2.0);
    gauge.clearRangeMarks(7);
    EXPECT_FALSE(gauge.rangeMarks(2).shown);
    EXPECT_EQ(spy.count(), 3);
}

TEST(PanGauge, DrawsAtAnySizeAndWithOddScales) {
    const double inf = std::numeric_limits<double>::infinity();
    const double nan = std::numeric_limits<double>::quiet_NaN();
    PanGauge gauge;
    gauge.setRangeMarks(0, -400.0, 400.0);  // marks past the scale are drawn limited to it
    gauge.setRangeMarks(1, 20.0, 60.0);
    const std::pair<double, double> scales[] = {{-180.0, 180.0}, {0.0, 0.0},      {-inf, inf},
                                                {nan, 10.0},     {-1e300, 1e300}, {0.0, 0.001}};
    for (auto [minimum, maximum] : scales) {
        gauge.setRange(minimum, maximum);
        gauge.setValue(42.0);
        for (QSize size : {QSize(1, 1), QSize(12, 12), QSize(200, 120), QSize(900, 900)}) {
            gauge.resize(size);
            EXPECT_FALSE(gauge.grab().isNull());
        }
    }
    EXPECT_EQ(gauge.heightForWidth(150), 150);
}

}  // namespace
}  // namespace halvex
