#include "views/widgets/lens_jog_box.h"

#include <gtest/gtest.h>

#include <QTest>

#include "tests/views/widgets/pointer_spy.h"

namespace halvex {
namespace {

// 40 by 121 pixels: 120 pixel rows for the 120 units, the rest line on row 60.
class LensJogBoxMouse : public ::testing::Test {
  protected:
    void SetUp() override {
        box.resize(40, 121);
        box.show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&box));
    }

    LensJogBox box;
    PointerSpy spy{box};
};

TEST_F(LensJogBoxMouse, RowsMapOntoUnitsAndTheSidesOntoTheEnds) {
    for (QPoint pixel :
         {QPoint(0, 0), QPoint(39, 120), QPoint(20, 60), QPoint(5, 1), QPoint(30, 119)}) {
        clickAt(box, pixel);
        ASSERT_FALSE(spy.reports.empty());
        EXPECT_EQ(spy.reports.back().units.y(), pixel.y());
    }
    ASSERT_EQ(spy.reports.size(), 10u);
    EXPECT_EQ(spy.reports[0].units.x(), 0.0);
    EXPECT_EQ(spy.reports[2].units.x(), LensJogBox::kUnitWidth);
    EXPECT_GT(spy.reports[4].units.x(), 0.0);
    EXPECT_LT(spy.reports[4].units.x(), LensJogBox::kUnitWidth);
}

TEST_F(LensJogBoxMouse, DraggingOutAndBackIsReportedAsItHappens) {
    QTest::mousePress(&box, Qt::LeftButton, Qt::NoModifier, {20, 30});
    QTest::mouseMove(&box, {45, 30});
    QTest::mouseMove(&box, {20, -10});
    QTest::mouseMove(&box, {20, 90});
    EXPECT_FALSE(box.grab().isNull());
    QTest::mouseRelease(&box, Qt::LeftButton, Qt::NoModifier, {20, 90});

    ASSERT_EQ(spy.reports.size(), 5u);
    EXPECT_GT(spy.reports[1].units.x(), LensJogBox::kUnitWidth);
    EXPECT_EQ(spy.reports[1].units.y(), 30.0);
    EXPECT_EQ(spy.reports[2].units.y(), -10.0);
    EXPECT_EQ(spy.reports[3].units.y(), 90.0);
    EXPECT_EQ(spy.reports[3].buttons, Qt::MouseButtons(Qt::LeftButton));
    EXPECT_EQ(spy.reports[4].kind, PointerReport::Release);
    EXPECT_FALSE(box.pointerHeld());
}

TEST(LensJogBox, NaturalSizeKeepsTheRestLineInTheMiddle) {
    LensJogBox box;
    box.resize(box.sizeHint());
    EXPECT_EQ(box.sizeHint(), QSize(39, 120));
    EXPECT_EQ(box.toUnits({0, 0}), QPointF(0, 0));
    EXPECT_EQ(box.toUnits({38, 119}), QPointF(LensJogBox::kUnitWidth, LensJogBox::kUnitHeight));
    // The rest line falls on a whole pixel row even though 120 rows span 119 pixels.
    EXPECT_EQ(box.toUnits({19, 59}).y(), LensJogBox::kUnitCentreY);

    // A taller box keeps the same units: the top pixel is 0, the bottom one 120.
    box.resize(39, 481);
    EXPECT_EQ(box.toUnits({19, 480}).y(), LensJogBox::kUnitHeight);
    EXPECT_EQ(box.toUnits({19, 240}).y(), LensJogBox::kUnitCentreY);
}

TEST(LensJogBox, SurvivesTinyAndLargeSizes) {
    LensJogBox box;
    for (QSize size : {QSize(1, 1), QSize(5, 3), QSize(39, 8), QSize(200, 1000)}) {
        box.resize(size);
        EXPECT_FALSE(box.grab().isNull());
    }
}

}  // namespace
}  // namespace halvex
