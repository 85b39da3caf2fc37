#include "session/position_encoding.h"

#include <cfenv>
#include <cmath>

namespace halvex {

std::int32_t encodePosition(double degrees) {
    const double hundredths = degrees * 100.0;
    if (!std::isfinite(hundredths)) {
        throw RangeFault(RangeFault::Overflow, "position is not a finite number");
    }
    // nearbyint honours the current rounding mode, which is round-to-nearest-
    // even unless somebody changed it; make sure of it.
    const int previous = std::fegetround();
    std::fesetround(FE_TONEAREST);
    const double rounded = std::nearbyint(hundredths);
    std::fesetround(previous);
    if (rounded < -2147483648.0 || rounded > 2147483647.0) {
        throw RangeFault(RangeFault::Overflow, "position does not fit");
    }
    return static_cast<std::int32_t>(rounded);
}

void putPosition(ByteTable& tx, int first, std::int32_t value) {
    const std::array<Byte, 3> bytes = lowestFirst24(value);
    for (int i = 0; i < 3; ++i) {
        tx[first + i] = bytes[static_cast<std::size_t>(i)];
    }
}

std::int32_t getPosition(const ByteTable& rx, int first) {
    return Build24(rx[first + 2], rx[first + 1], rx[first]);
}

}  // namespace halvex
