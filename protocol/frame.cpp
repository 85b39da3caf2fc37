#include "protocol/frame.h"

#include <cstdlib>
#include <string>

namespace halvex {

std::size_t ByteTable::checkIndex(int index) {
    if (index < 0 || index > kLastIndex) {
        throw RangeFault(RangeFault::SubscriptOutOfRange,
                         "buffer index " + std::to_string(index) + " outside 0..1000");
    }
    return static_cast<std::size_t>(index);
}

bool needsStuffing(Byte value) {
    return value == kStx || value == kEtx || value == kAck || value == kNak || value == kEsc;
}

void appendStuffed(std::vector<Byte>& wire, Byte value) {
    if (needsStuffing(value)) {
        wire.push_back(kEsc);
        wire.push_back(stuffed(value));
    } else {
        wire.push_back(value);
    }
}

Byte Calc_LRC(const ByteTable& tx, int count, Byte address) {
    Byte lrc = address;
    for (int i = 0; i < count; ++i) {
        lrc ^= tx[i];
    }
    return lrc;
}

bool Check_LRC(const ByteTable& rx, int last, Byte unitId) {
    Byte lrc = unitId;
    for (int i = 0; i <= last; ++i) {
        lrc ^= rx[i];
    }
    return lrc == 0;
}

std::int16_t Build16(Byte hi, Byte lo) {
    long sum = hi * 256L + lo;
    if (sum > 32768) {
        sum -= 65536;
    }
    if (sum > 32767) {
        throw RangeFault(RangeFault::Overflow, "Build16 overflow");
    }
    return static_cast<std::int16_t>(sum);
}

void Split16(int value, Byte& hi, Byte& lo) {
    if (value < -32767 || value > 32767) {
        throw RangeFault(RangeFault::Overflow, "Split16 overflow: " + std::to_string(value));
    }
    if (value >= 0) {
        lo = static_cast<Byte>(value & 0xFF);
        hi = static_cast<Byte>(value >> 8);
    } else {
        const int m = std::abs(value) - 1;
        lo = static_cast<Byte>(~(m & 0xFF));
        hi = static_cast<Byte>(~(m >> 8));
    }
}

std::int32_t Build24(Byte b2, Byte b1, Byte b0) {
    const std::int32_t top = b2 > 127 ? b2 - 256 : b2;
    return (top * 256 + b1) * 256 + b0;
}

void Split24(std::int32_t& value, Byte& b2, Byte& b1, Byte& b0) {
    // Written with subtraction and exact division, so negative values step
    // down the same way the two's complement bytes do.
    b0 = static_cast<Byte>(value & 0xFF);
    value = (value - b0) / 256;
    b1 = static_cast<Byte>(value & 0xFF);
    value = (value - b1) / 256;
    b2 = static_cast<Byte>(value & 0xFF);
}

std::array<Byte, 3> lowestFirst24(std::int32_t value) {
    std::array<Byte, 3> bytes{};
    Split24(value, bytes[2], bytes[1], bytes[0]);
    return bytes;
}

std::vector<Byte> encodeFrame(Byte start, Byte address, const std::vector<Byte>& message,
                              Byte lrcAddress) {
    std::vector<Byte> wire;
    wire.reserve(message.size() * 2 + 6);
    wire.push_back(start);
    appendStuffed(wire, address);
    Byte lrc = lrcAddress;
    for (Byte b : message) {
        appendStuffed(wire, b);
        lrc ^= b;
    }
    appendStuffed(wire, lrc);
    wire.push_back(kEtx);
    return wire;
}

}  // namespace halvex
