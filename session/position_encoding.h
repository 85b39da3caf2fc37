#pragma once

#include <cstdint>

#include "protocol/frame.h"
#include "protocol/vocabulary_motion.h"

namespace halvex {

// The value that tells the unit to leave an axis where it is.
constexpr std::int32_t kHoldAxis = vocab::absolute_move::kHoldAxis;

// Degrees to hundredths, rounded to the nearest whole number with halves to
// the even neighbour (0.125 -> 12, 0.375 -> 38). A value that is not finite
// or does not fit 32 bits is a range fault.
std::int32_t encodePosition(double degrees);

// Writes a position as three bytes, lowest first, at tx[first..first+2].
// Negative values go out as 24-bit two's complement.
void putPosition(ByteTable& tx, int first, std::int32_t value);

// Reads a position written by putPosition.
std::int32_t getPosition(const ByteTable& rx, int first);

// The same at a three-byte angle field of the vocabulary.
template <class M>
void putPosition(ByteTable& tx, vocab::Field<M> field, std::int32_t value) {
    putPosition(tx, field.offset, value);
}
template <class M>
std::int32_t getPosition(const ByteTable& rx, vocab::Field<M> field) {
    return getPosition(rx, field.offset);
}

}  // namespace halvex
