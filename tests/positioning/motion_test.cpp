#include <gtest/gtest.h>

#include <QAbstractButton>
#include <QCheckBox>
#include <QScrollBar>
#include <QStatusBar>
#include <cmath>

#include "tests/support/console_rig.h"
#include "tests/support/online_suite.h"
#include "views/pages/pan_tilt_page.h"
#include "views/widgets/led_display.h"

using namespace halvex;
using namespace halvex::testing;
using Message_ = std::vector<Byte>;

namespace {
// One console online against the virtual unit for the whole suite (coming
// online takes seconds); each test starts from cleared entries.
struct MotionRig : ConsoleRig {
    PanTiltPage& page() { return window->panTiltPage(); }

    // Clicks a button and returns the requests it put on the line.
    std::vector<Message_> press(const QString& name) {
        line.clear();
        click(name);
        return line.messages(false);
    }
};

class MoveCommands : public OnlineSuite<MotionRig> {
  protected:
    void SetUp() override {
        ASSERT_NE(shared_, nullptr);
        PanTiltPage& page = shared_->page();
        page.HoldPanCheck->setChecked(false);
        page.HoldTiltCheck->setChecked(false);
        page.PanDesLED->setValue(0.0);
        page.TiltDesLED->setValue(0.0);
        for (QScrollBar* scroll : page.ZFScroll) {
            scroll->setValue(0);
        }
    }
};
}  // namespace

TEST_F(MoveCommands, AbsoluteMoveSendsDesiredAnglesOrTheHoldValue) {
    MotionRig& rig = *shared_;
    rig.page().PanDesLED->setValue(0.125);   // 12.5 hundredths: even neighbour 12
    rig.page().TiltDesLED->setValue(0.375);  // 37.5: even neighbour 38
    EXPECT_EQ(rig.press(QStringLiteral("AbsoBut")),
              (std::vector<Message_>{{0x33, 0x0C, 0x00, 0x00, 0x26, 0x00, 0x00}}));

    rig.page().PanDesLED->setValue(-1.0);
    rig.page().TiltDesLED->setValue(-123.45);
    EXPECT_EQ(rig.press(QStringLiteral("AbsoBut")),
              (std::vector<Message_>{{0x33, 0x9C, 0xFF, 0xFF, 0xC7, 0xCF, 0xFF}}));

    rig.page().HoldPanCheck->setChecked(true);
    rig.page().HoldTiltCheck->setChecked(true);
    EXPECT_EQ(rig.press(QStringLiteral("AbsoBut")),
              (std::vector<Message_>{{0x33, 0x9F, 0x86, 0x01, 0x9F, 0x86, 0x01}}));
    // A relative move ignores the hold boxes.
    EXPECT_EQ(rig.press(QStringLiteral("DeltaBut")),
              (std::vector<Message_>{{0x34, 0x9C, 0xFF, 0xFF, 0xC7, 0xCF, 0xFF}}));
}

TEST_F(MoveCommands, LensMoveAddsTheFourScrollBarsAndScrollingSendsNothing) {
    MotionRig& rig = *shared_;
    const int values[] = {1, 2, 200, 255};
    rig.line.clear();
    for (int i = 0; i < 4; ++i) {
        rig.page().ZFScroll[static_cast<std::size_t>(i)]->setValue(values[i]);
    }
    EXPECT_EQ(rig.find<QLabel>(QStringLiteral("ZFLabel_2"))->text(), QStringLiteral("200"));
    QTest::qWait(150);
    EXPECT_TRUE(rig.line.messages(false).empty());

    rig.page().HoldTiltCheck->setChecked(true);
    rig.page().PanDesLED->setValue(10.0);
    EXPECT_EQ(rig.press(QStringLiteral("AbsoZFBut")),
              (std::vector<Message_>{
                  {0x3A, 0xE8, 0x03, 0x00, 0x9F, 0x86, 0x01, 0x01, 0x02, 0xC8, 0xFF}}));
}

TEST_F(MoveCommands, SingleByteMovesAndSoftLimits) {
    MotionRig& rig = *shared_;
    EXPECT_EQ(rig.press(QStringLiteral("CenterBut")), (std::vector<Message_>{{0x35}}));
    EXPECT_EQ(rig.press(QStringLiteral("HomeBut")), (std::vector<Message_>{{0x36}}));
    EXPECT_EQ(rig.press(QStringLiteral("SetSLBut_2")), (std::vector<Message_>{{0x81, 0x02}}));
    EXPECT_EQ(rig.press(QStringLiteral("SetSLBut_3")), (std::vector<Message_>{{0x81, 0x03}}));
}

TEST_F(MoveCommands, ClearButtonsZeroTheirOwnLedAndSendNothing) {
    MotionRig& rig = *shared_;
    rig.page().PanDesLED->setValue(12.5);
    rig.page().TiltDesLED->setValue(-3.0);
    EXPECT_TRUE(rig.press(QStringLiteral("ClrLEDBut_1")).empty());
    EXPECT_DOUBLE_EQ(rig.page().TiltDesLED->value(), 0.0);
    EXPECT_DOUBLE_EQ(rig.page().PanDesLED->value(), 12.5);
    rig.press(QStringLiteral("ClrLEDBut_0"));
    EXPECT_DOUBLE_EQ(rig.page().PanDesLED->value(), 0.0);
}

TEST_F(MoveCommands, AnAngleThatIsNotANumberStopsTheMoveAndSendsNothing) {
    MotionRig& rig = *shared_;
    rig.page().PanDesLED->setValue(std::nan(""));
    EXPECT_TRUE(rig.press(QStringLiteral("AbsoBut")).empty());
    EXPECT_EQ(rig.window->statusBar()->currentMessage(),
              QStringLiteral("Run-time error 6: Overflow in AbsoBut_Click"));
    EXPECT_FALSE(rig.window->state().SendInProgress);
    // The next move goes out as usual.
    rig.page().PanDesLED->setValue(1.0);
    EXPECT_EQ(rig.press(QStringLiteral("AbsoBut")).size(), 1u);
}

TEST_F(MoveCommands, AbsoluteMoveShowsTheTargetAndThePlatformArrives) {
    MotionRig& rig = *shared_;
    // Tilt stays level: the soft-limit test before set both tilt limits there.
    rig.page().PanDesLED->setValue(-20.25);
    rig.page().TiltDesLED->setValue(0.0);
    rig.click(QStringLiteral("AbsoBut"));
    ASSERT_TRUE(ConsoleRig::waitFor([&] { return rig.page().PDesLed->value() == -20.25; }));
    EXPECT_FLOAT_EQ(rig.page().TDesLed->value(), 0.0);
    ASSERT_TRUE(ConsoleRig::waitFor(
        [&] { return std::abs(rig.page().PanPosLED->value() + 20.25) < 0.005; }, 20000));
}

TEST_F(MoveCommands, DesiredPanStepsStopAtTheSoftLimits) {
    MotionRig& rig = *shared_;
    const float top = rig.window->status().PanMaxLimit;
    const float bottom = rig.window->status().PanMinLimit;
    ASSERT_LT(bottom, top);
    auto* up = rig.find<QWidget>(QStringLiteral("PanDesBut_2"))
                   ->findChild<QAbstractButton*>(QStringLiteral("up"));
    auto* down100 = rig.find<QWidget>(QStringLiteral("PanDesBut_4"))
                        ->findChild<QAbstractButton*>(QStringLiteral("down"));
    rig.line.clear();
    rig.page().PanDesLED->setValue(top - 0.5);
    QTest::mouseClick(up, Qt::LeftButton);
    EXPECT_FLOAT_EQ(rig.page().PanDesLED->value(), top);
    rig.page().PanDesLED->setValue(bottom + 50.0f);
    QTest::mouseClick(down100, Qt::LeftButton);
    EXPECT_FLOAT_EQ(rig.page().PanDesLED->value(), bottom);
    // Stepping sends nothing.
    QTest::qWait(150);
    EXPECT_TRUE(rig.line.messages(false).empty());
}
