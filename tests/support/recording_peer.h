#pragma once

#include <functional>
#include <vector>

#include "protocol/frame.h"
#include "protocol/unit_peer.h"
#include "sim/frame_assembler.h"

namespace halvex::testing {

// Sits between the console's port and a unit and keeps every console frame
// that passes, unstuffed, so tests can compare what went down the line.
class RecordingPeer : public UnitPeer {
  public:
    struct Frame {
        Byte address = 0;
        std::vector<Byte> message;  // code and payload, without the LRC
    };

    // With a `timeScale` above 1 the unit's clock runs that many times as
    // fast as the console's: the platform and the lenses travel, dwell and
    // time out sooner, which spares tests the seconds a real move takes.
    explicit RecordingPeer(UnitPeer& unit, int timeScale = 1);

    void receiveFromConsole(const std::uint8_t* data, std::size_t size) override;
    void advanceTo(std::int64_t nowMs) override {
        if (!clockHeld_) {
            unit_.advanceTo(nowMs * timeScale_);
        }
    }
    std::vector<std::uint8_t> takeOutput() override;

    // When false, the unit hears nothing and so says nothing.
    void setConnected(bool connected) { connected_ = connected; }
    // While held, the unit's replies wait here and go out together once
    // released: a unit that is slow to answer one request.
    void holdReplies(bool hold) { holding_ = hold; }
    // While held, the unit's clock stands still: it answers, but a move
    // under way stays where it is.
    void holdClock(bool hold) { clockHeld_ = hold; }

    const std::vector<Frame>& frames() const { return frames_; }
    // The frames' messages, leaving out jog messages when asked.
    std::vector<std::vector<Byte>> messages(bool withJogs = true) const;
    void clear() { frames_.clear(); }

    // Called with each frame as it arrives, before the unit hears it.
    std::function<void(const Frame&)> onFrame;

  private:
    UnitPeer& unit_;
    int timeScale_;
    std::vector<Frame> frames_;
    sim::FrameAssembler assembler_;
    bool connected_ = true;
    bool holding_ = false;
    bool clockHeld_ = false;
    std::vector<std::uint8_t> held_;
};

}  // namespace halvex::testing
