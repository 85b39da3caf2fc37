#pragma once

#include <cstdint>
#include <vector>

namespace halvex {

// The far end of the in-process port: something that behaves like a unit on
// the line. The port hands it every byte the console writes, tells it the
// time, and collects whatever it has to say.
class UnitPeer {
  public:
    virtual ~UnitPeer() = default;
    virtual void receiveFromConsole(const std::uint8_t* data, std::size_t size) = 0;
    // Moves the peer's clock to nowMs (milliseconds since the port opened).
    virtual void advanceTo(std::int64_t nowMs) = 0;
    // Bytes the peer has sent since the last call.
    virtual std::vector<std::uint8_t> takeOutput() = 0;
};

}  // namespace halvex
