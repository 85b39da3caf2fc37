#include "sim/axis.h"

#include <algorithm>
#include <cmath>

#include "sim/angles.h"

namespace halvex::sim {

namespace {
int signOf(double value) {
    return value > 0.0 ? 1 : (value < 0.0 ? -1 : 0);
}
}  // namespace

int Axis::direction() const {
    if (velocity_ != 0.0) {
        return signOf(velocity_);
    }
    return mode_ == Mode::Move ? signOf(target_ - position_) : signOf(jogVelocity_);
}

void Axis::placeAt(double position) {
    position_ = position;
    halt();
}

void Axis::jog(double velocity) {
    mode_ = Mode::Jog;
    jogVelocity_ = velocity;
}

void Axis::moveTo(double target, double speed) {
    mode_ = Mode::Move;
    target_ = target;
    moveSpeed_ = std::max(speed, 1.0);
}

void Axis::endMove() {
    if (mode_ == Mode::Move) {
        mode_ = Mode::Jog;
        jogVelocity_ = 0.0;
    }
}

void Axis::halt() {
    mode_ = Mode::Jog;
    jogVelocity_ = 0.0;
    velocity_ = 0.0;
}

double Axis::desiredVelocity(const AxisDynamics& dynamics) const {
    if (mode_ == Mode::Jog) {
        return jogVelocity_;
    }
    // The fastest speed from which the axis can still stop on the target.
    const double remaining = target_ - position_;
    const double braking = std::sqrt(2.0 * dynamics.decel * std::abs(remaining));
    return signOf(remaining) * std::min(moveSpeed_, braking);
}

TravelStop Axis::step(double seconds, const AxisDynamics& dynamics, const AxisTravel& travel) {
    const double desired = desiredVelocity(dynamics);
    const bool speedingUp =
        std::abs(desired) > std::abs(velocity_) && signOf(desired) * signOf(velocity_) >= 0;
    const double rate = (speedingUp ? dynamics.accel : dynamics.decel) * seconds;
    velocity_ += std::clamp(desired - velocity_, -rate, rate);

    const double before = position_;
    position_ += velocity_ * seconds;
    if (mode_ == Mode::Move) {
        // Arrived, or about to pass the target: settle on it.
        const bool passed = signOf(target_ - position_) != signOf(target_ - before);
        if (passed || std::abs(target_ - position_) < 0.01) {
            position_ = target_;
            halt();
        }
    }
    if (travel.wraps) {
        position_ = wrapPan(position_);
        return TravelStop::None;
    }
    // An axis already past an end (a limit set beyond it, or an override
    // just dropped) may move back inside but no further out.
    if (velocity_ > 0.0 && position_ > travel.max) {
        position_ = std::max(before, travel.max);
        halt();
        return TravelStop::AtMax;
    }
    if (velocity_ < 0.0 && position_ < travel.min) {
        position_ = std::min(before, travel.min);
        halt();
        return TravelStop::AtMin;
    }
    return TravelStop::None;
}

}  // namespace halvex::sim
