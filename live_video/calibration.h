#pragma once

#include <optional>

namespace halvex {

// The horizontal field of view that explains two marks of one feature: at
// `firstAcross` before the platform panned `pannedDegrees` (right
// positive), at `secondAcross` after. Marks are fractions across the
// picture. Nullopt when no field from 0.05 to 179 degrees fits: the marks
// moved the wrong way, or not at all.
std::optional<double> fieldFromMarks(double firstAcross, double secondAcross, double pannedDegrees);

// The pan that would carry a feature marked at `across` to the mirror
// place across the centre, by the field the lens is thought to have: the
// calibration's move, which keeps the feature in view even when that
// thought is some way out.
double mirroringPan(double across, double fieldDegrees);

}  // namespace halvex
