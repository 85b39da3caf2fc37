#pragma once

// Angles are kept in hundredths of a degree, as they travel on the wire.

#include <cstdint>

#include "protocol/vocabulary_motion.h"

namespace halvex::sim {

constexpr std::int32_t kPanEnd = 18000;  // mechanical pan range is -180.00..+180.00
constexpr std::int32_t kTiltEnd = 9000;  // mechanical tilt range is -90.00..+90.00
constexpr std::int32_t kFullTurn = 36000;
constexpr std::int32_t kHoldAxis = vocab::absolute_move::kHoldAxis;

// Folds a pan angle into -180.00 (exclusive) .. +180.00 for a unit that
// turns without end.
inline double wrapPan(double hundredths) {
    while (hundredths > kPanEnd) {
        hundredths -= kFullTurn;
    }
    while (hundredths <= -kPanEnd) {
        hundredths += kFullTurn;
    }
    return hundredths;
}

}  // namespace halvex::sim
