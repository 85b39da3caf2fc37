#include "tests/support/recording_peer.h"

#include <utility>

namespace halvex::testing {

RecordingPeer::RecordingPeer(UnitPeer& unit, int timeScale)
    : unit_(unit), timeScale_(timeScale), assembler_([this](const sim::ConsoleFrame& frame) {
          frames_.push_back(Frame{frame.address, frame.message});
          if (onFrame) {
              onFrame(frames_.back());
          }
      }) {}

void RecordingPeer::receiveFromConsole(const std::uint8_t* data, std::size_t size) {
    assembler_.feed(data, size);
    if (connected_) {
        unit_.receiveFromConsole(data, size);
    }
}

std::vector<std::uint8_t> RecordingPeer::takeOutput() {
    auto out = unit_.takeOutput();
    if (!connected_) {
        out.clear();
    }
    held_.insert(held_.end(), out.begin(), out.end());
    if (holding_) {
        return {};
    }
    return std::exchange(held_, {});
}

std::vector<std::vector<Byte>> RecordingPeer::messages(bool withJogs) const {
    std::vector<std::vector<Byte>> out;
    for (const Frame& frame : frames_) {
        if (withJogs || frame.message.empty() || frame.message.front() != 0x31) {
            out.push_back(frame.message);
        }
    }
    return out;
}

}  // namespace halvex::testing
