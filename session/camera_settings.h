#pragma once

#include <array>

#include "protocol/frame.h"

namespace halvex {

// One camera's serial line as the unit keeps it.
struct CameraLine {
    int baud = 0;    // 0 off, then 9.6, 14.4, 19.2, 28.8, 38.4, 57.6 and 115.2 kbaud
    int format = 0;  // data bits and parity: 8/N, 7/N, 7/E, 7/O
    bool rs422 = false;
    bool twoStopBits = false;
    // A bit of the byte that means nothing to the unit; it goes back as it came.
    bool spare = false;

    bool operator==(const CameraLine&) const = default;
};
using CameraLinePair = std::array<CameraLine, 2>;

// How long the unit waits for each camera's answer, in the unit's steps.
// It takes 1 to 100; a report may carry anything.
using CameraTimeouts = std::array<int, 2>;
inline constexpr int kMostCameraTimeoutSteps = 100;

// One lens motor's setup: whether it runs, which way, whether its position
// reads inverted, and the slowest speed it is driven at (0 to 255).
struct LensMotor {
    bool enabled = false;
    bool reversed = false;
    bool inverted = false;
    int minimumSpeed = 0;

    bool operator==(const LensMotor&) const = default;
};

// One camera's lens.
struct LensSetup {
    LensMotor zoom;
    LensMotor focus;
    // A bit of the flags byte that means nothing to the unit; it goes back
    // as it came.
    bool spare = false;

    bool operator==(const LensSetup&) const = default;
};
using LensSetupPair = std::array<LensSetup, 2>;

}  // namespace halvex
