#pragma once

#include <QCoro/QCoroTask>
#include <vector>

#include "commissioning/unit_line.h"
#include "commissioning/unit_settings.h"

namespace halvex::commissioning {

struct UnitSearch {
    std::vector<UnitIdentity> found;
    bool cancelled = false;
    bool portClosed = false;
    // Address 0 is also the broadcast address, which every unit answers: it
    // is asked only when nobody answered at 1..99.
    bool askedZero = false;
};

constexpr int kLastUnitAddress = 99;

// Asks addresses 1..99 in turn for the firmware revision (a request every
// unit answers) and each unit that answers for a position report (its
// controller type), then address 0 when nobody answered. The line's
// watchdog says how long each address is waited for. Talks to the console's
// own address again afterwards.
QCoro::Task<UnitSearch> findUnits(UnitLine& line, Progress progress);

}  // namespace halvex::commissioning
