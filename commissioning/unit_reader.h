#pragma once

#include <QCoro/QCoroTask>
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
QCoro::Task<std::optional<UnitIdentity>> readIdentity(UnitLine& line);

// Reads everything the console can read from the unit: who it is, every
// setting of the table that its controller type has, the soft limits,
// presets and tours. The tours are read last to first, so that a console's
// tour page, which follows the replies, ends on the first tour.
// Each step is reported as `doing` and what it reads ("Reading presets").
QCoro::Task<UnitRead> readUnit(UnitLine& line, Progress progress,
                               QString doing = QStringLiteral("Reading"));

// Just the soft limits and presets (after the offsets changed, they read
// differently), into `settings`, which the caller keeps until this ends.
// False when the unit stopped answering.
QCoro::Task<bool> readAngles(UnitLine& line, UnitSettings& settings);

}  // namespace halvex::commissioning
