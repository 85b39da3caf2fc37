#pragma once

#include <vector>

#include "protocol/frame.h"

namespace halvex {

// A tour step as the unit keeps it.
struct TourStep {
    int number = 0;  // its place in the tour, as a reply gives it
    int preset = 0;
    int camera = 0;  // 0 the default camera, then 1 and 2
    int dwellSeconds = 0;
    bool blank = false;  // the video is blanked while the platform moves

    bool operator==(const TourStep&) const = default;
};

// A step's two bytes: the preset plus its camera's bits, the dwell plus the
// blank bit.
struct TourStepBytes {
    Byte preset = 0;
    Byte dwell = 0;
};
// Each byte is the sum of its parts; a sum that does not fit its byte is a
// range fault.
TourStepBytes encodeTourStep(const TourStep& step);

// The tour being edited, as the unit last told it.
struct TourTable {
    static constexpr int kTours = 3;
    // A tour has at most this many steps; a unit that says more is corrupt.
    static constexpr int kMostSteps = 255;

    // The tour asked for last, or named by the last count the unit sent.
    int selected = 0;
    // Its steps as the unit counted them.
    int stepCount = 0;
    // Its steps as they were read, appended and replaced.
    std::vector<TourStep> steps;
};

}  // namespace halvex
