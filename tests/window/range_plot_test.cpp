// The range plot against the virtual unit: it shows the unit's limits,
// presets and tour as the unit has them, and what is done on it reaches the
// unit through the session, or is refused with the reason.

#include <gtest/gtest.h>

#include <QAction>
#include <QApplication>
#include <QMenu>
#include <QMouseEvent>

#include "tests/support/console_rig.h"
#include "tests/support/finish.h"
#include "tests/support/kept_picture.h"
#include "tests/support/messages.h"
#include "tests/support/online_suite.h"
#include "views/widgets/range_plot.h"
#include "window/page_place.h"

using namespace halvex;
using namespace halvex::testing;
namespace v = halvex::vocab;

namespace {

const KeptPictures kPlotPictures{HALVEX_KEPT_PICTURES, HALVEX_SEEN_PICTURES};
constexpr int kToursPage = 3;

// A unit with four presets and a tour through them that crosses itself, whose platform
// travels twenty times as fast as a real one; the plot shown in its window.
struct PlotRig : ConsoleRig {
    PlotRig() : ConsoleRig({}, kFastTickMs, 20) {
        auto& presets = unit.state().presets;
        presets.at(1) = {-4500, 1000, {}};
        presets.at(2) = {3050, -525, {}};
        presets.at(3) = {9000, 0, {}};
        presets.at(4) = {-12075, 2250, {}};
        for (const auto& [preset, dwell] : {std::pair{1, 5}, {3, 5}, {2, 8}, {4, 6}}) {
            unit.state().tours.append(0, {static_cast<Byte>(preset), static_cast<Byte>(dwell)});
        }
        find<QAction>(QStringLiteral("MenuRangePlot"))->trigger();
        window->rangePlotPlace().ownWindow().resize(560, 360);
    }
    RangePlot& plot() { return window->rangePlot(); }
    QPoint pixel(double pan, double tilt) { return plot().frame().toPixel({pan, tilt}).toPoint(); }
    // The angles a click at `pixel` asks for, in the unit's hundredths.
    std::pair<std::int64_t, std::int64_t> hundredthsAt(QPoint at) {
        const PlotAngles angles = plot().frame().toAngles(at);
        return {std::llround(angles.pan * 100), std::llround(angles.tilt * 100)};
    }
    void clickPlot(QPoint at) {
        line.clear();
        QTest::mouseClick(&plot(), Qt::LeftButton, {}, at);
        settle();
    }
    std::vector<std::vector<Byte>> sentMoves() {
        std::vector<std::vector<Byte>> moves;
        for (const auto& message : line.messages(false)) {
            if (message.at(0) == v::AbsoluteMove::kCode || message.at(0) == v::GoToPreset::kCode ||
                message.at(0) == v::StoreCurrentPosition::kCode) {
                moves.push_back(message);
            }
        }
        return moves;
    }
    bool arrived(double pan, double tilt) {
        return waitFor([&] {
            return !plot().moving() && plot().position() == PlotAngles{pan, tilt};
        });
    }
};

class RangePlotOnline : public OnlineSuite<PlotRig> {
  protected:
    PlotRig& rig = *shared_;
};

}  // namespace

TEST_F(RangePlotOnline, AClickMovesThePlatformThereAndWhatTheSessionRefusesSendsNothingAndSaysWhy) {
    RangePlot& plot = rig.plot();
    // With nothing in the way a click moves the platform there and says nothing.
    const QPoint at = rig.pixel(20.5, -10.25);
    const auto [pan, tilt] = rig.hundredthsAt(at);
    rig.clickPlot(at);
    EXPECT_EQ(rig.sentMoves().size(), 1u);
    EXPECT_TRUE(rig.arrived(pan / 100.0, tilt / 100.0));
    EXPECT_TRUE(plot.notice().isEmpty());
    // While the console reads its tables again neither a click nor a
    // double-click on a preset sends anything, and the plot says why.
    {
        const Session::PagesLock lock(rig.window->session());
        for (const bool twice : {false, true}) {
            SCOPED_TRACE(twice ? "double-click" : "click");
            rig.line.clear();
            if (twice) {
                QTest::mouseDClick(&plot, Qt::LeftButton, {}, rig.pixel(90, 0));
            } else {
                QTest::mouseClick(&plot, Qt::LeftButton, {}, rig.pixel(10, 10));
            }
            settle();
            EXPECT_TRUE(rig.sentMoves().empty());
            EXPECT_EQ(plot.notice(),
                      QStringLiteral("refused: the console is reading its tables again"));
        }
    }
    // Released, the same click goes.
    rig.clickPlot(rig.pixel(10, 10));
    EXPECT_EQ(rig.sentMoves().size(), 1u);
}

TEST_F(RangePlotOnline, ADoubleClickGoesToAPresetAndTheMenuSavesThePositionToOne) {
    RangePlot& plot = rig.plot();
    QTest::mouseDClick(&plot, Qt::LeftButton, {}, rig.pixel(90, 0) + QPoint(2, -2));
    ASSERT_TRUE(rig.arrived(90, 0));
    rig.line.clear();
    QContextMenuEvent event(QContextMenuEvent::Mouse, rig.pixel(-150, -60),
                            plot.mapToGlobal(rig.pixel(-150, -60)));
    QApplication::sendEvent(&plot, &event);
    auto* menu = plot.findChild<QMenu*>(QStringLiteral("RangePlotMenu"));
    ASSERT_NE(menu, nullptr);
    menu->findChild<QAction*>(QStringLiteral("RangePlotSave_6"))->trigger();
    delete menu;
    // The unit keeps it, and the presets are read again to show it.
    ASSERT_TRUE(rig.waitFor([&] {
        return std::any_of(plot.presets().begin(), plot.presets().end(),
                           [](const PlotPreset& p) { return p.number == 6; });
    }));
    EXPECT_EQ(rig.sentMoves(),
              std::vector<std::vector<Byte>>{test::message<v::StoreCurrentPosition>(
                  {{v::store_current_position::kPreset, 6}})});
    EXPECT_EQ(plot.presets().back().at, (PlotAngles{90, 0}));
}

// Limits, presets, the tour and a move under way, in each palette. The unit's
// clock is held once the second move has begun, so the picture does not
// depend on how fast the test runs. Before the unit is online a click sends
// nothing and says so.
TEST(RangePlotPictures, LimitsPresetsTourAndAMoveUnderWayInEachPalette) {
    PlotRig rig;
    rig.clickPlot(rig.pixel(10, 10));
    EXPECT_TRUE(rig.sentMoves().empty());
    EXPECT_EQ(rig.plot().notice(), QStringLiteral("refused: the unit is offline"));
    ASSERT_TRUE(rig.connect());
    rig.window->SSTab1().setCurrentIndex(kToursPage);
    rig.click(QStringLiteral("TourSel_0"));
    rig.window->SSTab1().setCurrentIndex(0);
    rig.clickPlot(rig.pixel(50, 0));
    const auto [pan, tilt] = rig.hundredthsAt(rig.pixel(50, 0));
    ASSERT_TRUE(rig.arrived(pan / 100.0, tilt / 100.0));
    rig.line.holdClock(true);
    rig.clickPlot(rig.pixel(-60, 30));
    ASSERT_TRUE(rig.waitFor([&] { return rig.plot().moving(); }));
    rig.clickPlot(rig.pixel(175, -60));  // refused, and said so on the plot
    // The target taken by the pointer on its way to a new place.
    QTest::mousePress(&rig.plot(), Qt::LeftButton, {}, rig.pixel(-60, 30));
    QTest::mouseMove(&rig.plot(), rig.pixel(-100, -45));
    for (const char* palette : {"Desktop", "Dark", "Night"}) {
        rig.find<QAction>(QStringLiteral("MenuPalette%1").arg(QLatin1String(palette)))->trigger();
        QCoreApplication::sendPostedEvents();  // the widgets take a new palette from it
        QCoreApplication::processEvents();
        expectLooksAsKept(rig.window->rangePlotPlace().ownWindow(), kPlotPictures,
                          QStringLiteral("range-plot-%1").arg(QLatin1String(palette)).toLower());
    }
    QTest::mouseRelease(&rig.plot(), Qt::LeftButton, {}, QPoint(1, 1));  // outside: nothing asked
    rig.line.holdClock(false);
}
