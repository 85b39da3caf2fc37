#pragma once

#include <QString>

namespace halvex {

// Right-aligned in exactly `width` characters: padded with blanks on the
// left, or cut to its leftmost characters when longer.
QString fitRight(const QString& text, int width);

// An angle in degrees with two decimals ("#0.00": -123.45, 0.00).
QString formatAngle(double degrees);

}  // namespace halvex
