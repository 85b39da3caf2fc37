#include "views/widgets/led_display.h"

#include <gtest/gtest.h>

#include <QImage>
#include <QSignalSpy>
#include <cmath>
#include <limits>

namespace halvex {
namespace {

// Whether any pixel of the image is close to colour, i.e. a lit segment was drawn.
bool showsColour(const QImage& image, const QColor& colour) {
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            const QColor pixel = image.pixelColor(x, y);
            if (std::abs(pixel.red() - colour.red()) < 24 &&
                std::abs(pixel.green() - colour.green()) < 24 &&
                std::abs(pixel.blue() - colour.blue()) < 24) {
                return true;
            }
        }
    }
    return false;
}

TEST(LedDisplay, ValuePropertyHoldsExactlyTheNumberSet) {
    LedDisplay led;
    led.setValue(12.345678);
    EXPECT_EQ(led.value(), 12.345678);
    EXPECT_EQ(led.property("value").toDouble(), 12.345678);
    EXPECT_EQ(led.text(), QStringLiteral("12.35"));

    ASSERT_TRUE(led.setProperty("value", -123.456));
    EXPECT_EQ(led.value(), -123.456);
    EXPECT_EQ(led.text(), QStringLiteral("-123.46"));

    led.setValue(-0.0);
    EXPECT_TRUE(std::signbit(led.value()));
}

TEST(LedDisplay, ValueChangedFiresOncePerChange) {
    LedDisplay led;
    QSignalSpy spy(&led, &LedDisplay::valueChanged);
    led.setValue(1.5);
    led.setValue(1.5);
    led.setValue(std::numeric_limits<double>::quiet_NaN());
    led.setValue(std::numeric_limits<double>::quiet_NaN());
    ASSERT_EQ(spy.count(), 2);
    EXPECT_EQ(spy.at(0).at(0).toDouble(), 1.5);
}

TEST(LedDisplay, FormatsWithDecimalsAndFieldWidth) {
    LedDisplay led;
    led.setDecimals(0);
    led.setValue(-0.6);
    EXPECT_EQ(led.text(), QStringLiteral("-1"));
    led.setValue(255.0);
    EXPECT_EQ(led.text(), QStringLiteral("255"));

    led.setDecimals(3);
    led.setFieldWidth(7);
    led.setValue(1.5);
    // Seven digit cells, the point taking none of them.
    EXPECT_EQ(led.text(), QStringLiteral("   1.500"));

    led.setFieldWidth(2);
    EXPECT_EQ(led.text(), QStringLiteral("1.500")) << "a narrow field never cuts digits";

    led.setDecimals(-4);
    EXPECT_EQ(led.decimals(), 0);
    led.setDecimals(99);
    EXPECT_EQ(led.decimals(), LedDisplay::kMaxDecimals);
}

TEST(LedDisplay, ZeroIsNeverShownNegative) {
    LedDisplay led;
    led.setValue(-0.001);
    EXPECT_EQ(led.text(), QStringLiteral("0.00"));
    led.setValue(-0.0);
    EXPECT_EQ(led.text(), QStringLiteral("0.00"));
    led.setValue(-0.005001);
    EXPECT_EQ(led.text(), QStringLiteral("-0.01"));
}

TEST(LedDisplay, NonFiniteValuesShowDashesAndDraw) {
    LedDisplay led;
    led.resize(led.sizeHint());
    for (double odd :
         {std::numeric_limits<double>::infinity(), -std::numeric_limits<double>::infinity(),
          std::numeric_limits<double>::quiet_NaN()}) {
        led.setValue(odd);
        EXPECT_EQ(led.text(), QStringLiteral("----"));
        EXPECT_FALSE(led.grab().isNull());
    }
    led.setValue(1e300);  // hundreds of digits squeezed into the panel
    EXPECT_FALSE(led.grab().isNull());
}

TEST(LedDisplay, DrawsLitDigitsInTheChosenColour) {
    LedDisplay led;
    led.resize(led.sizeHint());
    led.setValue(88.88);
    EXPECT_TRUE(showsColour(led.grab().toImage(), led.digitColor()));

    const QColor amber(255, 176, 0);
    EXPECT_FALSE(showsColour(led.grab().toImage(), amber));
    led.setDigitColor(amber);
    EXPECT_TRUE(showsColour(led.grab().toImage(), amber));
}

TEST(LedDisplay, SurvivesTinyAndLargeSizes) {
    LedDisplay led;
    led.setValue(-179.99);
    for (QSize size : {QSize(1, 1), QSize(3, 40), QSize(60, 2), QSize(1600, 400)}) {
        led.resize(size);
        EXPECT_FALSE(led.grab().isNull());
    }
    EXPECT_GE(led.sizeHint().width(), led.minimumSizeHint().width());
}

}  // namespace
}  // namespace halvex
