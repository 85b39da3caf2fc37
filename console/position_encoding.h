#pragma once

#include <cstdint>

#include "protocol/frame.h"

namespace halvex {

// The value that tells the unit to leave an axis where it is.
constexpr std::int32_t kHoldAxis = 99999;

// Degrees to hundredths, rounded to the nearest whole number with halves to
// the even neighbour (0.125 -> 12, 0.375 -> 38). A value that is not finite
// or does not fit 32 bits is a range fault.
std::int32_t encodePosition(double degrees);

// Writes a position as three bytes, lowest first, at tx[first..first+2].
// Negative values go out as 24-bit two's complement.
void putPosition(ByteTable& tx, int first, std::int32_t value);

// Reads a position written by putPosition.
std::int32_t getPosition(const ByteTable& rx, int first);

}  // namespace halvex
