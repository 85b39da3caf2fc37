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
    std::int32_t copy = value;  // Split24 consumes its argument
    Byte b2 = 0, b1 = 0, b0 = 0;
    Split24(copy, b2, b1, b0);
    tx[first] = b0;
    tx[first + 1] = b1;
    tx[first + 2] = b2;
}

std::int32_t getPosition(const ByteTable& rx, int first) {
    return Build24(rx[first + 2], rx[first + 1], rx[first]);
}

}  // namespace halvex
