#pragma once

#include <QTabWidget>

#include "console/console_context.h"
#include "session/jog_sources.h"

namespace halvex {

class JogGate;
class KeyboardJog;
class ControllerJog;

struct InputFeatures {
    JogGate* gate = nullptr;
    KeyboardJog* keyboard = nullptr;
    ControllerJog* controller = nullptr;
};

// Jogging from the keyboard and from game controllers, on the one jog state
// the jog box also writes, behind the dead-man. The device in use, each
// device's mapping (by SDL's GUID) and the keyboard's speeds are kept in the
// user's settings.
InputFeatures installInput(ConsoleContext& context, JogState& jog, JogSources& sources,
                           QWidget& window, QTabWidget& tabs, QObject* parent);

// Opens View > Input Settings over `window`; OK puts the choices to work and keeps them.
void openInputSettings(const InputFeatures& input, QWidget& window);

}  // namespace halvex
