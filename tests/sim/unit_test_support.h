#pragma once

// Talks to a unit model the way the console does: builds command frames,
// reads the unit's reply frames back with its own decoder and steps time.

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

// Little-endian 24-bit angle bytes, as the console encodes them.
std::vector<Byte> angleBytes(std::int32_t value);
std::int32_t angleAt(const std::vector<Byte>& message, std::size_t first);

class UnitHarness {
  public:
    explicit UnitHarness(const UnitOptions& options = {}) : unit(options) {}

    // Sends one command frame and returns every frame that came back.
    std::vector<DecodedFrame> send(const std::vector<Byte>& message, Byte address = 0);
    // Sends a command and returns the message of its single ACK reply; fails
    // the test when there is not exactly one good reply.
    std::vector<Byte> exchange(const std::vector<Byte>& message, Byte address = 0);
    std::vector<Byte> jog(Byte flags = 0, Byte pan = 0, Byte tilt = 0,
                          std::vector<Byte> lens = {0, 0, 0, 0});
    // Moves the clock on, sending a jog message every 100 ms as the console
    // does when jogSender is set.
    void advance(std::int64_t ms, bool jogSender = false);

    Unit unit;
    std::int64_t now = 0;
    Byte id = 0;  // the address the replies' LRCs are checked against
};

}  // namespace halvex::sim::testing
