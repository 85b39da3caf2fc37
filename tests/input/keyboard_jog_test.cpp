// Keyboard jogging and the dead-man stops, through the real main window.

#include <QLineEdit>
#include <QStatusBar>

#include "tests/input/input_rig.h"
#include "views/pages/pan_tilt_page.h"
#include "window/network_control.h"

namespace halvex::testing {
namespace {

using KeyboardJogTest = InputTest;

TEST_F(KeyboardJogTest, ArrowsJogWhileHeldShiftFasterCtrlSlowerAtSpeedsTheUnitTakes) {
    KeyboardJog& keyboard = *rig().window->input().keyboard;
    const auto [n, fast, slow, zoom] = keyboard.speeds();
    // Each key pressed or let go, with the modifiers then held, and the next
    // jog's pan speed, tilt speed and ways. A modifier key's own event tells
    // the state before it, as X11 does; both ways at once cancel out.
    const std::tuple<Qt::Key, bool, Qt::KeyboardModifiers, std::array<int, 3>> steps[] = {
        {Qt::Key_Right, true, {}, {n, 0, 0x80}},
        {Qt::Key_Up, true, {}, {n, n, 0xC0}},
        {Qt::Key_Shift, true, {}, {fast, fast, 0xC0}},
        {Qt::Key_Shift, false, Qt::ShiftModifier, {n, n, 0xC0}},
        {Qt::Key_Control, true, {}, {slow, slow, 0xC0}},
        {Qt::Key_Control, false, Qt::ControlModifier, {n, n, 0xC0}},
        {Qt::Key_Up, false, {}, {n, 0, 0xC0}},
        {Qt::Key_Left, true, {}, {0, 0, 0xC0}},
        {Qt::Key_Right, false, {}, {n, 0, 0x40}},
        {Qt::Key_Left, false, {}, {0, 0, 0x40}}};
    for (const auto& step : steps) {
        SCOPED_TRACE(&step - steps);
        const auto& [key, down, modifiers, motion] = step;
        down ? press(key, modifiers) : release(key, modifiers);
        EXPECT_EQ(rig().nextMotion(), motion);
    }

    // Page Down zooms camera 1 out while held.
    for (const bool held : {true, false}) {
        held ? press(Qt::Key_PageDown) : release(Qt::Key_PageDown);
        const Message_ jog = rig().nextJog();
        EXPECT_EQ(jog,
                  (Message_{0x31, jog[1], 0, 0, held ? lensJogByte(-zoom) : Byte{0}, 0, 0, 0}));
    }

    // Speeds from a hand-edited settings file are brought to the nearest the
    // unit takes, rather than wrapping around in its byte or never moving.
    const auto taken = [&keyboard](KeyboardJog::Speeds speeds) {
        keyboard.setSpeeds(speeds);
        speeds = keyboard.speeds();
        return std::array{speeds.normal, speeds.fast, speeds.slow, speeds.zoom};
    };
    EXPECT_EQ(taken({0, -1, 300, -7}), (std::array{1, 1, 255, 1}));
    EXPECT_EQ(taken({999, 256, -5, 128}), (std::array{255, 255, 1, 127}));
}

TEST_F(KeyboardJogTest, HomeMovesHomeEscStopsEverythingAndATextFieldKeepsItsKeys) {
    press(Qt::Key_Right);
    ASSERT_GT(rig().nextMotion()[0], 0);
    press(Qt::Key_Escape);
    // The arrow still held does not start the platform again.
    EXPECT_TRUE(stopped(rig().nextMotion()));

    press(Qt::Key_Home);
    EXPECT_TRUE(rig().sends({0x36}));

    // Keys typed into a text field do not jog.
    auto* field = new QLineEdit(&rig().window->panTiltPage());
    field->show();
    field->setFocus();
    ASSERT_TRUE(ConsoleRig::waitFor([&] { return field->hasFocus(); }));
    QTest::keyPress(field, Qt::Key_Left);
    QTest::keyClicks(field, QStringLiteral("12"));
    EXPECT_TRUE(stopped(rig().nextMotion()));
    EXPECT_EQ(field->text(), QStringLiteral("12"));
    QTest::keyRelease(field, Qt::Key_Left);
    delete field;
}

// Another window or another page takes the keys (a modal box holds them as
// it holds a stick, controller_jog_test.cpp): a held arrow stops, arrows meant
// for them do not jog, and an arrow let go meanwhile leaves nothing moving
// once the keys are back.
TEST_F(KeyboardJogTest, WhatTakesTheKeysAwayStopsTheJog) {
    QWidget other;
    for (const bool page : {false, true}) {
        press(Qt::Key_Down);
        ASSERT_GT(rig().nextMotion()[1], 0);
        if (page) {
            rig().window->SSTab1().setCurrentIndex(2);
        } else {
            other.show();
            other.activateWindow();
            ASSERT_TRUE(QTest::qWaitForWindowActive(&other));
        }
        EXPECT_TRUE(stopped(rig().nextMotion()));
        // Keys meant for the other window or the page do not jog.
        QWidget* keys = page ? window() : &other;
        QTest::keyPress(keys, Qt::Key_Down);
        EXPECT_TRUE(stopped(rig().nextMotion()));
        QTest::keyRelease(keys, Qt::Key_Down);
        page ? rig().window->SSTab1().setCurrentIndex(0) : static_cast<void>(other.close());
        rig().window->activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(window()));
        EXPECT_TRUE(stopped(rig().nextMotion()));
    }
    // Offline, nothing jogs; back online, the key must be pressed again.
    press(Qt::Key_Down);
    ASSERT_GT(rig().nextMotion()[1], 0);
    rig().window->state().Online = false;
    EXPECT_EQ(rig().window->jogState().TiltJogSpeed, 0);
    rig().window->state().Online = true;
    EXPECT_TRUE(stopped(rig().nextMotion()));
    release(Qt::Key_Down);
    press(Qt::Key_Left);  // a fresh press jogs again
    EXPECT_GT(rig().nextMotion()[0], 0);
}

// While a network client may move the platform, the status bar tells that
// the operator's jog has control.
TEST_F(KeyboardJogTest, TheStatusBarTellsWhileTheOperatorJogsWithNetworkControlOn) {
    NetworkControl& control = rig().window->networkControl();
    control.setEndpoint(QHostAddress::LocalHost, 0);
    ASSERT_TRUE(control.start());
    press(Qt::Key_Left);
    ASSERT_GT(rig().nextMotion()[0], 0);
    EXPECT_TRUE(rig().window->statusBar()->currentMessage().contains(
        QStringLiteral("operator has control")));
    release(Qt::Key_Left);
    EXPECT_TRUE(stopped(rig().nextMotion()));
    EXPECT_TRUE(rig().window->statusBar()->currentMessage().isEmpty());
    control.stop();
    press(Qt::Key_Left);
    ASSERT_GT(rig().nextMotion()[0], 0);
    EXPECT_TRUE(rig().window->statusBar()->currentMessage().isEmpty());
    release(Qt::Key_Left);
}

}  // namespace
}  // namespace halvex::testing
