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
    std::optional<ControllerMapping> own;
    if (device && mappingSource_) {
        own = mappingSource_(*device);
    }
    mapping_ = own ? *own : defaultMapping(device && device->gameController);
    if (timer_.isActive()) {
        timer_.setInterval(device ? kReadMs : kLookMs);
    }
}

ControllerMapping ControllerJog::defaultMapping(bool gameController) {
    return gameController ? standardControllerMapping() : plainJoystickMapping();
}

void ControllerJog::read() {
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
    // Presses while steering is not allowed are dropped, not kept for later.
    const std::vector<int> presses = sdl_.takePresses();
    if (!sdl_.opened() || !allowed) {
        return;
    }
    sources_.apply(JogSource::Controller,
                   demandFrom(mapping_, [this](int axis) { return sdl_.axis(axis); }));
    for (int button : presses) {
        for (const ButtonBinding& binding : mapping_.buttons) {
            if (binding.button == button) {
                emit actionTriggered(binding.action, binding.preset);
            }
        }
    }
}

}  // namespace halvex
