#include <gtest/gtest.h>

#include <QCheckBox>
#include <QPushButton>

#include "console/jog_state.h"
#include "sim/motion.h"
#include "tests/support/console_rig.h"
#include "tests/support/online_suite.h"
#include "views/pages/pan_tilt_page.h"
#include "views/widgets/led_display.h"
#include "views/widgets/status_lamp.h"

using namespace halvex;
using namespace halvex::testing;

namespace {
struct JogRig : ConsoleRig {
    PanTiltPage& page() { return window->panTiltPage(); }
    JogState& jog() { return window->jogState(); }

    void press(Qt::MouseButton button, double x, double y) {
        emit page().Jog->mousePressed(button, button, x, y);
    }
    void move(Qt::MouseButtons buttons, double x, double y) {
        emit page().Jog->mouseMoved(Qt::NoButton, buttons, x, y);
    }
    void release() { emit page().Jog->mouseReleased(Qt::LeftButton, Qt::NoButton, 0, 0); }

    // The next jog message that reaches the line.
    std::vector<Byte> nextJog() {
        line.clear();
        waitFor([this] { return !line.frames().empty(); });
        return line.frames().empty() ? std::vector<Byte>{} : line.frames().front().message;
    }
};

// One console online for the suite; each test starts on the Pan/Tilt page
// with the jog box released and the flags' check boxes clear.
class Jogging : public OnlineSuite<JogRig> {
  protected:
    void SetUp() override {
        ASSERT_NE(shared_, nullptr);
        JogRig& rig = *shared_;
        rig.window->SSTab1().setCurrentIndex(1);
        rig.window->SSTab1().setCurrentIndex(0);
        rig.release();
        rig.page().PanSloCheck->setChecked(false);
        rig.page().TiltSloCheck->setChecked(false);
        if (rig.jog().SoftLimitOverride) {
            rig.click(QStringLiteral("Command2"));
        }
    }
};
}  // namespace

TEST_F(Jogging, DistanceFromTheCentreBecomesSpeedAndDirection) {
    JogRig& rig = *shared_;
    rig.press(Qt::LeftButton, 100, 400);  // left of and below the centre
    auto jog = rig.nextJog();
    ASSERT_EQ(jog.size(), 8u);
    EXPECT_EQ(jog[0], 0x31);
    EXPECT_EQ(jog[2], 155);
    EXPECT_EQ(jog[3], 145);
    EXPECT_EQ(jog[1] & 0xC0, 0x00);

    rig.move(Qt::LeftButton, 400, 100);  // right of and above
    jog = rig.nextJog();
    EXPECT_EQ(jog[2], 145);
    EXPECT_EQ(jog[3], 155);
    EXPECT_EQ(jog[1] & 0xC0, 0xC0);

    // On the centre lines: no speed, and the directions stay as they were.
    rig.move(Qt::LeftButton, 255, 255);
    jog = rig.nextJog();
    EXPECT_EQ(jog[2], 0);
    EXPECT_EQ(jog[3], 0);
    EXPECT_EQ(jog[1] & 0xC0, 0xC0);

    // Far edges stop at the largest speed byte; 512.9 is still inside.
    rig.move(Qt::LeftButton, 512.9, 0);
    EXPECT_EQ(rig.jog().PanJogSpeed, 255);
    EXPECT_EQ(rig.jog().TiltJogSpeed, 255);
    // Just outside, or with another button held too: everything stops.
    rig.move(Qt::LeftButton, -0.1, 200);
    EXPECT_EQ(rig.jog().PanJogSpeed, 0);
    rig.move(Qt::LeftButton, 300, 200);
    EXPECT_GT(rig.jog().PanJogSpeed, 0);
    rig.move(Qt::LeftButton | Qt::RightButton, 300, 200);
    EXPECT_EQ(rig.jog().PanJogSpeed, 0);

    rig.move(Qt::LeftButton, 0, 510);
    rig.release();
    jog = rig.nextJog();
    EXPECT_EQ(jog[2], 0);
    EXPECT_EQ(jog[3], 0);
    EXPECT_EQ(jog[1] & 0xC0, 0x00);  // the last directions are kept
}

TEST_F(Jogging, RightClickCyclesTheModeWithoutTouchingTheSpeeds) {
    JogRig& rig = *shared_;
    auto* label = rig.find<QLabel>(QStringLiteral("Label3"));
    EXPECT_EQ(label->text(), QStringLiteral("Jog Pan And Tilt"));
    rig.press(Qt::LeftButton, 100, 100);
    rig.press(Qt::RightButton, 0, 0);
    EXPECT_EQ(label->text(), QStringLiteral("Jog Pan Only"));
    EXPECT_EQ(rig.jog().TiltJogSpeed, 155);  // unchanged until the next move
    rig.move(Qt::LeftButton, 100, 100);
    EXPECT_EQ(rig.jog().PanJogSpeed, 155);
    EXPECT_EQ(rig.jog().TiltJogSpeed, 0);
    rig.press(Qt::RightButton, 0, 0);
    EXPECT_EQ(label->text(), QStringLiteral("Jog Tilt Only"));
    rig.move(Qt::LeftButton, 100, 100);
    EXPECT_EQ(rig.jog().PanJogSpeed, 0);
    EXPECT_EQ(rig.jog().TiltJogSpeed, 155);
    rig.press(Qt::RightButton, 0, 0);
    EXPECT_EQ(label->text(), QStringLiteral("Jog Pan And Tilt"));
}

TEST_F(Jogging, JoggingIsDeadAwayFromThePanTiltPage) {
    JogRig& rig = *shared_;
    rig.window->SSTab1().setCurrentIndex(1);
    rig.press(Qt::LeftButton, 100, 100);
    EXPECT_EQ(rig.jog().PanJogSpeed, 0);
    EXPECT_EQ(rig.jog().TiltJogSpeed, 0);
}

TEST_F(Jogging, LowSpeedChecksAndOverrideTravelInTheFlagsByte) {
    JogRig& rig = *shared_;
    rig.page().PanSloCheck->setChecked(true);
    auto jog = rig.nextJog();
    EXPECT_EQ(jog[1] & 0x18, 0x10);
    rig.page().TiltSloCheck->setChecked(true);
    rig.page().PanSloCheck->setChecked(false);
    jog = rig.nextJog();
    EXPECT_EQ(jog[1] & 0x18, 0x08);

    rig.click(QStringLiteral("Command2"));
    jog = rig.nextJog();
    EXPECT_EQ(jog[1] & 0x04, 0x04);
    // The unit reports the override back and its lamp lights.
    ASSERT_TRUE(ConsoleRig::waitFor([&] {
        return rig.find<StatusLamp>(QStringLiteral("SLOverLed"))->color() == QColor(255, 0, 0);
    }));
    rig.click(QStringLiteral("Command2"));
    jog = rig.nextJog();
    EXPECT_EQ(jog[1] & 0x04, 0x00);
}

TEST_F(Jogging, AJogMovesThePlatformAndTheDisplayFollows) {
    JogRig& rig = *shared_;
    const double before = rig.page().PanPosLED->value();
    rig.press(Qt::LeftButton, 500, 255);  // fast clockwise, no tilt
    ASSERT_TRUE(ConsoleRig::waitFor([&] { return rig.page().PanPosLED->value() > before + 2.0; }));
    EXPECT_EQ(rig.find<StatusLamp>(QStringLiteral("CWLed"))->color(), QColor(0, 255, 0));
    rig.release();
    ASSERT_TRUE(ConsoleRig::waitFor([&] {
        return rig.find<StatusLamp>(QStringLiteral("CWLed"))->color() == QColor(224, 224, 224);
    }));
}

TEST(UnitFaults, InjectedFaultsLightTheirLampsUntilReset) {
    JogRig rig;
    ASSERT_TRUE(rig.connect());
    rig.unit.state().motion.latchFault(sim::Fault::PanTimeout);
    rig.unit.state().motion.latchFault(sim::Fault::TiltDirection);
    auto lit = [&](const char* name) {
        return rig.find<StatusLamp>(QLatin1String(name))->color() == QColor(255, 0, 0);
    };
    ASSERT_TRUE(ConsoleRig::waitFor([&] { return lit("PTOLed") && lit("TDELed"); }));
    EXPECT_TRUE(rig.window->status().LimitFault);
    rig.click(QStringLiteral("ResetBut"));
    ASSERT_TRUE(ConsoleRig::waitFor([&] { return !lit("PTOLed") && !lit("TDELed"); }));
    EXPECT_FALSE(rig.window->status().LimitFault);
}
