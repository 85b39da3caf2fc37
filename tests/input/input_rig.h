#pragma once

// The whole console online against the virtual unit, its window active on
// the Pan/Tilt page, for driving it from the keyboard and from SDL's
// virtual game controllers and joysticks.

#include <gtest/gtest.h>

#include <SDL.h>

#include <QTabWidget>
#include <algorithm>

#include "input/controller_jog.h"
#include "input/keyboard_jog.h"
#include "tests/support/console_rig.h"
#include "window/user_settings.h"

namespace halvex::testing {

using Message_ = std::vector<Byte>;

// A game controller or joystick that only SDL knows, plugged in for as long
// as the object lives.
class VirtualDevice {
  public:
    explicit VirtualDevice(bool gameController, int axes = SDL_CONTROLLER_AXIS_MAX,
                           int buttons = SDL_CONTROLLER_BUTTON_MAX) {
        SDL_InitSubSystem(SDL_INIT_JOYSTICK);
        joystick_ = SDL_JoystickOpen(SDL_JoystickAttachVirtual(
            gameController ? SDL_JOYSTICK_TYPE_GAMECONTROLLER : SDL_JOYSTICK_TYPE_UNKNOWN, axes,
            buttons, 0));
        instance_ = SDL_JoystickInstanceID(joystick_);
    }
    ~VirtualDevice() {
        unplug();
        SDL_QuitSubSystem(SDL_INIT_JOYSTICK);
    }
    VirtualDevice(const VirtualDevice&) = delete;
    VirtualDevice& operator=(const VirtualDevice&) = delete;

    void axis(int axis, int value) { SDL_JoystickSetVirtualAxis(joystick_, axis, value); }
    void button(int button, bool down) {
        SDL_JoystickSetVirtualButton(joystick_, button, down ? 1 : 0);
    }
    // Unplugged once: its instance is gone from the list after that.
    void unplug() {
        SDL_JoystickClose(joystick_);
        joystick_ = nullptr;
        for (int i = 0; i < SDL_NumJoysticks(); ++i) {
            if (SDL_JoystickGetDeviceInstanceID(i) == instance_) {
                SDL_JoystickDetachVirtual(i);
            }
        }
    }

  private:
    SDL_Joystick* joystick_ = nullptr;
    SDL_JoystickID instance_ = -1;
};

struct InputRig : ConsoleRig {
    // The first jog message built from now on.
    Message_ nextJog() {
        line.clear();
        const auto isJog = [](const RecordingPeer::Frame& frame) {
            return frame.message.at(0) == 0x31;
        };
        EXPECT_TRUE(waitFor([&] { return std::ranges::any_of(line.frames(), isJog); }));
        const auto jog = std::ranges::find_if(line.frames(), isJog);
        return jog != line.frames().end() ? jog->message : Message_();
    }
    // Pan speed, tilt speed and the direction bits (pan 0x80, tilt 0x40) of the next jog.
    std::array<int, 3> nextMotion() {
        const Message_ jog = nextJog();
        return jog.size() < 4 ? std::array{-1, -1, -1}
                              : std::array{int{jog[2]}, int{jog[3]}, jog[1] & 0xC0};
    }
    // A request (not a jog message) that starts with these bytes sent
    // within a while.
    bool sends(const Message_& start) {
        return waitFor([&] {
            return std::ranges::any_of(line.messages(false), [&start](const Message_& message) {
                return message.size() >= start.size() &&
                       std::equal(start.begin(), start.end(), message.begin());
            });
        });
    }
    ControllerJog& controller() { return *window->input().controller; }
    bool usesDevice() {
        return waitFor([this] { return controller().deviceInUse().has_value(); });
    }
};

// One console online for the whole program, made before the first test and
// gone after the last: coming online takes a while. Each test starts on the
// Pan/Tilt page of the active window, nobody steering.
class InputTest : public ::testing::Test {
  protected:
    struct Online : ::testing::Environment {
        void SetUp() override { ASSERT_TRUE((console = new InputRig)->connect()); }
        void TearDown() override { delete console; }
    };
    void SetUp() override {
        InputRig& r = rig();
        r.window->activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(r.window.get()));
        r.window->SSTab1().setCurrentIndex(0);
        r.window->jogSources().stopAll();
        for (JogSource source : {JogSource::Box, JogSource::Keyboard, JogSource::Controller}) {
            r.window->jogSources().release(source);
        }
        // An axis at rest keeps its last direction: each test starts from none.
        r.window->jogState().PanJogDirection = r.window->jogState().TiltJogDirection = false;
        r.nextJog();
    }
    // No key held, no mapping, speed or device kept for the next test.
    void TearDown() override {
        for (Qt::Key key : {Qt::Key_Left, Qt::Key_Right, Qt::Key_Up, Qt::Key_Down, Qt::Key_PageUp,
                            Qt::Key_PageDown}) {
            release(key);
        }
        userSettings()->remove(QStringLiteral("Input"));
        rig().window->input().keyboard->setSpeeds({});
        rig().controller().setPreferredDevice(QString());
    }
    static InputRig& rig() { return *console; }
    static QWidget* window() { return rig().window.get(); }
    static void press(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
        QTest::keyPress(window(), key, modifiers);
    }
    static void release(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
        QTest::keyRelease(window(), key, modifiers);
    }

  public:
    static inline InputRig* console = nullptr;
    static inline ::testing::Environment* const online =
        ::testing::AddGlobalTestEnvironment(new Online);
};

inline bool stopped(const std::array<int, 3>& motion) {
    return motion[0] == 0 && motion[1] == 0;
}

}  // namespace halvex::testing
