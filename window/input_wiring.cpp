#include "window/input_wiring.h"

#include "input/controller_jog.h"
#include "input/jog_gate.h"
#include "input/keyboard_jog.h"
#include "protocol/fault_guard.h"
#include "protocol/senders.h"
#include "window/user_settings.h"

namespace halvex {

namespace {
constexpr Byte kGoToPreset = 0x32;
const char* const kDeviceKey = "Input/Device";

// A key or a controller button does what the operator's click would.
void perform(ConsoleContext& context, const InputTargets& targets, ButtonAction action,
             int preset) {
    const auto click = [](QAbstractButton* button) {
        if (button != nullptr && button->isEnabled()) {
            button->click();
        }
    };
    switch (action) {
        case ButtonAction::Stop:
            click(targets.stop);
            break;
        case ButtonAction::Reset:
            click(targets.reset);
            break;
        case ButtonAction::MoveHome:
            click(targets.home);
            break;
        case ButtonAction::MoveCenter:
            click(targets.center);
            break;
        case ButtonAction::SoftLimitOverride:
            click(targets.softLimitOverride);
            break;
        case ButtonAction::PanLowSpeed:
            click(targets.panLowSpeed);
            break;
        case ButtonAction::TiltLowSpeed:
            click(targets.tiltLowSpeed);
            break;
        case ButtonAction::GoToPreset:
            guarded(context.state, "Controller_GoToPreset", [&] {
                sendMessage(context.state, context.link,
                            {kGoToPreset, static_cast<Byte>(std::clamp(preset, 0, 9))});
            });
            break;
    }
}
}  // namespace

InputFeatures installInput(ConsoleContext& context, JogState& jog, JogSources& sources,
                           QWidget& window, QTabWidget& tabs, const InputTargets& targets,
                           QObject* parent) {
    InputFeatures input;
    input.gate = new JogGate(sources, jog, context.state, window, parent);
    // The page's own handler (connected earlier) has set JogEnabled by now.
    QObject::connect(&tabs, &QTabWidget::currentChanged, input.gate, &JogGate::check);
    input.keyboard = new KeyboardJog(sources, *input.gate, window, parent);
    input.controller = new ControllerJog(sources, *input.gate, parent);
    input.controller->setPreferredDevice(userSettings()->value(kDeviceKey).toString());

    ControllerJog* controller = input.controller;
    JogGate* gate = input.gate;
    sources.setRefresh([gate, controller] {
        controller->read();
        gate->check();
    });
    const auto act = [&context, targets](ButtonAction action, int preset) {
        perform(context, targets, action, preset);
    };
    // Queued: a command waits for the link's tick, and a key or a button may
    // be read while a tick is being served.
    QObject::connect(input.keyboard, &KeyboardJog::actionTriggered, input.keyboard, act,
                     Qt::QueuedConnection);
    QObject::connect(input.controller, &ControllerJog::actionTriggered, input.controller, act,
                     Qt::QueuedConnection);
    return input;
}

}  // namespace halvex
