#include "input/sdl_devices.h"

#include <SDL.h>

namespace halvex {

namespace {
QString guidAt(int index) {
    char text[33] = {};
    SDL_JoystickGetGUIDString(SDL_JoystickGetDeviceGUID(index), text, sizeof text);
    return QString::fromLatin1(text);
}

InputDevice deviceAt(int index) {
    InputDevice device;
    const char* name = SDL_JoystickNameForIndex(index);
    device.name = name != nullptr ? QString::fromUtf8(name) : QStringLiteral("Joystick");
    device.guid = guidAt(index);
    device.gameController = SDL_IsGameController(index) == SDL_TRUE;
    device.instance = SDL_JoystickGetDeviceInstanceID(index);
    return device;
}
}  // namespace

SdlDevices::SdlDevices() {
    // The console has its own handling of SIGINT and SIGTERM, and reads the
    // devices whether or not an SDL window has the focus (it has none).
    SDL_SetHint(SDL_HINT_NO_SIGNAL_HANDLERS, "1");
    SDL_SetHint(SDL_HINT_JOYSTICK_ALLOW_BACKGROUND_EVENTS, "1");
    available_ = SDL_InitSubSystem(SDL_INIT_GAMECONTROLLER | SDL_INIT_EVENTS) == 0;
}

SdlDevices::~SdlDevices() {
    close();
    if (available_) {
        SDL_QuitSubSystem(SDL_INIT_GAMECONTROLLER | SDL_INIT_EVENTS);
    }
}

SdlDevices::Changes SdlDevices::pump() {
    Changes changes;
    if (!available_) {
        return changes;
    }
    SDL_PumpEvents();
    SDL_Event event;
    while (SDL_PollEvent(&event) == 1) {
        switch (event.type) {
            case SDL_JOYDEVICEADDED:
                changes.listChanged = true;
                break;
            case SDL_CONTROLLERBUTTONDOWN:
                if (controller_ != nullptr && event.cbutton.which == opened_->instance) {
                    presses_.push_back(event.cbutton.button);
                }
                break;
            case SDL_JOYBUTTONDOWN:
                if (controller_ == nullptr && opened_ && event.jbutton.which == opened_->instance) {
                    presses_.push_back(event.jbutton.button);
                }
                break;
            case SDL_JOYDEVICEREMOVED:
                changes.listChanged = true;
                if (opened_ && event.jdevice.which == opened_->instance) {
                    changes.lostOpened = true;
                }
                break;
            default:
                break;
        }
    }
    if (joystick_ != nullptr && SDL_JoystickGetAttached(joystick_) != SDL_TRUE) {
        changes.lostOpened = true;
    }
    if (changes.lostOpened) {
        close();
    }
    return changes;
}

std::vector<InputDevice> SdlDevices::present() const {
    std::vector<InputDevice> devices;
    if (!available_) {
        return devices;
    }
    const int count = SDL_NumJoysticks();
    for (int i = 0; i < count; ++i) {
        devices.push_back(deviceAt(i));
    }
    return devices;
}

bool SdlDevices::open(const QString& guid) {
    close();
    if (!available_) {
        return false;
    }
    const int count = SDL_NumJoysticks();
    for (int i = 0; i < count; ++i) {
        if (!guid.isEmpty() && guidAt(i) != guid) {
            continue;
        }
        InputDevice device = deviceAt(i);
        if (device.gameController) {
            controller_ = SDL_GameControllerOpen(i);
            joystick_ =
                controller_ != nullptr ? SDL_GameControllerGetJoystick(controller_) : nullptr;
        } else {
            joystick_ = SDL_JoystickOpen(i);
        }
        if (joystick_ == nullptr) {
            close();
            continue;
        }
        device.instance = SDL_JoystickInstanceID(joystick_);
        opened_ = device;
        return true;
    }
    return false;
}

void SdlDevices::close() {
    if (controller_ != nullptr) {
        SDL_GameControllerClose(controller_);
    } else if (joystick_ != nullptr) {
        SDL_JoystickClose(joystick_);
    }
    controller_ = nullptr;
    joystick_ = nullptr;
    opened_.reset();
    presses_.clear();
}

int SdlDevices::axis(int index) const {
    if (controller_ != nullptr) {
        return SDL_GameControllerGetAxis(controller_, static_cast<SDL_GameControllerAxis>(index));
    }
    return joystick_ != nullptr ? SDL_JoystickGetAxis(joystick_, index) : 0;
}

}  // namespace halvex
