#pragma once

// Messages in tests, built and read by name: a test says which message and
// which field values; the bytes come from the vocabulary.

#include <cstdint>
#include <initializer_list>
#include <vector>

#include "protocol/vocabulary.h"

namespace halvex::test {

template <class M>
struct Value {
    vocab::Field<M> field;
    std::int64_t value;
};

// Message M at its full length (or `length`), the fields given set, the
// rest zero. Negative values are written in two's complement.
template <class M>
std::vector<Byte> message(std::initializer_list<Value<M>> values = {}, int length = M::kLength) {
    std::vector<Byte> bytes(static_cast<std::size_t>(length), 0);
    vocab::begin<M>(bytes);
    for (const Value<M>& v : values) {
        vocab::put(bytes, v.field, static_cast<std::uint32_t>(v.value));
    }
    return bytes;
}

// M with its bit set, the rest as `message` gives.
template <class M>
std::vector<Byte> withBits(std::vector<Byte> bytes, std::initializer_list<vocab::Bit<M>> bits) {
    for (const vocab::Bit<M>& bit : bits) {
        bytes[static_cast<std::size_t>(bit.offset)] =
            vocab::withBit(bytes[static_cast<std::size_t>(bit.offset)], bit, true);
    }
    return bytes;
}

// The same bytes under M's code: an answer that comes back under the code of
// the command it answers (a preset record to a store, say).
template <class M>
std::vector<Byte> withCode(std::vector<Byte> bytes) {
    vocab::begin<M>(bytes);
    return bytes;
}

// Whether a named bit of a message is set.
template <class M>
bool isSet(const std::vector<Byte>& bytes, vocab::Bit<M> bit) {
    return vocab::isSet(bytes.at(static_cast<std::size_t>(bit.offset)), bit);
}

// A position report answering the command of `code`: it has no code of its
// own. Full length, or `length`.
inline std::vector<Byte> report(Byte code,
                                std::initializer_list<Value<vocab::PositionReport>> values = {},
                                int length = vocab::PositionReport::kLength) {
    std::vector<Byte> bytes(static_cast<std::size_t>(length), 0);
    bytes[0] = code;
    for (const Value<vocab::PositionReport>& v : values) {
        vocab::put(bytes, v.field, static_cast<std::uint32_t>(v.value));
    }
    return bytes;
}

// A message for tests of the line, where only its bytes matter: the comm
// time-out with `seconds`, two bytes.
inline std::vector<Byte> sample(int seconds) {
    return message<vocab::CommTimeout>({{vocab::comm_timeout::kSeconds, seconds}});
}

}  // namespace halvex::test
