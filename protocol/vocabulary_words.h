#pragma once

// The words the vocabulary is written in: a message's code and lengths, a
// field's place, a named bit, and reading and writing them. A field is typed
// by its message, so the compiler refuses a field of one message put into
// another. Reading and writing a field is plain arithmetic: no look-up by
// name on the tick's path. Plain C++, no Qt.

#include <array>
#include <bit>
#include <cstdint>
#include <vector>

#include "protocol/frame.h"

namespace halvex::vocab {

// A message: its code, its full length (code included) and the shortest
// form the unit takes (a read request, an older short variant).
template <Byte Code, int Length, int Shortest = Length>
struct Message {
    static constexpr Byte kCode = Code;
    static constexpr int kLength = Length;
    static constexpr int kShortest = Shortest;
};

// Where a field of message M lies: its first byte (0 is the code), how many
// bytes it takes (low byte first) and which of their bits are its own.
template <class M>
struct Field {
    int offset;
    int size = 1;
    std::uint32_t mask = 0xFF;
};

// One named bit of a flags byte of message M.
template <class M>
struct Bit {
    int offset;
    int bit;
};

// Bytes in: a ByteTable, a std::vector<Byte> long enough, or a std::array.
template <class Bytes, class M>
void put(Bytes& bytes, Field<M> field, std::uint32_t value) {
    std::uint32_t word = 0;
    for (int i = field.size - 1; i >= 0; --i) {
        word = (word << 8) | bytes[field.offset + i];
    }
    word = (word & ~field.mask) | ((value << std::countr_zero(field.mask)) & field.mask);
    for (int i = 0; i < field.size; ++i) {
        bytes[field.offset + i] = static_cast<Byte>(word >> (8 * i));
    }
}

template <class Bytes, class M>
std::uint32_t get(const Bytes& bytes, Field<M> field) {
    std::uint32_t word = 0;
    for (int i = field.size - 1; i >= 0; --i) {
        word = (word << 8) | bytes[field.offset + i];
    }
    return (word & field.mask) >> std::countr_zero(field.mask);
}

// A field whose bytes hold a two's complement number (angles, encoders).
template <class Bytes, class M>
std::int32_t getSigned(const Bytes& bytes, Field<M> field) {
    const std::uint32_t value = get(bytes, field);
    const std::uint32_t top = 1u << (field.size * 8 - 1);
    return static_cast<std::int32_t>(value ^ top) - static_cast<std::int32_t>(top);
}

// Writes the code of message M into byte 0.
template <class M, class Bytes>
void begin(Bytes& bytes) {
    bytes[0] = M::kCode;
}

// The bits of a one-byte field as a byte: for a test of a whole flags byte.
template <class M>
constexpr Byte maskOf(Field<M> field) {
    return static_cast<Byte>(field.mask);
}
template <class M>
constexpr Byte maskOf(Bit<M> bit) {
    return static_cast<Byte>(1u << bit.bit);
}

// A value as it lies in the bits of its field: for a byte the console adds
// up from fields, as the tour step's preset plus its camera.
template <class M>
constexpr std::uint32_t inPlace(Field<M> field, std::uint32_t value) {
    return (value << std::countr_zero(field.mask)) & field.mask;
}

// A three-byte angle or encoder count in hundredths, low byte first.
template <class M>
constexpr Field<M> angleAt(int offset) {
    return {offset, 3, 0xFFFFFF};
}
// A two-byte number, low byte first.
template <class M>
constexpr Field<M> wordAt(int offset) {
    return {offset, 2, 0xFFFF};
}

// Byte 1's bit 7 asks a get/set command to read instead of set; the request
// is padded with zeros to the set command's length.
template <class M>
inline constexpr Bit<M> kReadRequest{1, 7};

// A message of M's full length with its code written in.
template <class M>
std::vector<Byte> blank() {
    std::vector<Byte> bytes(static_cast<std::size_t>(M::kLength), 0);
    bytes[0] = M::kCode;
    return bytes;
}

// M's read request: the code, the read bit, zeros to the set length.
template <class M>
std::vector<Byte> readRequest() {
    std::vector<Byte> bytes = blank<M>();
    bytes[1] = maskOf(kReadRequest<M>);
    return bytes;
}

template <class M>
constexpr Byte withBit(Byte flags, Bit<M> bit, bool set) {
    const auto mask = static_cast<Byte>(1u << bit.bit);
    return set ? static_cast<Byte>(flags | mask) : static_cast<Byte>(flags & ~mask);
}

template <class M>
constexpr bool isSet(Byte flags, Bit<M> bit) {
    return (flags & (1u << bit.bit)) != 0;
}

}  // namespace halvex::vocab
