#include "sim/lenses.h"

#include <algorithm>
#include <cmath>

#include "protocol/vocabulary_camera.h"
#include "protocol/vocabulary_lens_jog.h"
#include "protocol/vocabulary_lenses.h"

namespace halvex::sim {

namespace {
// The unit's lenses run from 1, one short of the byte's lowest position,
// to its highest.
constexpr double kLensMin = 1.0;
constexpr double kLensMax = vocab::lenses::kHighest;
constexpr double kMoveRate = 100.0;  // units per second towards a target

using vocab::lenses::cameraOf;
using vocab::lenses::isZoom;
}  // namespace

Byte LensMotor::position() const {
    return static_cast<Byte>(std::lround(position_));
}

void LensMotor::jog(double unitsPerSecond) {
    hasTarget_ = false;
    rate_ = unitsPerSecond;
}

void LensMotor::moveTo(Byte target) {
    target_ = std::clamp<double>(target, kLensMin, kLensMax);
    hasTarget_ = true;
    rate_ = 0.0;
}

void LensMotor::endMove() {
    hasTarget_ = false;
}

void LensMotor::step(double seconds) {
    if (hasTarget_) {
        const double remaining = target_ - position_;
        const double reach = kMoveRate * seconds;
        if (std::abs(remaining) <= reach) {
            position_ = target_;
            hasTarget_ = false;
        } else {
            position_ += remaining > 0 ? reach : -reach;
        }
        return;
    }
    if (rate_ == 0.0) {
        return;
    }
    position_ += rate_ * seconds;
    // A lens at its end stops there.
    if (position_ >= kLensMax || position_ <= kLensMin) {
        position_ = std::clamp(position_, kLensMin, kLensMax);
        rate_ = 0.0;
    }
}

bool Lenses::moving() const {
    return std::any_of(motors_.begin(), motors_.end(), [](const auto& m) { return m.moving(); });
}

bool Lenses::hasTargets() const {
    return std::any_of(motors_.begin(), motors_.end(), [](const auto& m) { return m.hasTarget(); });
}

bool Lenses::enabled(int motor, const Settings& settings) {
    const Byte config = settings.lensConfig[cameraOf(motor)];
    // Both cameras' flags bytes share one layout.
    using Lens = vocab::lens_configuration::Lens1;
    return isZoom(motor) ? vocab::isSet(config, Lens::kZoomEnable)
                         : vocab::isSet(config, Lens::kFocusEnable);
}

bool Lenses::reversed(int motor, const Settings& settings) {
    const Byte config = settings.lensConfig[cameraOf(motor)];
    using Lens = vocab::lens_configuration::Lens1;
    return isZoom(motor) ? vocab::isSet(config, Lens::kZoomReverse)
                         : vocab::isSet(config, Lens::kFocusReverse);
}

void Lenses::jog(const std::array<Byte, kCount>& jogBytes, const Settings& settings) {
    for (int motor = 0; motor < kCount; ++motor) {
        const Byte jogByte = jogBytes[motor];
        const int magnitude = vocab::lens_jog::speedOf(jogByte);
        LensMotor& lens = motors_[motor];
        if (magnitude == 0) {
            if (!lens.hasTarget()) {
                lens.jog(0.0);
            }
            continue;
        }
        if (!enabled(motor, settings)) {
            lens.jog(0.0);
            continue;
        }
        const Byte minimum = isZoom(motor) ? settings.zoomMinSpeed[cameraOf(motor)]
                                           : settings.focusMinSpeed[cameraOf(motor)];
        const double rate = std::max(magnitude, static_cast<int>(minimum) / 2);
        const bool positive = vocab::lens_jog::isPositive(jogByte) != reversed(motor, settings);
        lens.jog(positive ? rate : -rate);
    }
}

void Lenses::moveTo(const std::array<Byte, kCount>& targets, const Settings& settings) {
    for (int motor = 0; motor < kCount; ++motor) {
        if (enabled(motor, settings)) {
            motors_[motor].moveTo(targets[motor]);
        }
    }
}

void Lenses::endMoves() {
    for (auto& motor : motors_) {
        motor.endMove();
    }
}

void Lenses::stop() {
    for (auto& motor : motors_) {
        motor.jog(0.0);
    }
}

void Lenses::step(double seconds) {
    for (auto& motor : motors_) {
        motor.step(seconds);
    }
}

}  // namespace halvex::sim
