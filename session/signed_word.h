#pragma once

#include <cstdint>
#include <vector>

#include "protocol/frame.h"
#include "protocol/vocabulary_words.h"

namespace halvex {

// A signed value into a two-byte field, two's complement; beyond +-32767 is
// a range fault.
template <class M>
void putSignedWord(std::vector<Byte>& message, vocab::Field<M> field, int value) {
    Byte hi = 0;
    Byte lo = 0;
    Split16(value, hi, lo);
    vocab::put(message, field, static_cast<std::uint32_t>(hi << 8 | lo));
}

}  // namespace halvex
