#pragma once

// A lens's byte in the jog message (vocab::jog::kLensJog): bit 0 gives the
// way the motor turns, set for a positive speed; the seven bits above it
// give how fast. 0 stops the lens.

#include <cstdlib>

#include "protocol/vocabulary_words.h"

namespace halvex::vocab::lens_jog {

inline constexpr Byte kPositive = 0x01;
inline constexpr int kFastest = 127;

// The byte for a speed of -127..127.
constexpr Byte byteOf(int speed) {
    const int magnitude = speed < 0 ? -speed : speed;
    return static_cast<Byte>((magnitude << 1) | (speed > 0 ? kPositive : 0));
}
constexpr int speedOf(Byte value) {
    return value >> 1;
}
constexpr bool isPositive(Byte value) {
    return (value & kPositive) != 0;
}

}  // namespace halvex::vocab::lens_jog
