#pragma once

// The protocol's vocabulary: each message's code and length and where each
// of its fields lies, as constants that the senders, the decoders, the
// virtual unit and the protocol table all use, so that a layout is written
// once. A field is typed by its message, so the compiler refuses a field of
// one message put into another. Reading and writing a field is plain
// arithmetic: no look-up by name on the tick's path. Plain C++, no Qt.

#include <array>
#include <bit>
#include <cstdint>

#include "protocol/frame.h"

namespace halvex::vocab {

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

template <class M>
constexpr Byte withBit(Byte flags, Bit<M> bit, bool set) {
    const auto mask = static_cast<Byte>(1u << bit.bit);
    return set ? static_cast<Byte>(flags | mask) : static_cast<Byte>(flags & ~mask);
}

template <class M>
constexpr bool isSet(Byte flags, Bit<M> bit) {
    return (flags & (1u << bit.bit)) != 0;
}

// The jog message: the console's every tick when no command waits. Its
// flags byte is the form's JogFlags.
struct JogMessage {
    static constexpr Byte kCode = 0x31;
    static constexpr int kLength = 8;
};

namespace jog {
using F = Field<JogMessage>;
using B = Bit<JogMessage>;
// Byte 1 whole, as the form's JogFlags holds it: the flags and directions.
inline constexpr F kFlagsByte{1};
inline constexpr F kFlags{1, 1, 0x1F};
inline constexpr B kReset{1, 0};
inline constexpr B kStop{1, 1};
inline constexpr B kSoftLimitOverride{1, 2};
inline constexpr B kTiltLowSpeed{1, 3};
inline constexpr B kPanLowSpeed{1, 4};
inline constexpr B kTiltUp{1, 6};
inline constexpr B kPanCw{1, 7};
inline constexpr F kTiltDirection{1, 1, 0x40};
inline constexpr F kPanDirection{1, 1, 0x80};
inline constexpr F kPanSpeed{2};
inline constexpr F kTiltSpeed{3};
// Zoom 1, focus 1, zoom 2, focus 2.
inline constexpr std::array<F, 4> kLensJog{F{4}, F{5}, F{6}, F{7}};
}  // namespace jog

// The position report: the answer to the jog message and to every move. A
// report of the target the unit heads for has the target bit of status C
// set. Only the jog message's report carries the cameras' bytes.
struct PositionReport {
    static constexpr int kLength = 14;
    static constexpr int kJogLength = 16;  // with the two camera counts
};

namespace report {
using F = Field<PositionReport>;
using B = Bit<PositionReport>;
inline constexpr F kPan{1, 3, 0xFFFFFF};
inline constexpr F kTilt{4, 3, 0xFFFFFF};
// Status A whole: its fault and limit bits and the controller type.
inline constexpr F kStatusAByte{7};
inline constexpr F kStatusA{7, 1, 0xFC};
inline constexpr F kControllerType{7, 1, 0x03};
inline constexpr F kStatusB{8};
inline constexpr F kStatusC{9};
inline constexpr B kTarget{9, 5};
inline constexpr B kContinuousPan{9, 7};
// Zoom 1, focus 1, zoom 2, focus 2.
inline constexpr std::array<F, 4> kLens{F{10}, F{11}, F{12}, F{13}};
inline constexpr F kCamera1Count{14};
inline constexpr F kCamera2Count{15};
// The first camera's bytes start here, the second's follow them.
inline constexpr int kCameraData = 16;
}  // namespace report

}  // namespace halvex::vocab
