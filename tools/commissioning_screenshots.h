#pragma once

#include <QString>

namespace halvex {
class VornixU;
namespace sim {
class Unit;
}
}  // namespace halvex

// The Unit menu's commissioning dialogs, online against `unit`: Find Units
// with its result, the progress of a save, and a restore's confirmation.
bool saveCommissioningDialogs(halvex::VornixU& window, halvex::sim::Unit& unit, const QString& out);
