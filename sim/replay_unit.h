#pragma once

// A unit that answers as a recorded one did: each frame from the console
// gets the reply that followed a frame of the same code in the recording,
// in the recorded order, so a field session can be reproduced at a desk.
// When the recorded replies of a code are used up, the last one answers
// again (the unit as it was last seen). Frames whose code the recording
// never answered, or with a bad LRC, get nothing. No Qt.

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "protocol/line_record.h"
#include "protocol/unit_peer.h"
#include "sim/frame_assembler.h"

namespace halvex::sim {

class ReplayUnit : public UnitPeer {
  public:
    explicit ReplayUnit(const std::vector<recording::LineRecord>& records);

    void receiveFromConsole(const std::uint8_t* data, std::size_t size) override;
    void advanceTo(std::int64_t) override {}
    std::vector<std::uint8_t> takeOutput() override;

    // Codes that have at least one recorded reply.
    std::size_t codesAnswered() const;
    // Replies recorded, silences included, over all codes.
    std::size_t repliesRecorded() const;

  private:
    struct Replies {
        // As they crossed the line; an empty one is a frame that got none.
        std::vector<std::vector<Byte>> wires;
        std::size_t next = 0;
    };
    void answer(const ConsoleFrame& frame);

    std::map<Byte, Replies> replies_;
    FrameAssembler assembler_;
    std::vector<Byte> output_;
};

// Reads the records of a recording file. Returns an error sentence when the
// file cannot be read or holds no frames; `warning` tells of a fault after
// which the records before it are still used.
std::string readRecordingFile(const std::string& path, std::vector<recording::LineRecord>& records,
                              std::string& warning);

}  // namespace halvex::sim
