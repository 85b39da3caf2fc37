// Keyboard jogging and the dead-man stops, through the real main window.

#include <QAbstractButton>
#include <QLineEdit>
#include <QMessageBox>
#include <QScrollBar>
#include <QStatusBar>

#include "tests/input/input_rig.h"
#include "tests/network/line_client.h"
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

    for (const int lens : {zoom, -zoom}) {
        const Qt::Key key = lens > 0 ? Qt::Key_PageUp : Qt::Key_PageDown;
        for (const bool held : {true, false}) {
            held ? press(key) : release(key);
            const Message_ jog = rig().nextJog();
            EXPECT_EQ(jog,
                      (Message_{0x31, jog[1], 0, 0, held ? lensJogByte(lens) : Byte{0}, 0, 0, 0}));
        }
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
    press(Qt::Key_Right);
    EXPECT_EQ(rig().nextMotion()[0], 255);
}

TEST_F(KeyboardJogTest, HomeMovesHomeEscStopsEverythingAndATextFieldKeepsItsKeys) {
    press(Qt::Key_Right);
    ASSERT_GT(rig().nextMotion()[0], 0);
    EXPECT_TRUE(rig().stopsAfter([] { press(Qt::Key_Escape); }));
    // The arrow still held does not start the platform again.
    EXPECT_TRUE(stopped(rig().nextMotion()));

    // Home is the console's: a scroll bar with the focus keeps its value.
    QScrollBar* zoom = rig().window->panTiltPage().ZFScroll[0];
    const int before = zoom->value();
    zoom->setValue(before + 40);
    zoom->setFocus();
    ASSERT_TRUE(ConsoleRig::waitFor([&] { return zoom->hasFocus(); }));
    rig().line.clear();
    QTest::keyPress(zoom, Qt::Key_Home);
    EXPECT_TRUE(rig().sends({0x36}));
    EXPECT_EQ(zoom->value(), before + 40);
    zoom->clearFocus();
    zoom->setValue(before);

    // Keys typed into a text field do not jog.
    auto* field = new QLineEdit(&rig().window->panTiltPage());
    field->show();
    field->setFocus();
    ASSERT_TRUE(ConsoleRig::waitFor([&] { return field->hasFocus(); }));
    QTest::keyPress(field, Qt::Key_Left);
    QTest::keyClicks(field, QStringLiteral("12"));
    QTest::keyPress(field, Qt::Key_Home);
    EXPECT_TRUE(stopped(rig().nextMotion()));
    EXPECT_EQ(field->text(), QStringLiteral("12"));
    EXPECT_EQ(field->cursorPosition(), 0);
    QTest::keyRelease(field, Qt::Key_Left);
    delete field;
}

// Another window, a modal box or another page takes the keys: a held arrow
// stops, arrows meant for them do not jog, and an arrow let go meanwhile
// leaves nothing moving once the keys are back.
TEST_F(KeyboardJogTest, WhatTakesTheKeysAwayStopsTheJog) {
    QWidget other;
    QMessageBox box(QMessageBox::Warning, QStringLiteral("Box"), QStringLiteral("Modal"),
                    QMessageBox::Ok, window());
    box.setWindowModality(Qt::ApplicationModal);
    for (QWidget* to : {&other, static_cast<QWidget*>(&box), static_cast<QWidget*>(nullptr)}) {
        press(Qt::Key_Down);
        ASSERT_GT(rig().nextMotion()[1], 0);
        if (to == nullptr) {
            rig().window->SSTab1().setCurrentIndex(2);
        } else {
            to->show();
            to->activateWindow();
            ASSERT_TRUE(to == &box || QTest::qWaitForWindowActive(to));
        }
        EXPECT_TRUE(stopped(rig().nextMotion()));
        // Keys meant for the other window, the box or the page do not jog.
        QWidget* keys = to == &other ? &other : window();
        QTest::keyPress(keys, Qt::Key_Down);
        EXPECT_TRUE(stopped(rig().nextMotion()));
        QTest::keyRelease(keys, Qt::Key_Down);
        to == nullptr ? rig().window->SSTab1().setCurrentIndex(0) : static_cast<void>(to->close());
        rig().window->activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(window()));
        EXPECT_TRUE(stopped(rig().nextMotion()));
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

TEST_F(KeyboardJogTest, NetworkMovesAreRefusedWhileTheOperatorJogs) {
    NetworkControl& control = rig().window->networkControl();
    control.setEndpoint(QHostAddress::LocalHost, 0);
    ASSERT_TRUE(control.start());
    network::LineClient client;
    ASSERT_TRUE(client.connectTo(control.server().serverPort()));
    press(Qt::Key_Left);
    ASSERT_GT(rig().nextMotion()[0], 0);
    EXPECT_TRUE(rig().window->statusBar()->currentMessage().contains(
        QStringLiteral("operator has control")));
    client.exchange("P 10 10\n", "RPRT -9\n");
    client.exchange("K\n", "RPRT -9\n");
    release(Qt::Key_Left);
    EXPECT_TRUE(stopped(rig().nextMotion()));
    EXPECT_TRUE(rig().window->statusBar()->currentMessage().isEmpty());
    client.exchange("P 10 10\n", "RPRT 0\n");
    EXPECT_TRUE(rig().sends({0x33}));
    control.stop();
}

TEST_F(KeyboardJogTest, TabReachesTheJogBoxAndEveryButtonOfThePage) {
    PanTiltPage& page = rig().window->panTiltPage();
    QSet<QWidget*> reached;
    rig().find<QWidget>(QStringLiteral("StartBut"))->setFocus();
    for (int i = 0; i < 200; ++i) {
        QWidget* focus = QApplication::focusWidget();
        ASSERT_NE(focus, nullptr);
        reached.insert(focus);
        QTest::keyClick(focus, Qt::Key_Tab);
    }
    EXPECT_TRUE(reached.contains(page.Jog));
    for (QAbstractButton* button : page.findChildren<QAbstractButton*>()) {
        if (button->isVisible() && button->isEnabled()) {
            EXPECT_TRUE(reached.contains(button)) << button->objectName().toStdString();
        }
    }
    // Arrows on the focused jog box jog, as anywhere on the page.
    page.Jog->setFocus();
    press(Qt::Key_Right);
    EXPECT_GT(rig().nextMotion()[0], 0);
}

}  // namespace
}  // namespace halvex::testing
