#pragma once

#include <QString>

namespace halvex {

// One line of the movement log: target, start and move of the pan, two
// blanks, then the same for the tilt; each number "#0.00" right-aligned in
// eight characters (a longer number keeps its leftmost eight).
QString movementLine(float toPan, float fromPan, float toTilt, float fromTilt);

// The statistics read-outs: largest move with two decimals, average with three.
QString formatLargestMove(float degrees);
QString formatAverageMove(float degrees);

}  // namespace halvex
