#pragma once

#include <functional>
#include <optional>
#include <vector>

#include "protocol/frame.h"
#include "protocol/unit_peer.h"
#include "sim/frame_assembler.h"

namespace halvex::testing {

// A stand-in unit for link tests: records every byte and every whole frame
// the console sends, and answers each frame with whatever the script says.
class ScriptedUnit : public UnitPeer {
  public:
    struct Frame {
        Byte address = 0;
        std::vector<Byte> message;  // code and payload, unstuffed
        std::vector<Byte> wire;     // as it came down the line
        std::int64_t atMs = 0;
    };
    // Returns the reply message (code + payload) or nothing for silence.
    using Script = std::function<std::optional<std::vector<Byte>>(const Frame&)>;

    explicit ScriptedUnit(Byte id = 0);

    void setScript(Script script) { script_ = std::move(script); }
    // Answers every frame with a reply of the same code and `payload`.
    void answerEverything(std::vector<Byte> payload);

    void receiveFromConsole(const std::uint8_t* data, std::size_t size) override;
    void advanceTo(std::int64_t nowMs) override { nowMs_ = nowMs; }
    std::vector<std::uint8_t> takeOutput() override;

    const std::vector<Frame>& frames() const { return frames_; }
    const std::vector<Byte>& wire() const { return wire_; }
    void clear();

    // A unit reply as the wire carries it.
    static std::vector<Byte> replyWire(Byte id, const std::vector<Byte>& message);

  private:
    void answer(const sim::ConsoleFrame& frame);

    Byte id_;
    Script script_;
    std::vector<Frame> frames_;
    std::vector<Byte> wire_;
    sim::FrameAssembler assembler_;
    std::vector<Byte> output_;
    std::int64_t nowMs_ = 0;
};

}  // namespace halvex::testing
