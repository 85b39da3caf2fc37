#pragma once

// The frame codec: byte tables, stuffing, LRC and the packing helpers that
// every command builder and reply decoder uses. Plain C++, no Qt.

#include <array>
#include <cstdint>
#include <vector>

#include "protocol/range_fault.h"

namespace halvex {

using Byte = std::uint8_t;

constexpr Byte kStx = 0x02;
constexpr Byte kEtx = 0x03;
constexpr Byte kAck = 0x06;
constexpr Byte kNak = 0x15;
constexpr Byte kEsc = 0x1B;
constexpr Byte kNoOverride = 255;
constexpr Byte kBroadcast = 0;

// A byte table with legal indices 0..1000, as the transmit and receive
// buffers are. Any index outside that is a range fault, never a stray write.
class ByteTable {
  public:
    static constexpr int kLastIndex = 1000;

    Byte& operator[](int index) { return data_[checkIndex(index)]; }
    Byte operator[](int index) const { return data_[checkIndex(index)]; }
    void clear() { data_.fill(0); }

  private:
    static std::size_t checkIndex(int index);
    std::array<Byte, kLastIndex + 1> data_{};
};

// An escaped value travels as ESC, then the value with this bit set.
constexpr Byte kStuffBit = 0x80;
inline Byte stuffed(Byte value) {
    return static_cast<Byte>(value | kStuffBit);
}
inline Byte unstuffed(Byte escaped) {
    return static_cast<Byte>(escaped & ~kStuffBit);
}

// True for the five values that travel escaped: STX, ETX, ACK, NAK, ESC.
bool needsStuffing(Byte value);

// Appends one stuffed field byte to a wire image.
void appendStuffed(std::vector<Byte>& wire, Byte value);

// LRC of an outgoing frame: address XOR tx[0] .. tx[count-1], so that it
// also covers the address byte of the frame that carries it.
Byte Calc_LRC(const ByteTable& tx, int count, Byte address);

// The address an outgoing frame carries and its LRC starts from.
inline Byte frameAddress(Byte unitId, Byte addressOverride) {
    return addressOverride < kNoOverride ? addressOverride : unitId;
}

// True when unitId XOR rx[0] .. rx[last] is zero. The check always starts
// from the configured unit id, never from the address that arrived with the
// reply, so a reply from another address fails unless the XOR happens to match.
bool Check_LRC(const ByteTable& rx, int last, Byte unitId);

// hi * 256 + lo, folded to negative only when strictly above 32768; exactly
// 32768 does not fit and is a range fault.
std::int16_t Build16(Byte hi, Byte lo);

// Two's complement split of a 16-bit value; -32768 is a range fault.
void Split16(int value, Byte& hi, Byte& lo);

std::int32_t Build24(Byte b2, Byte b1, Byte b0);

// Splits the low 24 bits of value. Consumes value: afterwards it holds the
// input shifted right by 16, so callers that need it again copy it first.
void Split24(std::int32_t& value, Byte& b2, Byte& b1, Byte& b0);
// The same three bytes, lowest first, leaving value alone.
std::array<Byte, 3> lowestFirst24(std::int32_t value);

// Builds the complete wire image of a frame: start byte, then the stuffed
// address, message bytes and LRC, then ETX. Used by the virtual unit and by
// tests; the console's own transmit path writes byte by byte.
std::vector<Byte> encodeFrame(Byte start, Byte address, const std::vector<Byte>& message,
                              Byte lrcAddress);

}  // namespace halvex
