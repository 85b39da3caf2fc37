#pragma once

#include <QSettings>
#include <optional>

#include "input/controller_mapping.h"
#include "input/keyboard_jog.h"

namespace halvex {

// A device's mapping in the user's settings, under [Input] by SDL's GUID, so
// that the same model keeps its mapping in any socket.
void saveMapping(QSettings& settings, const QString& guid, const ControllerMapping& mapping);
// Nothing when the device was never set up; values out of range are brought
// into it rather than refused.
std::optional<ControllerMapping> loadMapping(QSettings& settings, const QString& guid);

// The keyboard's jog speeds; a speed never set keeps the keyboard's default.
void saveKeySpeeds(QSettings& settings, const KeyboardJog::Speeds& speeds);
KeyboardJog::Speeds loadKeySpeeds(QSettings& settings);

}  // namespace halvex
