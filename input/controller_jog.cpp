#include "input/controller_jog.h"

#include "input/jog_gate.h"

namespace halvex {

ControllerJog::ControllerJog(JogSources& sources, JogGate& gate, QObject* parent)
    : QObject(parent), sources_(sources), gate_(gate) {
    connect(&timer_, &QTimer::timeout, this, &ControllerJog::read);
    if (sdl_.available()) {
        openPreferred();
        timer_.start(sdl_.opened() ? kReadMs : kLookMs);
    }
}

void ControllerJog::setPreferredDevice(const QString& guid) {
    preferred_ = guid;
    sources_.release(JogSource::Controller);
    openPreferred();
    emit devicesChanged();
}

void ControllerJog::openPreferred() {
    // The preferred device when it is there, else the first one present.
    if (!sdl_.open(preferred_) && !preferred_.isEmpty()) {
        sdl_.open(QString());
    }
    const std::optional<InputDevice> device = sdl_.opened();
    mapping_ =
        device && device->gameController ? standardControllerMapping() : plainJoystickMapping();
    // Buttons held while the device is taken do nothing until pressed again.
    buttonsHeld_.assign(static_cast<std::size_t>(sdl_.buttonCount()), false);
    for (std::size_t i = 0; i < buttonsHeld_.size(); ++i) {
        buttonsHeld_[i] = sdl_.button(static_cast<int>(i));
    }
    if (timer_.isActive()) {
        timer_.setInterval(device ? kReadMs : kLookMs);
    }
}

void ControllerJog::read() {
    readDevice(true);
}

void ControllerJog::readSticks() {
    readDevice(false);
}

void ControllerJog::readDevice(bool withButtons) {
    const SdlDevices::Changes changes = sdl_.pump();
    if (changes.lostOpened) {
        sources_.stopAll();
    }
    if (changes.listChanged) {
        if (!sdl_.opened() || (!preferred_.isEmpty() && sdl_.opened()->guid != preferred_)) {
            openPreferred();
        }
        emit devicesChanged();
    }
    const bool allowed = gate_.check();
    if (!sdl_.opened()) {
        return;
    }
    if (allowed) {
        sources_.apply(JogSource::Controller,
                       demandFrom(mapping_, [this](int axis) { return sdl_.axis(axis); }));
    }
    if (withButtons) {
        readButtons(allowed);
    }
}

void ControllerJog::readButtons(bool allowed) {
    for (const ButtonBinding& binding : mapping_.buttons) {
        if (binding.button < 0 || static_cast<std::size_t>(binding.button) >= buttonsHeld_.size()) {
            continue;
        }
        const auto index = static_cast<std::size_t>(binding.button);
        const bool down = sdl_.button(binding.button);
        if (down && !buttonsHeld_[index] && allowed) {
            emit actionTriggered(binding.action, binding.preset);
        }
        buttonsHeld_[index] = down;
    }
}

}  // namespace halvex
