#pragma once

#include <QString>
#include <optional>

#include "commissioning/unit_line.h"
#include "commissioning/unit_settings.h"

namespace halvex::commissioning {

struct UnitRead {
    std::optional<UnitSettings> settings;
    // When nothing: why ("No reply from the unit to the request for the
    // speeds and ramps."), empty when cancelled.
    QString problem;
    bool cancelled = false;
};

// The controller type (bits 0..1 of status byte A) and who the unit is: a
// jog message that moves nothing and the firmware request. Nothing when it
// does not answer both.
std::optional<UnitIdentity> readIdentity(UnitLine& line);

// Reads everything the console can read from the unit: who it is, every
// setting of the table that its controller type has, the soft limits,
// presets and tours. The tours are read last to first, so that a console's
// tour page, which follows the replies, ends on the first tour.
// Each step is reported as `doing` and what it reads ("Reading presets").
UnitRead readUnit(UnitLine& line, const Progress& progress,
                  const QString& doing = QStringLiteral("Reading"));

// Just the soft limits and presets (after the offsets changed, they read
// differently), into `settings`. False when the unit stopped answering.
bool readAngles(UnitLine& line, UnitSettings& settings);

}  // namespace halvex::commissioning
