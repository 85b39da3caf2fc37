#include "views/widgets/jog_box.h"

#include <gtest/gtest.h>

#include <QTest>
#include <cmath>

#include "tests/views/widgets/pointer_spy.h"

namespace halvex {
namespace {

// A 513 pixel square: pixel 256 is the middle, 256 pixels on each side of
// it cover 255 units above the centre and 257 below.
class JogBoxMouse : public ::testing::Test {
  protected:
    void SetUp() override {
        box.resize(513, 513);
        box.show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&box));
    }

    QPointF pressAt(QPoint pixel, Qt::MouseButton button = Qt::LeftButton) {
        const std::size_t before = spy.reports.size();
        clickAt(box, pixel, button);
        EXPECT_EQ(spy.reports.size(), before + 2);
        return spy.reports.at(before).units;
    }

    JogBox box;
    PointerSpy spy{box};
};

TEST_F(JogBoxMouse, CornersAndCentreMapOntoTheUnitBox) {
    EXPECT_EQ(pressAt({0, 0}), QPointF(0, 0));
    EXPECT_EQ(pressAt({512, 0}), QPointF(512, 0));
    EXPECT_EQ(pressAt({0, 512}), QPointF(0, 512)) << "y grows downwards";
    EXPECT_EQ(pressAt({512, 512}), QPointF(512, 512));
    EXPECT_EQ(pressAt({256, 256}), QPointF(JogBox::kUnitCentre, JogBox::kUnitCentre));
    // Halfway between the edges and the middle, on each side of it.
    EXPECT_EQ(pressAt({128, 384}), QPointF(255.0 / 2, 255.0 + 257.0 / 2));
    EXPECT_EQ(pressAt({384, 128}), QPointF(255.0 + 257.0 / 2, 255.0 / 2));
}

TEST_F(JogBoxMouse, DragReportsButtonsAndLeavesPositionsUnclamped) {
    QTest::mousePress(&box, Qt::LeftButton, Qt::NoModifier, {384, 256});
    EXPECT_TRUE(box.pointerHeld());
    QTest::mouseMove(&box, {256, 128});
    QTest::mouseMove(&box, {-20, 600});  // dragged out past the lower left corner
    EXPECT_FALSE(box.grab().isNull());   // marker drawn at the edge, not off the widget
    QTest::mouseRelease(&box, Qt::LeftButton, Qt::NoModifier, {-20, 600});
    EXPECT_FALSE(box.pointerHeld());

    ASSERT_EQ(spy.reports.size(), 4u);
    const PointerReport& press = spy.reports[0];
    EXPECT_EQ(press.kind, PointerReport::Press);
    EXPECT_EQ(press.button, Qt::LeftButton);
    EXPECT_EQ(press.buttons, Qt::MouseButtons(Qt::LeftButton));
    EXPECT_EQ(press.units, QPointF(255.0 + 257.0 / 2, JogBox::kUnitCentre));

    const PointerReport& move = spy.reports[1];
    EXPECT_EQ(move.kind, PointerReport::Move);
    EXPECT_EQ(move.buttons, Qt::MouseButtons(Qt::LeftButton));
    EXPECT_EQ(move.units, QPointF(JogBox::kUnitCentre, 255.0 / 2));

    // Outside stays outside.
    EXPECT_LT(spy.reports[2].units.x(), 0.0);
    EXPECT_GT(spy.reports[2].units.y(), JogBox::kUnitSpan);

    const PointerReport& release = spy.reports[3];
    EXPECT_EQ(release.kind, PointerReport::Release);
    EXPECT_EQ(release.button, Qt::LeftButton);
    EXPECT_EQ(release.buttons, Qt::MouseButtons(Qt::NoButton));
}

// The held-pointer marker is drawn in amber; nothing else on the target is.
bool markerAt(JogBox& box, QPoint pixel) {
    const QColor colour = box.grab().toImage().pixelColor(pixel);
    return colour.red() > 200 && colour.green() > 140 && colour.green() < 210 &&
           colour.blue() < 120;
}

TEST_F(JogBoxMouse, MarkerFollowsTheHeldPointerAndStopsAtTheEdge) {
    EXPECT_FALSE(markerAt(box, {400, 100}));
    QTest::mousePress(&box, Qt::LeftButton, Qt::NoModifier, {400, 100});
    EXPECT_TRUE(markerAt(box, {400, 100}));
    QTest::mouseMove(&box, {120, 700});  // below the box: the marker waits on the bottom edge
    EXPECT_FALSE(markerAt(box, {400, 100}));
    EXPECT_TRUE(markerAt(box, {120, 508}));
    QTest::mouseRelease(&box, Qt::LeftButton, Qt::NoModifier, {120, 700});
    EXPECT_FALSE(markerAt(box, {120, 508}));

    // Hidden mid-drag (the page changed): the release never comes, the marker must not stay.
    QTest::mousePress(&box, Qt::LeftButton, Qt::NoModifier, {400, 100});
    box.hide();
    box.show();
    EXPECT_FALSE(box.pointerHeld());
    EXPECT_FALSE(markerAt(box, {400, 100}));
    QTest::mouseRelease(&box, Qt::LeftButton);  // QTest keeps its own record of held buttons
}

TEST_F(JogBoxMouse, ReportsWhichButtonWasPressed) {
    pressAt({10, 10}, Qt::RightButton);
    pressAt({10, 10}, Qt::MiddleButton);
    ASSERT_EQ(spy.reports.size(), 4u);
    EXPECT_EQ(spy.reports[0].button, Qt::RightButton);
    EXPECT_EQ(spy.reports[1].button, Qt::RightButton);
    EXPECT_EQ(spy.reports[2].button, Qt::MiddleButton);
}

TEST(JogBox, TargetIsTheCentredSquareOfAnOblongWidget) {
    JogBox box;
    box.resize(301, 201);  // 200 pixel spans, 50 pixels to spare each side
    const QRectF pad = box.padRect();
    EXPECT_EQ(pad, QRectF(50, 0, 200, 200));
    EXPECT_EQ(box.toUnits({50, 0}), QPointF(0, 0));
    EXPECT_EQ(box.toUnits({250, 200}), QPointF(512, 512));
    EXPECT_EQ(box.toUnits({150, 100}), QPointF(JogBox::kUnitCentre, JogBox::kUnitCentre));
    EXPECT_LT(box.toUnits({49, 100}).x(), 0.0);
    for (QPointF units : {QPointF(0, 512), QPointF(100, 300), QPointF(511.5, 254.5)}) {
        const QPointF back = box.toUnits(box.toWidget(units));
        EXPECT_NEAR(back.x(), units.x(), 1e-9);
        EXPECT_NEAR(back.y(), units.y(), 1e-9);
    }
    EXPECT_EQ(box.heightForWidth(240), 240);
}

TEST(JogBox, SurvivesTinyAndLargeSizes) {
    JogBox box;
    for (QSize size : {QSize(0, 0), QSize(1, 1), QSize(2, 50), QSize(1200, 1200)}) {
        box.resize(size);
        box.grab();
        const QPointF units = box.toUnits({0.5, 0.5});
        EXPECT_TRUE(std::isfinite(units.x()) && std::isfinite(units.y()));
    }
}

}  // namespace
}  // namespace halvex
