#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <optional>

#include "commissioning/unit_line.h"
#include "protocol/vocabulary.h"

namespace halvex::commissioning {

// What a jog or move reply says of the platform: position (or target),
// status byte C and the four lens positions.
struct PositionReading {
    std::int32_t pan = 0;
    std::int32_t tilt = 0;
    Byte statusC = 0;
    std::array<Byte, 4> lens{};

    // An axis is moving: a moving bit of status byte C.
    bool moving() const { return (statusC & vocab::maskOf(vocab::report::kMoving)) != 0; }
    bool operator==(const PositionReading&) const = default;
};

std::optional<PositionReading> readingOf(const std::vector<Byte>& reply);

// Moves the platform and the lenses for the settings a unit takes only where
// they stand (the soft limits, a preset's lens positions), following the
// position reports to the end of each move. Moves run with the soft limits
// overridden; finish() turns the override off and stops anything still
// moving, and its owner co_awaits it however the moves ended (a fault's way
// too): a destructor cannot wait for the unit.
class PlatformMover {
  public:
    // How long reports may stay the same, with no axis moving, before a move
    // counts as ended short of its target. A time, not a count of reports: a
    // slow lens changes its reading only every few reports, and the report
    // has no bit for a moving lens.
    static constexpr int kStillMs = 2000;
    // The still time in force: shorter for a unit whose clock runs fast.
    static inline int stillMs = kStillMs;
    // Longest wait for one move.
    static constexpr int kLongestMoveMs = 180000;
    // The value that leaves an axis where it is.
    static constexpr std::int32_t kHold = vocab::absolute_move::kHoldAxis;

    // `line` outlives the mover, and the mover every move it makes.
    PlatformMover(UnitLine& line, Progress progress);
    PlatformMover(const PlatformMover&) = delete;
    PlatformMover& operator=(const PlatformMover&) = delete;

    // To reported angles (kHold leaves an axis alone); true once there.
    QCoro::Task<bool> moveTo(std::int32_t pan, std::int32_t tilt);
    // The lenses to these positions; true once all four are there.
    QCoro::Task<bool> moveLensesTo(std::array<Byte, 4> lens);
    // Back to where the platform and lenses stood before the first move, as
    // far as they go: a move that ends short is not a fault of the restore.
    QCoro::Task<> returnToStart();
    // Stops what still moves and turns the override off with the mover's
    // last jog message; nothing when it never moved anything.
    QCoro::Task<> finish();

  private:
    QCoro::Task<bool> begin();
    QCoro::Task<std::optional<PositionReading>> poll();
    // Polls until `arrived`, the unit stops short, the operator cancels or
    // time runs out.
    QCoro::Task<bool> follow(std::function<bool(const PositionReading&)> arrived);
    QCoro::Task<> stop();

    UnitLine& line_;
    const Progress progress_;
    std::optional<PositionReading> start_;
    bool platformMoved_ = false;
    bool lensesMoved_ = false;
    bool moving_ = false;
};

}  // namespace halvex::commissioning
