// The Pan/Tilt page: its angle steps, move commands, jog box and movement
// monitor.

#include <gtest/gtest.h>

#include <QCheckBox>
#include <QScrollBar>
#include <QStatusBar>
#include <QToolButton>
#include <cmath>

#include "connection/movement_monitor_format.h"
#include "session/jog_state.h"
#include "tests/positioning/pages_rig.h"
#include "views/pages/pan_tilt_page.h"

using namespace halvex;
using namespace halvex::testing;
namespace v = halvex::vocab;
using halvex::test::message;

namespace {
// The console on its Pan/Tilt page, where the jog box is live.
struct JogRig : PagesRig {
    JogRig() {
        window->SSTab1().setCurrentIndex(1);
        window->SSTab1().setCurrentIndex(0);
    }
    PanTiltPage& page() { return window->panTiltPage(); }

    void press(Qt::MouseButton button, double x, double y) {
        emit page().Jog->mousePressed(button, button, x, y);
    }
    void move(Qt::MouseButtons buttons, double x, double y) {
        emit page().Jog->mouseMoved(Qt::NoButton, buttons, x, y);
    }
    void release() { emit page().Jog->mouseReleased(Qt::LeftButton, Qt::NoButton, 0, 0); }
    // Flags, pan speed and tilt speed of the next jog message; no lens is
    // jogged, so its lens bytes are zero.
    std::array<int, 3> nextJog() {
        line.clear();
        waitFor([this] { return !line.frames().empty(); });
        namespace j = v::jog;
        const Message_ jog = line.frames().at(0).message;
        const auto flags = static_cast<int>(v::get(jog, j::kFlagsByte));
        const auto pan = static_cast<int>(v::get(jog, j::kPanSpeed));
        const auto tilt = static_cast<int>(v::get(jog, j::kTiltSpeed));
        EXPECT_EQ(jog, message<v::JogMessage>(
                           {{j::kFlagsByte, flags}, {j::kPanSpeed, pan}, {j::kTiltSpeed, tilt}}));
        return {flags, pan, tilt};
    }
    // Pan and tilt jog speeds.
    QString speeds() {
        const JogState& jog = window->jogState();
        return QStringLiteral("%1 %2").arg(jog.PanJogSpeed).arg(jog.TiltJogSpeed);
    }
};
}  // namespace

TEST(AngleSteps, EachButtonStepsItsLedByItsPowerOfTenWithinItsBounds) {
    PagesRig rig;
    UnitStatus& status = rig.window->status();
    std::tie(status.PanMinLimit, status.PanMaxLimit) = std::pair(-170.0f, 170.0f);
    std::tie(status.TiltMinLimit, status.TiltMaxLimit) = std::pair(-45.0f, 45.0f);
    struct Case {
        std::string spin;  // its arrow and start value
        const char* arrow;
        double start;
        float expected;
        bool continuous = false;
    };
    // clang-format off
    const Case cases[] = {
        // Steps of 0.01, 1 and 100; each click tests only the bound on its own side.
        {"PanDesBut_2", "up", 169.5, 170.0f},    {"PanDesBut_1", "down", -169.95, -170.0f},
        {"PanDesBut_0", "down", 200.0, 199.99f}, {"PanDesBut_2", "up", -200.0, -199.0f},
        {"TiltDesBut_3", "up", 40.0, 45.0f},     {"TiltDesBut_3", "down", -40.0, -45.0f},
        {"PanPreBut_3", "up", 165.0, 170.0f},    {"PanPreBut_4", "down", -100.0, -170.0f},
        {"PanCorBut_4", "up", 150.0, 180.0f},    {"PanCorBut_4", "down", -150.0, -180.0f},
        {"TiltCorBut_2", "up", 89.5, 90.0f},     {"TiltCorBut_3", "down", -85.0, -90.0f},
        // A unit that pans for ever frees the desired pan.
        {"PanDesBut_4", "up", 169.0, 269.0f, true}, {"PanDesBut_4", "down", -169.0, -269.0f, true},
    };
    // clang-format on
    rig.line.clear();
    for (const Case& c : cases) {
        SCOPED_TRACE(c.spin + ' ' + c.arrow);
        const QString spin = QString::fromStdString(c.spin);
        LedDisplay* led = rig.find<LedDisplay>(spin.left(spin.indexOf("But")) + "LED");
        status.PanContinuous = c.continuous;
        led->setValue(c.start);
        rig.find<QWidget>(spin)->findChild<QToolButton*>(c.arrow)->click();
        EXPECT_FLOAT_EQ(led->value(), c.expected);
    }
    rig.ticks(3);
    EXPECT_TRUE(rig.sent().empty());
}

TEST(MoveCommands, EachButtonSendsItsMessageAndABadAngleSendsNothing) {
    PagesRig rig;
    PanTiltPage& page = rig.window->panTiltPage();
    page.ZFScroll[0]->setValue(7);  // the first label follows its bar too
    EXPECT_EQ(rig.text("ZFLabel_0"), QStringLiteral("7"));
    for (int i : {0, 1, 2, 3}) {
        page.ZFScroll[static_cast<std::size_t>(i)]->setValue(std::array{1, 2, 200, 255}[i]);
    }
    struct Case {
        double pan, tilt;
        bool holdPan, holdTilt;
        const char* button;
        Message_ sent;
    };
    namespace abs = v::absolute_move;
    namespace lenses = v::absolute_move_with_lenses;
    const auto absolute = [](std::int64_t pan, std::int64_t tilt) {
        return message<v::AbsoluteMove>({{abs::kPan, pan}, {abs::kTilt, tilt}});
    };
    const std::int64_t hold = abs::kHoldAxis;
    // clang-format off
    const Case cases[] = {
        // Halves go to the even neighbour: 12.5 -> 12, 37.5 -> 38.
        {0.125, 0.375, false, false, "AbsoBut", absolute(12, 38)},
        {-1.0, -123.45, true, true, "AbsoBut", absolute(hold, hold)},
        // A relative move ignores the hold boxes.
        {-1.0, -123.45, true, true, "DeltaBut",
         message<v::DeltaMove>({{v::delta_move::kPan, -100}, {v::delta_move::kTilt, -12345}})},
        {10.0, 0.0, false, true, "AbsoZFBut",
         message<v::AbsoluteMoveWithLenses>({{lenses::kPan, 1000}, {lenses::kTilt, hold},
                                             {lenses::kLens[0], 1}, {lenses::kLens[1], 2},
                                             {lenses::kLens[2], 200},
                                             {lenses::kLens[3], 255}})},
        {0.0, 0.0, false, false, "CenterBut", message<v::MoveToCentre>()},
        {0.0, 0.0, false, false, "HomeBut", message<v::MoveToHome>()},
        {0.0, 0.0, false, false, "SetSLBut_3", message<v::SoftLimit>({{v::soft_limit::kLimitByte, 3}})},
    };
    // clang-format on
    for (const Case& c : cases) {
        SCOPED_TRACE(c.button);
        page.PanDesLED->setValue(c.pan);
        page.TiltDesLED->setValue(c.tilt);
        page.HoldPanCheck->setChecked(c.holdPan);
        page.HoldTiltCheck->setChecked(c.holdTilt);
        rig.line.clear();
        rig.click(c.button);
        ASSERT_TRUE(rig.waitFor([&] { return !rig.sent().empty(); }));
        EXPECT_EQ(rig.sent(), Messages_{c.sent});
    }

    // The clear buttons zero their own LED and send nothing. An angle whose
    // hundredths fit 32 bits goes out as their low 24 bits, at both ends; one
    // hundredth further, or no number at all, is the overflow.
    rig.line.clear();
    page.PanDesLED->setValue(12.5);
    rig.click("ClrLEDBut_1");
    EXPECT_EQ(page.PanDesLED->value() + page.TiltDesLED->value(), 12.5);
    rig.click("ClrLEDBut_0");
    EXPECT_EQ(page.PanDesLED->value(), 0.0);
    const QString overflow = QStringLiteral("Run-time error 6: Overflow in AbsoBut_Click");
    for (const auto& [pan, low] : {std::pair{std::nan(""), -1},
                                   {-21474836.48, 0},
                                   {21474836.47, 0xFFFFFF},
                                   {-21474836.49, -1},
                                   {21474836.48, -1}}) {
        rig.window->statusBar()->clearMessage();
        page.PanDesLED->setValue(pan);
        rig.click("AbsoBut");
        rig.ticks(2);
        EXPECT_EQ(rig.sent(), low < 0 ? Messages_{} : Messages_{absolute(low, 0)});
        EXPECT_EQ(rig.window->statusBar()->currentMessage(), low < 0 ? overflow : QString());
        EXPECT_FALSE(rig.window->state().SendInProgress);
        rig.line.clear();
    }
}

TEST(Jogging, SpeedsDirectionsAndFlagsTravelInTheJogMessage) {
    JogRig rig;
    rig.page().TiltDesLED->setValue(-1.0);  // a move leaves bytes behind
    rig.click("AbsoBut");
    // Directions in bits 7 (pan) and 6 (tilt) of the flags: cw and up.
    namespace j = v::jog;
    const int cwUp = v::maskOf(j::kPanCw) | v::maskOf(j::kTiltUp);
    rig.press(Qt::LeftButton, 100, 400);  // left of and below the centre
    EXPECT_EQ(rig.nextJog(), (std::array<int, 3>{0, 155, 145}));
    // On a centre line: no speed on that axis, and its direction stays as it
    // was, also while the other axis moves. Then right of and above.
    const std::tuple<double, double, std::array<int, 3>> drags[] = {
        {255, 400, {0, 0, 145}},    {100, 255, {0, 155, 0}},    {400, 100, {cwUp, 145, 155}},
        {400, 255, {cwUp, 145, 0}}, {255, 100, {cwUp, 0, 155}}, {255, 255, {cwUp, 0, 0}}};
    for (const auto& [x, y, jog] : drags) {
        rig.move(Qt::LeftButton, x, y);
        EXPECT_EQ(rig.nextJog(), jog) << x << ' ' << y;
    }

    // Far edges stop at the largest speed byte; 512.9 is still inside. Just
    // outside, or with another button held too: everything stops.
    const Qt::MouseButtons left = Qt::LeftButton, both = Qt::LeftButton | Qt::RightButton;
    const std::tuple<Qt::MouseButtons, double, double, const char*> speeds[] = {
        {left, 512.9, 0, "255 255"}, {left, 0, 512.9, "255 255"}, {left, -0.1, 200, "0 0"},
        {left, 300, 200, "45 55"},   {left, 513, 200, "0 0"},     {left, 300, 200, "45 55"},
        {left, 200, 513, "0 0"},     {left, 300, 200, "45 55"},   {both, 300, 200, "0 0"}};
    for (const auto& [buttons, x, y, expected] : speeds) {
        rig.move(buttons, x, y);
        EXPECT_EQ(rig.speeds(), QLatin1String(expected)) << x << ' ' << y;
    }
    rig.move(Qt::LeftButton, 0, 510);
    rig.release();
    EXPECT_EQ(rig.nextJog(), (std::array<int, 3>{0, 0, 0}));  // last directions kept

    // A right click cycles the mode; the speeds change at the next move.
    rig.press(Qt::LeftButton, 100, 100);
    const char* modes[][3] = {{"Jog Pan Only", "155 155", "155 0"},
                              {"Jog Tilt Only", "155 0", "0 155"},
                              {"Jog Pan And Tilt", "0 155", "155 155"},
                              {"Jog Pan Only", "155 155", "155 0"}};
    for (const auto& [mode, before, after] : modes) {
        rig.press(Qt::RightButton, 0, 0);
        EXPECT_EQ(rig.text("Label3"), QLatin1String(mode));
        EXPECT_EQ(rig.speeds(), QLatin1String(before));
        rig.move(Qt::LeftButton, 100, 100);
        EXPECT_EQ(rig.speeds(), QLatin1String(after));
    }

    // Leaving the Pan/Tilt page stops the jog, and away from it the jog box
    // is dead; back on it, both axes jog again.
    rig.window->SSTab1().setCurrentIndex(2);
    EXPECT_EQ(rig.speeds(), "0 0");
    rig.press(Qt::LeftButton, 100, 100);
    EXPECT_EQ(rig.speeds(), "0 0");
    rig.release();
    rig.window->SSTab1().setCurrentIndex(0);
    EXPECT_EQ(rig.text("Label3"), QStringLiteral("Jog Pan And Tilt"));
    rig.move(Qt::LeftButton, 100, 100);
    EXPECT_EQ(rig.speeds(), "155 155");
    rig.release();
}

TEST(MovementLog, LogsMovesWhileRunningInEightCharacterColumnsAndKeepsSumsAcrossARestart) {
    PagesRig rig;  // the reports are sent by hand from here on
    rig.window->link().stop();
    auto move = [&](float fromPan, float fromTilt, float toPan, float toTilt) {
        emit rig.window->events().currentPositionReported(fromPan, fromTilt);
        emit rig.window->events().targetPositionReported(toPan, toTilt);
    };
    // Largest and average pan move, largest and average tilt move, count.
    auto statistics = [&] {
        return QStringList{rig.text("Label6"), rig.text("Label1_24"), rig.text("Label1_22"),
                           rig.text("Label1_25"), rig.text("MoveCountLabel")}
            .join(' ');
    };
    rig.click("MoveMonBut");
    EXPECT_EQ(rig.text("MoveMonBut"), QStringLiteral("Stop Monitor"));
    move(10.0f, 2.0f, 20.0f, 3.0f);  // the first line is a zero move
    move(10.0f, 2.0f, -5.5f, -2.0f);
    EXPECT_EQ(rig.lines("MoveList").join('|'),
              QStringLiteral("   20.00    20.00     0.00      3.00     3.00     0.00|"
                             "   -5.50    10.00   -15.50     -2.00     2.00    -4.00"));
    EXPECT_EQ(rig.list("MoveList")->currentRow(), 1);
    EXPECT_EQ(statistics(), QStringLiteral("15.50 7.750 4.00 2.000 2 Moves"));

    // A restart starts the maxima afresh; the averages run over all lines.
    rig.click("MoveMonBut");
    EXPECT_EQ(rig.text("MoveMonBut"), QStringLiteral("Start Monitor"));
    move(0.0f, 0.0f, 90.0f, 90.0f);  // stopped: not logged
    rig.click("MoveMonBut");
    move(30.0f, 10.0f, 40.0f, 11.0f);
    EXPECT_EQ(statistics(), QStringLiteral("10.00 8.500 1.00 1.667 3 Moves"));
    // A move equal to the maximum leaves it; the statistics still count it.
    move(40.0f, 11.0f, 30.0f, 11.0f);
    EXPECT_EQ(statistics(), QStringLiteral("10.00 8.875 1.00 1.250 4 Moves"));

    rig.click("MoveClearBut");
    EXPECT_TRUE(rig.lines("MoveList").isEmpty());
    EXPECT_EQ(statistics(), QStringLiteral("0.00 0.000 0.00 0.000 4 Moves"));
    // Still running: the first line after a clear is a zero move and counts once.
    move(0.0f, 0.0f, 50.0f, 5.0f);
    EXPECT_EQ(rig.lines("MoveList"),
              QStringList{"   50.00    50.00     0.00      5.00     5.00     0.00"});
    EXPECT_EQ(statistics(), QStringLiteral("0.00 0.000 0.00 0.000 1 Moves"));
    // A number longer than its column keeps its leftmost eight characters.
    EXPECT_EQ(movementLine(123456.5f, 0.0f, 0.0f, 0.0f).left(26),
              QStringLiteral("123456.5     0.00 123456.5"));
}
