#pragma once

// Talks to a unit model the way the console does: builds command frames,
// reads the unit's reply frames back and steps time.

#include <cstdint>
#include <vector>

#include "protocol/frame.h"
#include "sim/unit.h"

namespace halvex::sim::testing {

struct DecodedFrame {
    Byte start = 0;
    Byte address = 0;
    std::vector<Byte> message;  // code and payload, no LRC
    bool lrcGood = false;
};

// Splits a byte stream into unit frames (ACK or NAK to ETX), unstuffed.
std::vector<DecodedFrame> decodeFrames(const std::vector<Byte>& wire);
// A little-endian 24-bit angle starting at message[first].
std::int32_t angleAt(const std::vector<Byte>& message, std::size_t first);

class UnitHarness {
  public:
    explicit UnitHarness(const UnitOptions& options = {}) : unit(options) {}

    // Sends one command frame and returns every frame that came back.
    std::vector<DecodedFrame> send(const std::vector<Byte>& message, Byte address = 0);
    // The message of the single good ACK reply; fails the test otherwise.
    std::vector<Byte> exchange(const std::vector<Byte>& message, Byte address = 0);
    std::vector<Byte> jog(Byte flags = 0, Byte pan = 0, Byte tilt = 0, Byte zoom1 = 0) {
        return exchange({0x31, flags, pan, tilt, zoom1, 0, 0, 0});
    }
    // Moves the clock on in 100 ms steps, jogging at speed 0 after each when
    // asked, as the console does.
    void advance(std::int64_t ms, bool jogSender = false);

    Unit unit;
    std::int64_t now = 0;
    Byte id = 0;  // the address the replies' LRCs are checked against
};

}  // namespace halvex::sim::testing
