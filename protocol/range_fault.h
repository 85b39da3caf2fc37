#pragma once

#include <stdexcept>
#include <string>

namespace halvex {

// The one exception type for the unit's "fatal" range errors: a buffer index
// past 1000, a value that does not fit its byte or word, a bit number above 7.
// Event entry points catch it, so it stops the operation in progress and
// nothing else.
class RangeFault : public std::runtime_error {
  public:
    enum Kind { Overflow = 6, SubscriptOutOfRange = 9 };

    RangeFault(Kind kind, const std::string& detail) : std::runtime_error(detail), kind_(kind) {}

    Kind kind() const { return kind_; }
    int errorNumber() const { return static_cast<int>(kind_); }
    // "Overflow" or "Subscript out of range", as an operator would read it.
    const char* kindText() const {
        return kind_ == Overflow ? "Overflow" : "Subscript out of range";
    }

  private:
    Kind kind_;
};

// Narrows an int to a byte, refusing anything outside 0..255.
inline unsigned char checkedByte(long value) {
    if (value < 0 || value > 255) {
        throw RangeFault(RangeFault::Overflow, "byte overflow: " + std::to_string(value));
    }
    return static_cast<unsigned char>(value);
}

}  // namespace halvex
