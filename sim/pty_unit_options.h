#pragma once

// How the pseudo-terminal unit is set up: the unit itself, the line faults
// and the pacing of its output.

#include <vector>

#include "sim/line_faults.h"
#include "sim/motion.h"
#include "sim/unit_options.h"

namespace halvex::sim {

struct PtyUnitOptions {
    UnitOptions unit;
    LineFaultOptions line;
    // Line speed at which replies leave byte by byte; 0 sends each reply in
    // one write.
    int paceBaud = 0;
    // Unit faults that latch whenever their axis is told to move.
    std::vector<Fault> faults;
};

}  // namespace halvex::sim
