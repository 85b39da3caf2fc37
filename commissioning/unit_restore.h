#pragma once

#include <QCoro/QCoroTask>
#include <QString>
#include <optional>
#include <vector>

#include "commissioning/unit_line.h"
#include "commissioning/unit_settings.h"

namespace halvex::commissioning {

// What the operator is asked before a restore: the differences, and whether
// the platform or the lenses will have to move.
struct RestorePlan {
    UnitSettings file;
    UnitSettings unit;
    bool factoryOpen = false;
    std::vector<Difference> rows;

    // Rows that a restore writes.
    int writes() const;
    // Soft limits are set where the platform stands, and a preset takes lens
    // positions only from where the lenses are: either moves things.
    bool moves() const;
};

RestorePlan planRestore(const UnitSettings& file, const UnitSettings& unit, bool factoryOpen);

// What the operator is told before a restore that moves things.
QString movesWarning();

// "1 value", "12 values".
QString valueCount(std::size_t count);

// "speeds/pan-ramp (file 40, unit 30)", for the rows named after a restore.
QString rowList(const std::vector<Difference>& rows);

// Why a file cannot go onto this unit at all; empty when it can.
QString restoreRefusal(const UnitSettings& file, const UnitSettings& unit);

struct RestoreResult {
    // Every write went out and everything was read back.
    bool finished = false;
    bool cancelled = false;
    QString problem;  // why it stopped early
    // Rows the restore wrote that the unit does not hold afterwards.
    std::vector<Difference> notTaken;
    // Rows left as they were on purpose (the factory area was closed).
    std::vector<Difference> notWritten;

    bool verified() const { return finished && notTaken.empty() && notWritten.empty(); }
};

// Writes what differs: the settings table first (the offsets among them, so
// that soft limits and presets then read as in the file), then the soft
// limits and preset lens positions (moving there), the presets' angles,
// the tours; then reads everything back.
QCoro::Task<RestoreResult> restoreUnit(UnitLine& line, RestorePlan plan, Progress progress);

}  // namespace halvex::commissioning
