// Game controllers and joysticks through SDL's virtual devices: no display,
// no hardware, the whole console online against the virtual unit.

#include <QCheckBox>
#include <QMessageBox>
#include <QPointF>
#include <QSignalSpy>

#include "tests/input/input_rig.h"
#include "views/pages/pan_tilt_page.h"

namespace halvex::testing {
namespace {

using ControllerJogTest = InputTest;

// A stick back at its centre stops the platform, and so does unplugging
// the controller while a stick is pushed.
TEST_F(ControllerJogTest, SticksGoOutInTheNextJogMessageTheJogBoxShowsThemUnpluggingStops) {
    auto pad = std::make_unique<VirtualDevice>(true);
    ASSERT_TRUE(rig().usesDevice());

    pad->axis(SDL_CONTROLLER_AXIS_LEFTX, 32767);
    pad->axis(SDL_CONTROLLER_AXIS_LEFTY, -32768);  // pushed away: up
    EXPECT_EQ(rig().nextMotion(), (std::array<int, 3>{255, 255, 0xC0}));
    EXPECT_EQ(rig().window->panTiltPage().Jog->jogVector(), QPointF(1.0, 1.0));

    pad->axis(SDL_CONTROLLER_AXIS_LEFTX, -32768);
    pad->axis(SDL_CONTROLLER_AXIS_LEFTY, 0);
    pad->axis(SDL_CONTROLLER_AXIS_RIGHTY, -32768);  // zoom camera 1 in
    const Message_ jog = rig().nextJog();
    EXPECT_EQ(jog, (Message_{0x31, jog[1], 255, 0, 255, 0, 0, 0}));
    EXPECT_EQ(jog[1] & 0x80, 0);  // counter-clockwise

    pad->axis(SDL_CONTROLLER_AXIS_LEFTX, 0);
    pad->axis(SDL_CONTROLLER_AXIS_RIGHTY, 0);
    const Message_ rest = rig().nextJog();
    EXPECT_EQ(rest, (Message_{0x31, rest[1], 0, 0, 0, 0, 0, 0}));
    EXPECT_TRUE(rig().window->panTiltPage().Jog->jogVector().isNull());

    pad->axis(SDL_CONTROLLER_AXIS_LEFTX, 20000);
    ASSERT_GT(rig().nextMotion()[0], 0);
    pad->unplug();
    EXPECT_TRUE(stopped(rig().nextMotion()));
    EXPECT_FALSE(rig().controller().deviceInUse());
}

TEST_F(ControllerJogTest, ButtonsPressTheConsolesButtonsOncePerPressAndAModalBoxHoldsAStick) {
    VirtualDevice pad(true);
    ASSERT_TRUE(rig().usesDevice());
    auto* panLow = rig().find<QCheckBox>(QStringLiteral("PanSloCheck"));
    const bool wasLow = panLow->isChecked();

    pad.button(SDL_CONTROLLER_BUTTON_BACK, true);
    EXPECT_TRUE(rig().sends({0x35}));  // Move To Physical Center
    pad.button(SDL_CONTROLLER_BUTTON_BACK, false);

    // A press held over two reads of the controller toggles the check once,
    // and not at all while the pages are locked, when it could not be clicked.
    Session& session = rig().window->session();
    QSignalSpy toggles(&session, &Session::jogModifiersChanged);
    const auto click = [&](int button) {
        pad.button(button, true);
        rig().nextJog();  // each jog message reads the controller first
        rig().nextJog();
        pad.button(button, false);
        rig().nextJog();
    };
    click(SDL_CONTROLLER_BUTTON_X);
    EXPECT_NE(panLow->isChecked(), wasLow);
    {
        const Session::PagesLock locked(session);
        click(SDL_CONTROLLER_BUTTON_X);
    }
    EXPECT_EQ(toggles.count(), 1);
    click(SDL_CONTROLLER_BUTTON_X);
    EXPECT_EQ(panLow->isChecked(), wasLow);

    // A modal box stops a stick, and the stick has to come back to the centre
    // before it steers again. A box that leaves the window active (as one on
    // another screen may) still stops it: it is the box, not the window's
    // focus, that holds it.
    QMessageBox box(QMessageBox::Warning, QStringLiteral("Box"), QStringLiteral("Modal"),
                    QMessageBox::Ok, window());
    box.setWindowModality(Qt::ApplicationModal);
    box.setAttribute(Qt::WA_ShowWithoutActivating);
    pad.axis(SDL_CONTROLLER_AXIS_LEFTX, 32767);
    ASSERT_EQ(rig().nextMotion()[0], 255);
    box.open();
    ASSERT_TRUE(rig().window->isActiveWindow());
    EXPECT_TRUE(stopped(rig().nextMotion()));
    box.close();
    rig().window->activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(rig().window.get()));
    EXPECT_TRUE(stopped(rig().nextMotion()));
    pad.axis(SDL_CONTROLLER_AXIS_LEFTX, 0);
    rig().nextJog();
    pad.axis(SDL_CONTROLLER_AXIS_LEFTX, 32767);
    EXPECT_EQ(rig().nextMotion()[0], 255);
}

TEST_F(ControllerJogTest, AJoystickWithoutAControllerMappingPansAndTiltsWithItsStick) {
    VirtualDevice stick(false, 3, 4);
    ASSERT_TRUE(rig().usesDevice());
    stick.axis(2, 32767);  // the throttle, at full: nothing moves
    EXPECT_TRUE(stopped(rig().nextMotion()));
    stick.axis(0, -32768);
    stick.axis(1, -32768);  // forward: up
    EXPECT_EQ(rig().nextMotion(), (std::array<int, 3>{255, 255, 0x40}));

    // The preferred device takes over from the one in use when it is plugged in.
    auto pad = std::make_unique<VirtualDevice>(true);
    ASSERT_TRUE(rig().waitFor([] { return rig().controller().devices().size() == 2; }));
    const auto present = rig().controller().devices();
    const QString padGuid = std::ranges::find_if(present, &InputDevice::gameController)->guid;
    pad.reset();
    rig().controller().setPreferredDevice(padGuid);
    pad = std::make_unique<VirtualDevice>(true);
    EXPECT_TRUE(rig().waitFor([] { return rig().controller().deviceInUse()->gameController; }));
}

}  // namespace
}  // namespace halvex::testing
