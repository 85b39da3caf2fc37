// The jog boxes: where a click or drag lands in the units the jog messages
// are made from, and the marker that follows a held pointer.

#include <gtest/gtest.h>

#include <QApplication>
#include <QMouseEvent>
#include <QTest>
#include <cmath>

#include "views/widgets/jog_box.h"
#include "views/widgets/lens_jog_box.h"

namespace halvex {
namespace {

// What a pad reported, one entry per signal, in order.
struct Report {
    enum Kind { Press, Move, Release } kind;
    Qt::MouseButton button;
    Qt::MouseButtons buttons;
    QPointF units;
    bool operator==(const Report&) const = default;
};

void record(PointerPad& pad, std::vector<Report>& reports) {
    const auto as = [&reports](Report::Kind kind) {
        return [&reports, kind](Qt::MouseButton b, Qt::MouseButtons held, double x, double y) {
            reports.push_back({kind, b, held, {x, y}});
        };
    };
    QObject::connect(&pad, &PointerPad::mousePressed, as(Report::Press));
    QObject::connect(&pad, &PointerPad::mouseMoved, as(Report::Move));
    QObject::connect(&pad, &PointerPad::mouseReleased, as(Report::Release));
}

// Presses and releases at one pixel. QTest reads (0, 0) as "the centre", so
// the top left corner gets events of its own.
void clickAt(QWidget& widget, QPoint pixel, Qt::MouseButton button = Qt::LeftButton) {
    const QPointF global = widget.mapToGlobal(QPointF(pixel));
    QMouseEvent press(QEvent::MouseButtonPress, QPointF(pixel), global, button, button,
                      Qt::NoModifier);
    QApplication::sendEvent(&widget, &press);
    QMouseEvent release(QEvent::MouseButtonRelease, QPointF(pixel), global, button, Qt::NoButton,
                        Qt::NoModifier);
    QApplication::sendEvent(&widget, &release);
}

// The held-pointer marker is drawn in amber; nothing else on the boxes is.
bool isAmber(const QColor& c) {
    return c.red() > 200 && c.green() > 140 && c.green() < 210 && c.blue() < 120;
}
bool markerAt(JogBox& box, QPoint pixel) {
    return isAmber(box.grab().toImage().pixelColor(pixel));
}

// A 513 pixel square: pixel 256 is the middle, 256 pixels on each side of it
// cover 255 units above the centre and 257 below.
TEST(JogBox, ClicksAndDragsLandOnTheRightUnits) {
    JogBox box;
    std::vector<Report> reports;
    record(box, reports);
    box.resize(513, 513);
    box.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&box));
    const double c = JogBox::kUnitCentre;
    const std::pair<QPoint, QPointF> clicks[] = {{{0, 0}, {0, 0}},
                                                 {{512, 512}, {512, 512}},
                                                 {{256, 256}, {c, c}},
                                                 {{128, 384}, {255.0 / 2, c + 257.0 / 2}}};
    for (const auto& [pixel, units] : clicks) {
        SCOPED_TRACE(::testing::Message() << pixel.x() << "," << pixel.y());
        reports.clear();
        clickAt(box, pixel, Qt::RightButton);
        EXPECT_EQ(reports,
                  (std::vector<Report>{{Report::Press, Qt::RightButton, Qt::RightButton, units},
                                       {Report::Release, Qt::RightButton, {}, units}}));
    }

    reports.clear();
    EXPECT_FALSE(markerAt(box, {384, 256}));
    QTest::mousePress(&box, Qt::LeftButton, Qt::NoModifier, {384, 256});
    EXPECT_TRUE(markerAt(box, {384, 256}));
    QTest::mouseMove(&box, {256, 128});
    QTest::mouseMove(&box, {120, 700});  // dragged out below: the marker waits on the edge
    EXPECT_FALSE(markerAt(box, {384, 256}));
    EXPECT_TRUE(markerAt(box, {120, 508}));
    QTest::mouseRelease(&box, Qt::LeftButton, Qt::NoModifier, {120, 700});
    EXPECT_FALSE(markerAt(box, {120, 508}));
    ASSERT_EQ(reports.size(), 4u);
    EXPECT_EQ(reports[1].buttons, Qt::MouseButtons(Qt::LeftButton));
    EXPECT_GT(reports[2].units.y(), JogBox::kUnitSpan) << "outside stays outside";

    // Hidden mid-drag (the page changed): the release never comes, the marker must not stay.
    QTest::mousePress(&box, Qt::LeftButton, Qt::NoModifier, {400, 100});
    box.hide();
    box.show();
    EXPECT_FALSE(markerAt(box, {400, 100}));
    QTest::mouseRelease(&box, Qt::LeftButton);  // QTest keeps its own record of held buttons
}

TEST(JogBox, TargetIsTheCentredSquareOfAnOblongWidget) {
    JogBox box;
    box.resize(301, 201);  // 200 pixel spans, 50 pixels to spare each side
    EXPECT_EQ(box.toUnits({250, 200}), QPointF(512, 512));
    EXPECT_EQ(box.toUnits({150, 100}), QPointF(JogBox::kUnitCentre, JogBox::kUnitCentre));
    box.resize(201, 301);  // and upright: 50 pixels to spare above and below
    EXPECT_EQ(box.toUnits({200, 250}), QPointF(512, 512));
    EXPECT_EQ(box.toUnits({100, 150}), QPointF(JogBox::kUnitCentre, JogBox::kUnitCentre));
    for (QSize size : {QSize(0, 0), QSize(1, 1), QSize(2, 50), QSize(1200, 1200)}) {
        box.resize(size);
        box.grab();
        const QPointF units = box.toUnits({0.5, 0.5});
        EXPECT_TRUE(std::isfinite(units.x()) && std::isfinite(units.y()));
    }
}

// 40 by 121 pixels: 120 pixel rows for the 120 units, the rest line on row 60.
// Its natural size and what a press there sends are checked on the camera
// page, and how it looks idle, with its "+" and "-" signs, by its pictures.
TEST(LensJogBox, RowsAreUnitsAndDragsOutsideAreReported) {
    LensJogBox box;
    std::vector<Report> reports;
    record(box, reports);
    box.resize(40, 121);
    box.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&box));
    clickAt(box, {39, 120});
    QTest::mousePress(&box, Qt::LeftButton, Qt::NoModifier, {20, 30});
    const QImage held = box.grab().toImage();
    QTest::mouseMove(&box, {45, 30});
    QTest::mouseMove(&box, {20, -10});
    QTest::mouseRelease(&box, Qt::LeftButton, Qt::NoModifier, {20, 90});
    ASSERT_EQ(reports.size(), 6u);
    EXPECT_EQ(reports[0].units, QPointF(LensJogBox::kUnitWidth, 120));
    EXPECT_GT(reports[3].units.x(), LensJogBox::kUnitWidth);
    EXPECT_EQ(reports[4].units.y(), -10.0);
    // The held pointer's line runs the whole width of the track, inside its
    // outline, at the pointer's row.
    const auto amber = [&held](int x, int y) { return isAmber(held.pixelColor(x, y)); };
    const int row = amber(20, 29) ? 29 : 30;  // the two-pixel line's upper row
    for (int x = 0; x <= 39; ++x) {
        EXPECT_EQ(amber(x, row), x >= 2 && x <= 37) << x;
    }
    EXPECT_FALSE(amber(20, row - 2) || amber(20, row + 3));

    for (QSize size : {QSize(1, 1), QSize(200, 1000)}) {
        box.resize(size);
        EXPECT_FALSE(box.grab().isNull());
    }
}

}  // namespace
}  // namespace halvex
