// The lamps by day and by night, and the link lamp at every scale. The
// read-outs' and the jog box's night colours are held by the Pan/Tilt page's
// night picture.

#include <gtest/gtest.h>

#include <algorithm>

#include <QImage>

#include "views/widgets/instrument_light.h"
#include "views/widgets/lamp_pictures.h"
#include "views/widgets/status_lamp.h"

namespace halvex {
namespace {

// Every test leaves the program lit by day.
class ByNight : public ::testing::Test {
  protected:
    void TearDown() override { setInstrumentLight(InstrumentLight::Day); }
};

QColor lampBody(StatusLamp& lamp) {
    return lamp.grab().toImage().pixelColor(20, 26);
}

int hueGap(const QColor& a, const QColor& b) {
    const int gap = std::abs(a.hsvHue() - b.hsvHue());
    return std::min(gap, 360 - gap);
}

TEST_F(ByNight, LampsDimButKeepTheirColourAndAnUnlitLampStaysGrey) {
    StatusLamp lamp;
    lamp.resize(40, 40);
    // Hard limit, soft limit, moving, a fault lamp lit and dark.
    for (const QColor colour : {QColor(255, 0, 0), QColor(255, 255, 0), QColor(0, 255, 0),
                                QColor(128, 0, 0), QColor(128, 128, 0)}) {
        SCOPED_TRACE(colour.name().toStdString());
        lamp.setColor(colour);
        setInstrumentLight(InstrumentLight::Day);
        const QColor day = lampBody(lamp);
        setInstrumentLight(InstrumentLight::Night);
        const QColor night = lampBody(lamp);
        EXPECT_LE(hueGap(day, night), 6);
        EXPECT_LT(night.value(), day.value() * 3 / 4);
        EXPECT_GT(night.value(), 40);     // still seen
        EXPECT_EQ(lamp.color(), colour);  // what the lamp says is unchanged
    }
    // A travel lamp that is not lit must not look like a red fault lamp.
    lamp.setColor(QColor(224, 224, 224));
    const QColor unlit = lampBody(lamp);
    EXPECT_LT(unlit.hsvSaturation(), 40);
    EXPECT_LT(unlit.value(), 120);
}

// Pixels of the lamp's rim on the middle row, left of the centre, neither
// clear nor solid: one or two where it is drawn at that size, more where a
// smaller picture was blown up.
int softEdge(const QPixmap& pixmap) {
    const QImage image = pixmap.toImage().convertToFormat(QImage::Format_ARGB32);
    const int row = image.height() / 2;
    int soft = 0;
    for (int x = 0; x < image.width() / 2; ++x) {
        const int alpha = qAlpha(image.pixel(x, row));
        soft += alpha > 0 && alpha < 255 ? 1 : 0;
    }
    return soft;
}

TEST_F(ByNight, LinkLampIsDrawnSharpAtEveryScale) {
    for (const QIcon& lamp : {goodLinkPicture(), faultLinkPicture(), idleLinkPicture()}) {
        for (const qreal scale : {1.0, 1.25, 1.5, 2.0, 4.0}) {
            SCOPED_TRACE(scale);
            const QPixmap pixmap = lamp.pixmap(QSize(24, 24), scale);
            EXPECT_EQ(pixmap.size(), QSize(24, 24) * scale);
            EXPECT_LE(softEdge(pixmap), 2);
        }
    }
    // A round lamp in the middle of its square, a tenth of the side clear
    // all round.
    const QImage square = goodLinkPicture().pixmap(50).toImage();
    int left = square.width();
    int right = -1;
    int top = square.height();
    int bottom = -1;
    for (int y = 0; y < square.height(); ++y) {
        for (int x = 0; x < square.width(); ++x) {
            if (qAlpha(square.pixel(x, y)) > 128) {
                left = std::min(left, x), right = std::max(right, x);
                top = std::min(top, y), bottom = std::max(bottom, y);
            }
        }
    }
    EXPECT_NEAR(left, 5, 1);
    EXPECT_NEAR(top, 5, 1);
    EXPECT_NEAR(square.width() - 1 - right, 5, 1);
    EXPECT_NEAR(square.height() - 1 - bottom, 5, 1);

    const QColor good = goodLinkPicture().pixmap(48).toImage().pixelColor(24, 24);
    setInstrumentLight(InstrumentLight::Night);
    const QColor dimmed = goodLinkPicture().pixmap(48).toImage().pixelColor(24, 24);
    EXPECT_LE(hueGap(good, dimmed), 6);
    EXPECT_LT(dimmed.value(), good.value());
}

}  // namespace
}  // namespace halvex
