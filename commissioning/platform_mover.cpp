#include "commissioning/platform_mover.h"

#include <QElapsedTimer>

namespace halvex::commissioning {

namespace {

constexpr std::size_t kReportBytes = 13;
constexpr Byte kAbsoluteMove = 0x33;
constexpr Byte kMoveWithLenses = 0x3A;

void putAngle(std::vector<Byte>& message, std::int32_t value) {
    Byte b2 = 0;
    Byte b1 = 0;
    Byte b0 = 0;
    Split24(value, b2, b1, b0);
    message.insert(message.end(), {b0, b1, b2});
}

bool fitsReport(const std::vector<Byte>& reply) {
    return reply.size() > kReportBytes;
}

}  // namespace

std::optional<PositionReading> readingOf(const std::vector<Byte>& reply) {
    if (!fitsReport(reply)) {
        return std::nullopt;
    }
    PositionReading reading;
    reading.pan = Build24(reply[3], reply[2], reply[1]);
    reading.tilt = Build24(reply[6], reply[5], reply[4]);
    reading.statusC = reply[9];
    reading.lens = {reply[10], reply[11], reply[12], reply[13]};
    return reading;
}

PlatformMover::PlatformMover(UnitLine& line, const Progress& progress)
    : line_(line), progress_(progress) {}

PlatformMover::~PlatformMover() {
    if (!start_ || !line_.portOpen()) {
        return;
    }
    if (moving_) {
        stop();
    }
    // The override goes with the last jog message of the mover.
    line_.ask(line_.jogMessage(false), fitsReport);
}

std::optional<PositionReading> PlatformMover::poll() {
    const auto reply = line_.ask(line_.jogMessage(true), fitsReport);
    return reply ? readingOf(*reply) : std::nullopt;
}

bool PlatformMover::begin() {
    if (!start_) {
        // This jog message also turns the override on for the moves.
        start_ = poll();
    }
    return start_.has_value();
}

void PlatformMover::stop() {
    line_.ask(line_.jogMessage(true, true), fitsReport);
    moving_ = false;
}

template <typename Arrived>
bool PlatformMover::follow(Arrived arrived) {
    QElapsedTimer elapsed;
    elapsed.start();
    QElapsedTimer still;
    still.start();
    std::optional<PositionReading> previous;
    while (true) {
        if (progress_.stopped() || elapsed.elapsed() > kLongestMoveMs) {
            stop();
            return false;
        }
        const auto reading = poll();
        if (!reading) {
            return false;  // the unit is gone: nobody to stop
        }
        if (arrived(*reading)) {
            moving_ = false;
            return true;
        }
        if (previous != reading || reading->moving()) {
            still.restart();
        } else if (still.elapsed() > kStillMs) {
            moving_ = false;
            return false;
        }
        previous = reading;
    }
}

bool PlatformMover::moveTo(std::int32_t pan, std::int32_t tilt) {
    if (!begin()) {
        return false;
    }
    std::vector<Byte> message{kAbsoluteMove};
    putAngle(message, pan);
    putAngle(message, tilt);
    const auto reply = line_.ask(message, fitsReport);
    const auto target = reply ? readingOf(*reply) : std::nullopt;
    // A target outside the unit's range is refused: the reply then names the
    // current position instead.
    if (!target || (pan != kHold && target->pan != pan) ||
        (tilt != kHold && target->tilt != tilt)) {
        return false;
    }
    platformMoved_ = true;
    moving_ = true;
    return follow([&](const PositionReading& reading) {
        return !reading.moving() && (pan == kHold || reading.pan == pan) &&
               (tilt == kHold || reading.tilt == tilt);
    });
}

bool PlatformMover::moveLensesTo(const std::array<Byte, 4>& lens) {
    if (!begin()) {
        return false;
    }
    std::vector<Byte> message{kMoveWithLenses};
    putAngle(message, kHold);
    putAngle(message, kHold);
    message.insert(message.end(), lens.begin(), lens.end());
    if (!line_.ask(message, fitsReport)) {
        return false;
    }
    lensesMoved_ = true;
    moving_ = true;
    return follow([&](const PositionReading& reading) { return reading.lens == lens; });
}

bool PlatformMover::returnToStart() {
    if (!start_) {
        return true;
    }
    const bool platform = !platformMoved_ || moveTo(start_->pan, start_->tilt);
    const bool lenses = !lensesMoved_ || moveLensesTo(start_->lens);
    return platform && lenses;
}

}  // namespace halvex::commissioning
