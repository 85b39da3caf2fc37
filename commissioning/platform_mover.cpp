#include "commissioning/platform_mover.h"

#include <QElapsedTimer>

#include "protocol/vocabulary.h"

namespace halvex::commissioning {

namespace {

namespace report = vocab::report;

bool fitsReport(const std::vector<Byte>& reply) {
    return reply.size() >= static_cast<std::size_t>(vocab::PositionReport::kLength);
}

template <class Bytes, class M>
void putAngle(Bytes& message, vocab::Field<M> field, std::int32_t value) {
    vocab::put(message, field, static_cast<std::uint32_t>(value));
}

}  // namespace

std::optional<PositionReading> readingOf(const std::vector<Byte>& reply) {
    if (!fitsReport(reply)) {
        return std::nullopt;
    }
    PositionReading reading;
    reading.pan = vocab::getSigned(reply, report::kPan);
    reading.tilt = vocab::getSigned(reply, report::kTilt);
    reading.statusC = static_cast<Byte>(vocab::get(reply, report::kStatusC));
    for (std::size_t i = 0; i < reading.lens.size(); ++i) {
        reading.lens[i] = static_cast<Byte>(vocab::get(reply, report::kLens[i]));
    }
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
    auto message = vocab::blank<vocab::AbsoluteMove>();
    putAngle(message, vocab::absolute_move::kPan, pan);
    putAngle(message, vocab::absolute_move::kTilt, tilt);
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
    namespace move = vocab::absolute_move_with_lenses;
    auto message = vocab::blank<vocab::AbsoluteMoveWithLenses>();
    putAngle(message, move::kPan, kHold);
    putAngle(message, move::kTilt, kHold);
    for (std::size_t i = 0; i < lens.size(); ++i) {
        vocab::put(message, move::kLens[i], lens[i]);
    }
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
