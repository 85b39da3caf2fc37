#include "window/input_wiring.h"

#include "input/controller_jog.h"
#include "input/input_settings_dialog.h"
#include "input/jog_gate.h"
#include "input/keyboard_jog.h"
#include "input/mapping_settings.h"
#include "protocol/fault_guard.h"
#include "window/user_settings.h"

namespace halvex {

namespace {
const char* const kDeviceKey = "Input/Device";

// A key or a controller button does what the operator's click would: the
// session's operation, and only while the page's control could be clicked.
void perform(ConsoleContext& context, ButtonAction action, int preset) {
    Session& session = context.session;
    const bool usable = !session.refusalFor(Requester::Operator);
    const auto move = [&](const char* handler,
                          QCoro::Task<Outcome> (Session::*operation)(Requester)) {
        if (usable) {
            launch(context.state, handler, completing((session.*operation)(Requester::Operator)));
        }
    };
    switch (action) {
        case ButtonAction::Stop:
            session.stop();
            break;
        case ButtonAction::Reset:
            session.reset();
            break;
        case ButtonAction::MoveHome:
            move("HomeBut_Click", &Session::moveHome);
            break;
        case ButtonAction::MoveCenter:
            move("CenterBut_Click", &Session::moveToCentre);
            break;
        case ButtonAction::SoftLimitOverride:
            if (usable) {
                session.setSoftLimitOverride(!session.softLimitOverride());
            }
            break;
        case ButtonAction::PanLowSpeed:
            if (usable) {
                session.setLowSpeed(!session.panLowSpeed(), session.tiltLowSpeed());
            }
            break;
        case ButtonAction::TiltLowSpeed:
            if (usable) {
                session.setLowSpeed(session.panLowSpeed(), !session.tiltLowSpeed());
            }
            break;
        case ButtonAction::GoToPreset:
            launch(context.state, "Controller_GoToPreset",
                   completing(session.goToPreset(std::clamp(preset, 0, 9), Requester::Operator)));
            break;
    }
}
}  // namespace

InputFeatures installInput(ConsoleContext& context, JogState& jog, JogSources& sources,
                           QWidget& window, QTabWidget& tabs, QObject* parent) {
    InputFeatures input;
    input.gate = new JogGate(sources, jog, context.state, window, parent);
    // The page's own handler (connected earlier) has set JogEnabled by now.
    QObject::connect(&tabs, &QTabWidget::currentChanged, input.gate, &JogGate::check);
    input.keyboard = new KeyboardJog(sources, *input.gate, window, parent);
    input.keyboard->setSpeeds(loadKeySpeeds(*userSettings()));
    input.controller = new ControllerJog(sources, *input.gate, parent);
    input.controller->setMappingSource(
        [](const InputDevice& device) { return loadMapping(*userSettings(), device.guid); });
    input.controller->setPreferredDevice(userSettings()->value(kDeviceKey).toString());

    ControllerJog* controller = input.controller;
    JogGate* gate = input.gate;
    sources.setRefresh([gate, controller] {
        controller->read();
        gate->check();
    });
    const auto act = [&context](ButtonAction action, int preset) {
        perform(context, action, preset);
    };
    // Queued: a command waits for the link's tick, and a key or a button may
    // be read while a tick is being served.
    QObject::connect(input.keyboard, &KeyboardJog::actionTriggered, input.keyboard, act,
                     Qt::QueuedConnection);
    QObject::connect(input.controller, &ControllerJog::actionTriggered, input.controller, act,
                     Qt::QueuedConnection);
    return input;
}

void openInputSettings(const InputFeatures& input, QWidget& window) {
    auto* dialog = new InputSettingsDialog(*input.controller, *input.keyboard, &window);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    ControllerJog* controller = input.controller;
    KeyboardJog* keyboard = input.keyboard;
    const std::optional<InputDevice> shown = controller->deviceInUse();
    QObject::connect(dialog, &QDialog::accepted, controller, [dialog, controller, keyboard, shown] {
        keyboard->setSpeeds(dialog->chosenSpeeds());
        saveKeySpeeds(*userSettings(), dialog->chosenSpeeds());
        // The mapping shown belongs to the device that was in use then.
        if (shown) {
            saveMapping(*userSettings(), shown->guid, dialog->chosenMapping());
        }
        userSettings()->setValue(kDeviceKey, dialog->chosenDevice());
        controller->setPreferredDevice(dialog->chosenDevice());
    });
    dialog->open();
}

}  // namespace halvex
