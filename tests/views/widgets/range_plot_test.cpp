// The range plot on its own: where angles fall on it, what a click, a drag,
// a double click, the wheel and the menu ask for, and what it tells
// assistive technology. (What its tool tip says is checked with the presets'
// pictures.)

#include <gtest/gtest.h>

#include <QAccessible>
#include <QApplication>
#include <QContextMenuEvent>
#include <QMenu>
#include <QTest>

#include "views/widgets/range_plot.h"
#include "views/widgets/widget_accessibility.h"

using namespace halvex;

namespace {

struct Asked {
    std::vector<PlotAngles> moves;
    std::vector<int> presets;
    std::vector<int> saves;
};

class Plot : public ::testing::Test {
  protected:
    void SetUp() override {
        plot.resize(560, 340);
        plot.setHardLimits({-180, 180, -90, 90});
        plot.setSoftLimits({-170, 170, -85, 85});
        QObject::connect(&plot, &RangePlot::moveRequested, [this](double pan, double tilt) {
            asked.moves.push_back({pan, tilt});
        });
        QObject::connect(&plot, &RangePlot::presetRequested,
                         [this](int n) { asked.presets.push_back(n); });
        QObject::connect(&plot, &RangePlot::savePositionRequested,
                         [this](int n) { asked.saves.push_back(n); });
    }
    QPoint at(double pan, double tilt) const { return plot.frame().toPixel({pan, tilt}).toPoint(); }
    // As a pointer does it: a click, the double click, the release.
    void doubleClick(QPoint pixel) {
        QTest::mouseClick(&plot, Qt::LeftButton, {}, pixel);
        QTest::mouseDClick(&plot, Qt::LeftButton, {}, pixel);
        QTest::mouseRelease(&plot, Qt::LeftButton, {}, pixel);
    }
    void drag(QPoint from, QPoint to) {
        QTest::mousePress(&plot, Qt::LeftButton, {}, from);
        QTest::mouseMove(&plot, to);
        QTest::mouseRelease(&plot, Qt::LeftButton, {}, to);
    }
    void wheel(QPoint pixel, int delta) {
        QWheelEvent event(QPointF(pixel), plot.mapToGlobal(QPointF(pixel)), QPoint(),
                          QPoint(0, delta), Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false);
        QApplication::sendEvent(&plot, &event);
    }
    QMenu* menuAt(QPoint pixel) {
        QContextMenuEvent event(QContextMenuEvent::Mouse, pixel, plot.mapToGlobal(pixel));
        QApplication::sendEvent(&plot, &event);
        return plot.findChild<QMenu*>(QStringLiteral("RangePlotMenu"));
    }

    // Before the plot, so that it is read through the console's own
    // accessibility from the start.
    bool accessibility_ = (installWidgetAccessibility(), true);
    RangePlot plot;
    Asked asked;
};

}  // namespace

TEST(PlotFrame, ADegreeIsAsLongAcrossAsUpAndZoomingKeepsWhatIsUnderThePointer) {
    PlotFrame frame;
    frame.setRange({-180, 180, -90, 90});
    frame.setArea(QRectF(0, 0, 720, 400));
    // 2 pixels a degree: the tilt range is centred in the taller area.
    EXPECT_EQ(frame.plotArea(), QRectF(0, 20, 720, 360));
    EXPECT_EQ(frame.toPixel({90, -45}), QPointF(540, 290));
    EXPECT_EQ(frame.gridStep(60.0), 30.0) << "exactly as far apart as asked is far enough";

    const QPointF pointer = frame.toPixel({100, 40});
    frame.zoomAt(pointer, 2.0);
    EXPECT_NEAR(frame.toAngles(pointer).pan, 100.0, 1e-9);
    EXPECT_NEAR(frame.toAngles(pointer).tilt, 40.0, 1e-9);
    EXPECT_EQ(frame.gridStep(), 10.0);
    // Zooming in at a corner of what shows keeps that corner.
    const PlotLimits shown = frame.visible();
    frame.zoomAt(frame.toPixel({shown.panMax, shown.tiltMax}), 4.0);
    EXPECT_EQ(frame.zoom(), 8.0);
    EXPECT_NEAR(frame.visible().panMax, shown.panMax, 1e-9);
    EXPECT_NEAR(frame.visible().tiltMax, shown.tiltMax, 1e-9);
    EXPECT_NEAR(frame.visible().panMin, shown.panMax - 45.0, 1e-9);
    // Zooming out there shows no more than the range.
    frame.zoomAt(frame.toPixel({180, 90}), 0.5);
    EXPECT_NEAR(frame.visible().panMax - frame.visible().panMin, 90.0, 1e-9);
    EXPECT_LE(frame.visible().panMax, 180.0);
    EXPECT_LE(frame.visible().tiltMax, 90.0);
    frame.zoomAt(pointer, 1000.0);
    EXPECT_EQ(frame.zoom(), PlotFrame::kMostZoom);
    frame.zoomAt(pointer, 0.001);
    EXPECT_EQ(frame.zoom(), 1.0);
    EXPECT_EQ(frame.visible(), frame.range());

    // Grid lines at least 36 pixels apart, on every round step there is.
    const double pixelsPerDegree[] = {40, 20, 8, 4, 3, 1.5, 1, 0.5, 0.25};
    const double steps[] = {1, 2, 5, 10, 15, 30, 45, 90, 180};
    for (std::size_t i = 0; i < std::size(steps); ++i) {
        frame.setArea(QRectF(0, 0, 360 * pixelsPerDegree[i], 180 * pixelsPerDegree[i]));
        EXPECT_EQ(frame.gridStep(), steps[i]) << pixelsPerDegree[i];
    }

    // A range the offsets have moved, in an area wider than it needs.
    frame.setRange({-170, 190, -80, 100});
    frame.setArea(QRectF(10, 0, 1000, 180));
    EXPECT_EQ(frame.plotArea(), QRectF(330, 0, 360, 180));
    EXPECT_EQ(frame.toPixel({10, 10}), QPointF(510, 90));

    // Offsets far from zero, where the ends of the range do not add up
    // exactly: the whole range still shows, centred.
    frame.setRange({79820.37, 80180.37, -83886.08 - 90, -83886.08 + 90});
    EXPECT_NEAR(frame.visible().panMin, 79820.37, 1e-6);
    EXPECT_NEAR(frame.visible().tiltMax, -83886.08 + 90, 1e-6);
    frame.zoomAt(frame.toPixel({80000, -83886.08}), 4.0);
    EXPECT_NEAR(frame.toAngles(frame.toPixel({80000, -83886.08})).pan, 80000, 1e-6);
}

TEST(PlotFrame, GridLinesFallOnRoundAnglesAndWaysTakeTheShortWayRound) {
    EXPECT_EQ(PlotFrame::gridLines(-95, 90, 30),
              (std::vector<double>{-90, -60, -30, 0, 30, 60, 90}));
    EXPECT_EQ(PlotFrame::gridLines(12.5, 44.9, 15), (std::vector<double>{15, 30}));
    EXPECT_EQ(PlotFrame::gridLines(0.3, 0.4, 1), std::vector<double>{});

    using Pieces = std::vector<PlotPiece>;
    // Straight, for a unit with an end stop, however far.
    EXPECT_EQ(travelPieces({-170, 0}, {170, 10}, false), (Pieces{{{-170, 0}, {170, 10}}}));
    EXPECT_EQ(travelPieces({-90, 0}, {90, 10}, true), (Pieces{{{-90, 0}, {90, 10}}}));
    // Round the back: 20 degrees of pan, the tilt shared out on the way.
    EXPECT_EQ(travelPieces({-170, 0}, {170, 10}, true),
              (Pieces{{{-170, 0}, {-180, 5}}, {{180, 5}, {170, 10}}}));
    EXPECT_EQ(travelPieces({175, 8}, {-165, 0}, true),
              (Pieces{{{175, 8}, {180, 6}}, {{-180, 6}, {-165, 0}}}));
}

TEST(MotionTrail, KeepsEachNewPlaceForThreeMinutesAndFadesIt) {
    MotionTrail trail;
    trail.add(0, {1, 1});
    trail.add(100, {1, 1});
    trail.add(200, {2, 1});
    ASSERT_EQ(trail.points().size(), 2u);
    EXPECT_EQ(trail.points().back().atMs, 200);
    EXPECT_EQ(MotionTrail::freshness(trail.points().front(), MotionTrail::kSpanMs / 2), 0.5);
    EXPECT_EQ(MotionTrail::freshness(trail.points().front(), MotionTrail::kSpanMs * 2), 0.0);
    EXPECT_DOUBLE_EQ(MotionTrail::opacity(trail.points().front(), MotionTrail::kSpanMs / 2), 0.6);

    trail.forgetBefore(MotionTrail::kSpanMs);
    EXPECT_EQ(trail.points().size(), 2u) << "exactly the span old is kept";
    trail.forgetBefore(MotionTrail::kSpanMs + 1);
    EXPECT_EQ(trail.points().size(), 1u);
    trail.add(MotionTrail::kSpanMs + 300, {3, 3});
    trail.add(MotionTrail::kSpanMs + 201, {4, 4});
    EXPECT_EQ(trail.points().size(), 2u) << "adding forgets what is too old";

    MotionTrail busy;
    for (std::size_t i = 0; i < MotionTrail::kMostPoints + 5; ++i) {
        busy.add(static_cast<qint64>(i), {static_cast<double>(i), 0});
    }
    EXPECT_EQ(busy.points().size(), MotionTrail::kMostPoints);
    EXPECT_EQ(busy.points().front().at.pan, 5.0);
}

TEST_F(Plot, AClickAsksForAMoveThereInHundredthsAndNothingElseDoes) {
    QTest::mouseClick(&plot, Qt::LeftButton, {}, at(20.25, -10.5));
    ASSERT_EQ(asked.moves.size(), 1u);
    EXPECT_NEAR(asked.moves[0].pan, 20.25, 0.3);
    EXPECT_NEAR(asked.moves[0].tilt, -10.5, 0.3);
    EXPECT_EQ(asked.moves[0].pan * 100, std::round(asked.moves[0].pan * 100));
    EXPECT_EQ(asked.moves[0].tilt * 100, std::round(asked.moves[0].tilt * 100));

    asked = {};
    QTest::mouseClick(&plot, Qt::LeftButton, {}, QPoint(3, 3));  // the margin
    QTest::mouseClick(&plot, Qt::RightButton, {}, at(0, 0));
    drag(at(-40, 0), at(-40, 0) + QPoint(5, 0));  // a drag of the background
    EXPECT_TRUE(asked.moves.empty());
    drag(at(-40, 0), at(-40, 0) + QPoint(4, 0));  // a hand not quite still
    EXPECT_EQ(asked.moves.size(), 1u);

    // The corners of the range are in it.
    asked = {};
    const QRectF area = plot.frame().plotArea();
    QTest::mouseClick(&plot, Qt::LeftButton, {}, area.topLeft().toPoint());
    QTest::mouseClick(&plot, Qt::LeftButton, {}, area.bottomRight().toPoint());
    ASSERT_EQ(asked.moves.size(), 2u);
    EXPECT_EQ(asked.moves[0], (PlotAngles{-180, 90}));
    EXPECT_NEAR(asked.moves[1].pan, 180, 1.0);
    EXPECT_NEAR(asked.moves[1].tilt, -90, 1.0);
}

TEST_F(Plot, APresetIsPickedByAClickAndGoneToByADoubleClick) {
    plot.setPresets({{2, {10, 0}}, {7, {14, 0}}});
    QTest::mouseClick(&plot, Qt::LeftButton, {}, at(10, 0) + QPoint(3, 2));
    EXPECT_TRUE(asked.moves.empty()) << "a click on a marker picks it";
    doubleClick(at(14, 0) + QPoint(-3, 0));
    EXPECT_EQ(asked.presets, std::vector<int>{7}) << "the nearer marker";
    EXPECT_TRUE(asked.moves.empty());
    // Beside the markers a double click moves there once.
    doubleClick(at(-60, 30));
    EXPECT_EQ(asked.moves.size(), 1u);
    EXPECT_EQ(asked.presets.size(), 1u);
    // Just out of the marker's reach is the background.
    asked = {};
    QTest::mouseClick(&plot, Qt::LeftButton, {}, at(10, 0) + QPoint(0, 9));
    EXPECT_EQ(asked.moves.size(), 1u);
}

TEST_F(Plot, DraggingTheTargetMovesItWhereItIsLetGo) {
    plot.setTarget({10, 10});
    QTest::mousePress(&plot, Qt::LeftButton, {}, at(10, 10) + QPoint(7, 0));
    QTest::mouseMove(&plot, at(60, -20));
    EXPECT_TRUE(asked.moves.empty()) << "nothing moves until the target is let go";
    QTest::mouseRelease(&plot, Qt::LeftButton, {}, at(60, -20));
    ASSERT_EQ(asked.moves.size(), 1u);
    EXPECT_NEAR(asked.moves[0].pan, 60, 0.5);
    EXPECT_NEAR(asked.moves[0].tilt, -20, 0.5);
    // Let go outside the range, the target stays where it was.
    asked = {};
    drag(at(10, 10), QPoint(2, 2));
    EXPECT_TRUE(asked.moves.empty());
    // Further than the marker's reach the press is a click, and a drag of the
    // background.
    drag(at(10, 10) + QPoint(9, 0), at(60, -20));
    EXPECT_TRUE(asked.moves.empty());
}

TEST_F(Plot, TheWheelZoomsAStepANotch) {
    const QPoint pointer = at(90, 45);
    wheel(pointer, 120);
    EXPECT_DOUBLE_EQ(plot.zoom(), 1.25);
    wheel(pointer, 240);
    EXPECT_DOUBLE_EQ(plot.zoom(), 1.25 * 1.25 * 1.25);
    wheel(pointer, -1200);
    EXPECT_EQ(plot.zoom(), 1.0);
}

TEST_F(Plot, AUnitThatPansForEverWrapsAtTheBackAndHasNoPanLimits) {
    plot.setHardLimits({-170, 190, -80, 100});
    plot.setPanWraps(true);
    EXPECT_EQ(plot.frame().range(), (PlotLimits{-180, 180, -80, 100}));
    plot.setPosition({190, 0});
    plot.setTarget({-200, 5});
    EXPECT_EQ(plot.position(), (PlotAngles{-170, 0}));
    EXPECT_EQ(plot.target(), (PlotAngles{160, 5}));
    plot.setPresets({{1, {175, 0}}, {2, {-150, 0}}});
    plot.setPosition({-178, 0});
    ASSERT_TRUE(plot.nearestPreset());
    EXPECT_EQ(plot.nearestPreset()->number, 1) << "2 degrees away round the back";
    QTest::mouseClick(&plot, Qt::LeftButton, {},
                      plot.frame().plotArea().topRight().toPoint() - QPoint(0, -1));
    ASSERT_EQ(asked.moves.size(), 1u);
    EXPECT_NEAR(asked.moves[0].pan, -180, 1.0);
    // The trail starts again on the other kind of axis.
    EXPECT_FALSE(plot.trail().empty());
    plot.setPanWraps(false);
    EXPECT_TRUE(plot.trail().empty());
    EXPECT_EQ(plot.frame().range(), (PlotLimits{-170, 190, -80, 100}));
}

TEST_F(Plot, TheMenuGoesToAndSavesPresetsAndShowsTheWholeRangeAgain) {
    plot.setPresets({{4, {-30, 20}}});
    QMenu* menu = menuAt(at(-30, 20));
    ASSERT_NE(menu, nullptr) << "shown without waiting for it";
    menu->findChild<QAction*>(QStringLiteral("RangePlotGoTo"))->trigger();
    menu->findChild<QAction*>(QStringLiteral("RangePlotSave"))->trigger();
    EXPECT_EQ(asked.presets, std::vector<int>{4});
    EXPECT_EQ(asked.saves, std::vector<int>{4});
    QAction* whole = menu->findChild<QAction*>(QStringLiteral("RangePlotWhole"));
    EXPECT_FALSE(whole->isEnabled());
    delete menu;

    wheel(at(0, 0), 360);
    menu = menuAt(at(100, -50));
    ASSERT_NE(menu, nullptr);
    EXPECT_EQ(menu->findChild<QAction*>(QStringLiteral("RangePlotGoTo")), nullptr);
    auto* saveTo = menu->findChild<QMenu*>(QStringLiteral("RangePlotSaveTo"));
    EXPECT_EQ(saveTo->actions().size(), RangePlot::kPresetChoices);
    saveTo->actions().back()->trigger();
    EXPECT_EQ(asked.saves.back(), 31);
    whole = menu->findChild<QAction*>(QStringLiteral("RangePlotWhole"));
    ASSERT_TRUE(whole->isEnabled());
    whole->trigger();
    EXPECT_EQ(plot.zoom(), 1.0);
    delete menu;
}

TEST_F(Plot, TellsWhereItPointsWhereItGoesAndTheNearestPreset) {
    QAccessibleInterface* accessible = QAccessible::queryAccessibleInterface(&plot);
    ASSERT_NE(accessible, nullptr);
    plot.setPosition({12.5, -3});
    plot.setTarget({40, 0});
    EXPECT_EQ(accessible->text(QAccessible::Value), QStringLiteral("pan 12.50, tilt -3.00"));
    // Nearest by both angles: 5 is as near by pan, 6 as near by tilt; 7 is
    // as near as 2, which comes first.
    plot.setPresets({{2, {10, 0}}, {3, {45, 0}}, {5, {12.5, 3}}, {6, {-12, -3}}, {7, {15, -6}}});
    plot.setMoving(true);
    EXPECT_EQ(accessible->text(QAccessible::Value),
              QStringLiteral("pan 12.50, tilt -3.00; moving to pan 40.00, tilt 0.00; nearest "
                             "preset 2 at pan 10.00, tilt 0.00"));
    plot.setMoving(false);
    plot.showNotice(QStringLiteral("refused: outside the soft limits"));
    EXPECT_EQ(accessible->text(QAccessible::Value),
              QStringLiteral("pan 12.50, tilt -3.00; nearest preset 2 at pan 10.00, tilt 0.00; "
                             "refused: outside the soft limits"));
}
