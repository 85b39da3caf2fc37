#pragma once

#include <QSettings>
#include <optional>

#include "input/controller_mapping.h"

namespace halvex {

// A device's mapping in the user's settings, under [Input] by SDL's GUID, so
// that the same model keeps its mapping in any socket.
void saveMapping(QSettings& settings, const QString& guid, const ControllerMapping& mapping);
// Nothing when the device was never set up; values out of range are brought
// into it rather than refused.
std::optional<ControllerMapping> loadMapping(QSettings& settings, const QString& guid);

}  // namespace halvex
