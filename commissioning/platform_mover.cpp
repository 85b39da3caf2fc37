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

PlatformMover::PlatformMover(UnitLine& line, Progress progress)
    : line_(line), progress_(std::move(progress)) {}

QCoro::Task<> PlatformMover::finish() {
    if (!start_ || !line_.portOpen()) {
        co_return;
    }
    if (moving_) {
        co_await stop();
    }
    // The override goes with the last jog message of the mover.
    co_await line_.ask(line_.jogMessage(false), fitsReport);
}

QCoro::Task<std::optional<PositionReading>> PlatformMover::poll() {
    const auto reply = co_await line_.ask(line_.jogMessage(true), fitsReport);
    co_return reply ? readingOf(*reply) : std::nullopt;
}

QCoro::Task<bool> PlatformMover::begin() {
    if (!start_) {
        // This jog message also turns the override on for the moves.
        start_ = co_await poll();
    }
    co_return start_.has_value();
}

QCoro::Task<> PlatformMover::stop() {
    co_await line_.ask(line_.jogMessage(true, true), fitsReport);
    moving_ = false;
}

QCoro::Task<bool> PlatformMover::follow(std::function<bool(const PositionReading&)> arrived) {
    QElapsedTimer elapsed;
    elapsed.start();
    QElapsedTimer still;
    still.start();
    std::optional<PositionReading> previous;
    while (true) {
        if (progress_.stopped() || elapsed.elapsed() > kLongestMoveMs) {
            co_await stop();
            co_return false;
        }
        const auto reading = co_await poll();
        if (!reading) {
            co_return false;  // the unit is gone: nobody to stop
        }
        if (arrived(*reading)) {
            moving_ = false;
            co_return true;
        }
        if (previous != reading || reading->moving()) {
            still.restart();
        } else if (still.elapsed() > stillMs) {
            moving_ = false;
            co_return false;
        }
        previous = reading;
    }
}

QCoro::Task<bool> PlatformMover::moveTo(std::int32_t pan, std::int32_t tilt) {
    const bool began = co_await begin();
    if (!began) {
        co_return false;
    }
    auto message = vocab::blank<vocab::AbsoluteMove>();
    putAngle(message, vocab::absolute_move::kPan, pan);
    putAngle(message, vocab::absolute_move::kTilt, tilt);
    const auto reply = co_await line_.ask(message, fitsReport);
    const auto target = reply ? readingOf(*reply) : std::nullopt;
    // A target outside the unit's range is refused: the reply then names the
    // current position instead.
    if (!target || (pan != kHold && target->pan != pan) ||
        (tilt != kHold && target->tilt != tilt)) {
        co_return false;
    }
    platformMoved_ = true;
    moving_ = true;
    // Named: it captures by value (protocol/wait.h says why).
    const auto there = [pan, tilt](const PositionReading& reading) {
        return !reading.moving() && (pan == kHold || reading.pan == pan) &&
               (tilt == kHold || reading.tilt == tilt);
    };
    co_return co_await follow(there);
}

QCoro::Task<bool> PlatformMover::moveLensesTo(std::array<Byte, 4> lens) {
    const bool began = co_await begin();
    if (!began) {
        co_return false;
    }
    namespace move = vocab::absolute_move_with_lenses;
    auto message = vocab::blank<vocab::AbsoluteMoveWithLenses>();
    putAngle(message, move::kPan, kHold);
    putAngle(message, move::kTilt, kHold);
    for (std::size_t i = 0; i < lens.size(); ++i) {
        vocab::put(message, move::kLens[i], lens[i]);
    }
    const auto accepted = co_await line_.ask(message, fitsReport);
    if (!accepted) {
        co_return false;
    }
    lensesMoved_ = true;
    moving_ = true;
    const auto there = [lens](const PositionReading& reading) { return reading.lens == lens; };
    co_return co_await follow(there);
}

QCoro::Task<> PlatformMover::returnToStart() {
    if (!start_) {
        co_return;
    }
    // Both go back, whether or not the platform got there.
    if (platformMoved_) {
        co_await moveTo(start_->pan, start_->tilt);
    }
    if (lensesMoved_) {
        co_await moveLensesTo(start_->lens);
    }
}

}  // namespace halvex::commissioning
