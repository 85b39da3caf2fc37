#pragma once

// Turns the byte stream from the console into whole frames: hunts for STX,
// removes the stuffing and stops at the raw ETX. Anything malformed is thrown
// away without ever growing without bound.

#include <cstddef>
#include <functional>
#include <vector>

#include "protocol/frame.h"

namespace halvex::sim {

struct ConsoleFrame {
    Byte address = 0;
    // Code byte first, then the payload; the LRC is not included.
    std::vector<Byte> message;
    bool lrcGood = false;
    // The frame as it came over the wire, STX to ETX, for logging.
    std::vector<Byte> wire;
};

class FrameAssembler {
  public:
    // Longest unstuffed frame accepted; the console never sends more than a
    // camera pass-through of 80 bytes plus its header.
    static constexpr std::size_t kMaxFieldBytes = 256;

    using Sink = std::function<void(const ConsoleFrame&)>;

    explicit FrameAssembler(Sink sink) : sink_(std::move(sink)) {}

    void feed(const Byte* data, std::size_t size);

  private:
    void feedByte(Byte value);
    void finishFrame();
    void reset();

    Sink sink_;
    bool inFrame_ = false;
    bool escaped_ = false;
    std::vector<Byte> fields_;
    std::vector<Byte> wire_;
};

}  // namespace halvex::sim
