#include "views/widgets/status_lamp.h"

#include <gtest/gtest.h>

#include <QImage>
#include <QSignalSpy>

namespace halvex {
namespace {

QColor centrePixel(StatusLamp& lamp) {
    const QImage image = lamp.grab().toImage();
    return image.pixelColor(image.width() / 2, image.height() / 2 + image.height() / 6);
}

TEST(StatusLamp, ColourPropertyRoundTripsAndNotifies) {
    StatusLamp lamp;
    QSignalSpy spy(&lamp, &StatusLamp::colorChanged);
    ASSERT_TRUE(lamp.setProperty("color", QColor(255, 255, 0)));
    EXPECT_EQ(lamp.color(), QColor(255, 255, 0));
    EXPECT_EQ(lamp.property("color").value<QColor>(), QColor(255, 255, 0));
    lamp.setColor(QColor(255, 255, 0));
    EXPECT_EQ(spy.count(), 1);
}

TEST(StatusLamp, BodyIsDrawnInTheLampColour) {
    StatusLamp lamp;
    lamp.resize(40, 40);
    lamp.setColor(QColor(255, 0, 0));
    const QColor lit = centrePixel(lamp);
    EXPECT_GT(lit.red(), 200);
    EXPECT_LT(lit.green(), 80);
    EXPECT_LT(lit.blue(), 80);

    lamp.setColor(QColor(0, 128, 0));
    const QColor dark = centrePixel(lamp);
    EXPECT_GT(dark.green(), 90);
    EXPECT_LT(dark.green(), 170);
    EXPECT_LT(dark.red(), 60);
}

TEST(StatusLamp, StaysRoundInAWideWidget) {
    StatusLamp lamp;
    lamp.setColor(QColor(0, 255, 0));
    lamp.resize(120, 20);
    const QImage image = lamp.grab().toImage();
    // The far ends of a wide widget lie outside the round lamp and keep the background.
    EXPECT_NE(image.pixelColor(2, 10), image.pixelColor(60, 12));
    EXPECT_EQ(image.pixelColor(2, 10), image.pixelColor(117, 10));
}

TEST(StatusLamp, SurvivesOddSizesAndAnInvalidColour) {
    StatusLamp lamp;
    lamp.setColor(QColor());
    for (QSize size : {QSize(0, 0), QSize(1, 1), QSize(3, 3), QSize(500, 500)}) {
        lamp.resize(size);
        lamp.grab();
    }
    EXPECT_FALSE(lamp.color().isValid());
}

}  // namespace
}  // namespace halvex
