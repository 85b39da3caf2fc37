#pragma once

// The virtual unit: bytes from the console in, reply frames out, driven by a
// clock it is given. No threads and no timers of its own.

#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

#include "protocol/unit_peer.h"
#include "sim/frame_assembler.h"
#include "sim/state_file.h"
#include "sim/unit_options.h"
#include "sim/unit_state.h"

namespace halvex::sim {

enum class FrameDirection { In, Out };

class Unit : public UnitPeer {
  public:
    // Step of the motion model while something moves.
    static constexpr std::int64_t kStepMs = 10;

    explicit Unit(const UnitOptions& options = {});

    void receiveFromConsole(const std::uint8_t* data, std::size_t size) override;
    void advanceTo(std::int64_t nowMs) override;
    std::vector<std::uint8_t> takeOutput() override;

    // The same output, one wire frame per element.
    std::vector<std::vector<Byte>> takeFrames();

    // When the unit next needs its clock moved on, or nothing while it is at
    // rest and waits only for the console.
    std::optional<std::int64_t> nextWakeMs() const;

    // Called with every frame that arrives (as received) and leaves.
    using FrameLog = std::function<void(FrameDirection, const std::vector<Byte>&)>;
    void setFrameLog(FrameLog log) { log_ = std::move(log); }

    // Frames the unit has answered since it was built.
    std::uint64_t framesAnswered() const { return answered_; }

    UnitState& state() { return state_; }
    const UnitState& state() const { return state_; }

  private:
    void handleFrame(const ConsoleFrame& frame);
    void dispatch(const ConsoleFrame& frame);
    void send(Byte start, const std::vector<Byte>& message);
    void sendNak(Byte code);
    bool active() const;
    void runEvents();
    StoredState stored() const;
    void saveIfChanged(const StoredState& before);

    UnitState state_;
    FrameAssembler assembler_;
    std::vector<std::vector<Byte>> output_;
    FrameLog log_;
    std::uint64_t answered_ = 0;
};

}  // namespace halvex::sim
