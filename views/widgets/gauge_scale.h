#pragma once

#include <vector>

namespace halvex {

// Tick positions for a dial scale: round numbers (1, 2 or 5 times a power
// of ten apart) inside the closed range between `from` and `to`, in
// ascending order, about `wanted` of them.
struct GaugeTicks {
    double step = 0.0;
    std::vector<double> major;
    std::vector<double> minor;  // between and beside the major ticks, never on one
};

// An empty or non-finite range, or one too wide to tick, gives no ticks.
GaugeTicks gaugeTicks(double from, double to, int wanted);

}  // namespace halvex
