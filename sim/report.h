#pragma once

// The position report that answers the jog message and every move command.

#include <cstdint>

#include "sim/message.h"
#include "sim/unit_state.h"

namespace halvex::sim {

// A target in reported angles, carried in place of the current position.
struct ReportedTarget {
    std::int32_t pan = 0;
    std::int32_t tilt = 0;
};

// The current position (or the target, with the target bit of status C),
// status bytes A, B and C, and the four lens positions.
Reply positionReport(Byte code, const UnitState& state);
Reply targetReport(Byte code, const UnitState& state, ReportedTarget target);

// The jog reply: the report, then the camera byte counts and the bytes the
// cameras have sent since the last one.
Reply jogReport(UnitState& state);

}  // namespace halvex::sim
