#pragma once

// What the video outputs need from the unit, copied out in the unit's own
// thread so that drawing never reads the model while it changes.

#include "sim/unit_state.h"
#include "sim/video/output_picture.h"

namespace halvex::sim::video {

// The angles are those of the position report: mechanical plus offsets.
VideoSnapshot videoSnapshotOf(const UnitState& state);

}  // namespace halvex::sim::video
