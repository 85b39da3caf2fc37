#include "sim/line_faults.h"

namespace halvex::sim {

namespace {
constexpr int kMaxNoiseBytes = 8;
// Bytes of noise, not of a message: one that never needs stuffing, and the
// bits flipped in a check byte.
constexpr Byte kPlainByte = 0x55;  // not the unit's protocol
constexpr Byte kLowBit = 0x01;
constexpr Byte kTopBit = 0x80;  // not the unit's protocol
}  // namespace

bool LineFaults::chance(double probability) {
    if (probability <= 0.0) {
        return false;
    }
    return std::uniform_real_distribution<double>(0.0, 1.0)(random_) < probability;
}

void LineFaults::appendNoise(std::vector<Byte>& wire) {
    // Never a framing byte: noise is what a receiver skips while it hunts
    // for the start of the next frame, not a frame of its own.
    const int count = 1 + static_cast<int>(random_() % kMaxNoiseBytes);
    for (int i = 0; i < count; ++i) {
        Byte value = static_cast<Byte>(random_());
        if (needsStuffing(value)) {
            value = kPlainByte;
        }
        wire.push_back(value);
    }
}

std::vector<Byte> LineFaults::apply(const std::vector<std::vector<Byte>>& frames) {
    std::vector<Byte> wire;
    for (const auto& frame : frames) {
        if (options_.silentAfter && sent_ >= *options_.silentAfter) {
            continue;
        }
        ++sent_;
        if (chance(options_.drop)) {
            continue;
        }
        if (chance(options_.noise)) {
            appendNoise(wire);
        }
        std::vector<Byte> out = frame;
        if (chance(options_.corrupt)) {
            corruptLrc(out);
        }
        wire.insert(wire.end(), out.begin(), out.end());
    }
    return wire;
}

std::vector<Byte> LineFaults::chatter(Byte unitId) {
    constexpr int kMostPayload = 16;
    constexpr unsigned kOneIn = 5;
    std::vector<Byte> message(1 + random_() % (kMostPayload + 1));
    for (Byte& value : message) {
        value = static_cast<Byte>(random_());
    }
    std::vector<Byte> wire = encodeFrame(kAck, unitId, message, unitId);
    if (random_() % kOneIn == 0) {
        // Cut anywhere after the start byte and before the end byte.
        wire.resize(1 + random_() % (wire.size() - 1));
    }
    return wire;
}

void corruptLrc(std::vector<Byte>& frame) {
    // The LRC is the field before ETX: one raw byte, or ESC and its value.
    if (frame.size() < 4) {
        return;
    }
    const std::size_t last = frame.size() - 2;
    if (frame[last - 1] == kEsc) {
        // Any plain byte differs from the five escaped values.
        frame.erase(frame.begin() + static_cast<std::ptrdiff_t>(last - 1));
        frame[last - 1] = kPlainByte;
        return;
    }
    Byte changed = static_cast<Byte>(frame[last] ^ kLowBit);
    if (needsStuffing(changed)) {
        changed = static_cast<Byte>(frame[last] ^ kTopBit);
    }
    frame[last] = changed;
}

}  // namespace halvex::sim
