#include "sim/motion.h"

#include <algorithm>
#include <cmath>

#include "sim/angles.h"

namespace halvex::sim {

namespace {

// Unit conversions of the speed and ramp settings into hundredths of a degree.
double topSpeed(Byte halfDegreesPerSecond) {
    return std::max<Byte>(halfDegreesPerSecond, 1) * 50.0;
}

AxisDynamics dynamicsOf(const AxisRates& rates) {
    AxisDynamics dynamics;
    dynamics.accel = std::max<Byte>(rates.ramp, 1) * 200.0;
    dynamics.decel = std::max<Byte>(rates.decel, 1) * 400.0;
    return dynamics;
}

double jogVelocity(Byte speed, bool positive, bool slow, Byte jogTop) {
    double velocity = speed / 255.0 * topSpeed(jogTop);
    if (slow) {
        velocity /= 4.0;
    }
    return positive ? velocity : -velocity;
}

std::int32_t rounded(double hundredths) {
    return static_cast<std::int32_t>(std::lround(hundredths));
}

int faultIndex(Fault fault) {
    return static_cast<int>(fault);
}

}  // namespace

std::int32_t Motion::mechanicalPan() const {
    return rounded(pan_.position());
}
std::int32_t Motion::mechanicalTilt() const {
    return rounded(tilt_.position());
}

std::int32_t Motion::reportedPan(const Settings& settings) const {
    return mechanicalPan() + settings.panOffset;
}

std::int32_t Motion::reportedTilt(const Settings& settings) const {
    return mechanicalTilt() + settings.tiltOffset;
}

void Motion::jog(const JogRequest& request, const Settings& settings) {
    if (vocab::isSet(request.flags, vocab::jog::kReset)) {
        resetFaults();
    }
    override_ = vocab::isSet(request.flags, vocab::jog::kSoftLimitOverride);
    latchArmedFaults(request.panSpeed != 0, request.tiltSpeed != 0);
    if (!pan_.hasTarget() || request.panSpeed != 0) {
        pan_.jog(panFaulted() ? 0.0
                              : jogVelocity(request.panSpeed,
                                            vocab::isSet(request.flags, vocab::jog::kPanCw),
                                            vocab::isSet(request.flags, vocab::jog::kPanLowSpeed),
                                            settings.panJogTop));
    }
    if (!tilt_.hasTarget() || request.tiltSpeed != 0) {
        tilt_.jog(tiltFaulted()
                      ? 0.0
                      : jogVelocity(request.tiltSpeed,
                                    vocab::isSet(request.flags, vocab::jog::kTiltUp),
                                    vocab::isSet(request.flags, vocab::jog::kTiltLowSpeed),
                                    settings.tiltJogTop));
    }
}

bool Motion::moveToReported(std::int32_t pan, std::int32_t tilt, const Settings& settings) {
    const bool holdPan = pan == kHoldAxis;
    const bool holdTilt = tilt == kHoldAxis;
    std::int32_t panTarget = holdPan ? mechanicalPan() : pan - settings.panOffset;
    const std::int32_t tiltTarget = holdTilt ? mechanicalTilt() : tilt - settings.tiltOffset;
    if (settings.continuousPan()) {
        panTarget = rounded(wrapPan(panTarget));
    } else if (panTarget < -kPanEnd || panTarget > kPanEnd) {
        return false;
    }
    if (tiltTarget < -kTiltEnd || tiltTarget > kTiltEnd) {
        return false;
    }
    latchArmedFaults(!holdPan, !holdTilt);
    if (!holdPan && !panFaulted()) {
        pan_.moveTo(panTarget, topSpeed(settings.panTop));
    }
    if (!holdTilt && !tiltFaulted()) {
        tilt_.moveTo(tiltTarget, topSpeed(settings.tiltTop));
    }
    return true;
}

void Motion::moveToMechanical(std::int32_t pan, std::int32_t tilt, const Settings& settings) {
    moveToReported(pan + settings.panOffset, tilt + settings.tiltOffset, settings);
}

void Motion::endMoves() {
    pan_.endMove();
    tilt_.endMove();
}

void Motion::stop() {
    pan_.jog(0.0);
    tilt_.jog(0.0);
}

void Motion::recentre() {
    pan_.placeAt(0.0);
    tilt_.placeAt(0.0);
    softStopped_.fill(false);
}

AxisTravel Motion::panTravel(const Settings& settings) const {
    AxisTravel travel{-kPanEnd, kPanEnd, settings.continuousPan()};
    if (!override_) {
        travel.max = std::min<double>(travel.max, settings.softLimits[kLimitCw]);
        travel.min = std::max<double>(travel.min, settings.softLimits[kLimitCcw]);
    }
    return travel;
}

AxisTravel Motion::tiltTravel(const Settings& settings) const {
    AxisTravel travel{-kTiltEnd, kTiltEnd, false};
    if (!override_) {
        travel.max = std::min<double>(travel.max, settings.softLimits[kLimitUp]);
        travel.min = std::max<double>(travel.min, settings.softLimits[kLimitDown]);
    }
    return travel;
}

void Motion::step(double seconds, const Settings& settings) {
    const auto softStop = [&](TravelStop stop, double position, int maxIndex, int minIndex) {
        if (stop == TravelStop::AtMax && position <= settings.softLimits[maxIndex] + 0.5) {
            softStopped_[maxIndex] = true;
        } else if (stop == TravelStop::AtMin && position >= settings.softLimits[minIndex] - 0.5) {
            softStopped_[minIndex] = true;
        }
    };
    const TravelStop panStop =
        pan_.step(seconds, dynamicsOf(settings.panRates), panTravel(settings));
    if (!settings.continuousPan()) {
        softStop(panStop, pan_.position(), kLimitCw, kLimitCcw);
    }
    const TravelStop tiltStop =
        tilt_.step(seconds, dynamicsOf(settings.tiltRates), tiltTravel(settings));
    softStop(tiltStop, tilt_.position(), kLimitUp, kLimitDown);
    clearLimitLatches(settings);
}

void Motion::clearLimitLatches(const Settings& settings) {
    // A soft-limit bit stays lit until its axis has moved back inside.
    const auto& limits = settings.softLimits;
    if (pan_.position() < limits[kLimitCw] - 0.5 || settings.continuousPan()) {
        softStopped_[kLimitCw] = false;
    }
    if (pan_.position() > limits[kLimitCcw] + 0.5 || settings.continuousPan()) {
        softStopped_[kLimitCcw] = false;
    }
    if (tilt_.position() < limits[kLimitUp] - 0.5) {
        softStopped_[kLimitUp] = false;
    }
    if (tilt_.position() > limits[kLimitDown] + 0.5) {
        softStopped_[kLimitDown] = false;
    }
}

void Motion::latchFault(Fault fault) {
    switch (fault) {
        case Fault::PanTimeout:
            panTimeout_ = true;
            break;
        case Fault::PanDirection:
            panDirection_ = true;
            break;
        case Fault::TiltTimeout:
            tiltTimeout_ = true;
            break;
        case Fault::TiltDirection:
            tiltDirection_ = true;
            break;
    }
    if (panFaulted()) {
        pan_.halt();
    }
    if (tiltFaulted()) {
        tilt_.halt();
    }
}

void Motion::armFault(Fault fault) {
    armed_[faultIndex(fault)] = true;
}

void Motion::latchArmedFaults(bool panDriven, bool tiltDriven) {
    for (Fault fault :
         {Fault::PanTimeout, Fault::TiltTimeout, Fault::PanDirection, Fault::TiltDirection}) {
        const bool panFault = fault == Fault::PanTimeout || fault == Fault::PanDirection;
        if (armed_[faultIndex(fault)] && (panFault ? panDriven : tiltDriven)) {
            latchFault(fault);
        }
    }
}

void Motion::resetFaults() {
    panTimeout_ = false;
    panDirection_ = false;
    tiltTimeout_ = false;
    tiltDirection_ = false;
}

Byte Motion::statusA(Byte variant, const Settings& settings) const {
    Byte status = variant & vocab::maskOf(vocab::report::kControllerType);
    const bool hasEnds = !settings.continuousPan();
    if (panDirection_) {
        status = vocab::withBit(status, vocab::report::kPanDirectionFault, true);
    }
    if (panTimeout_) {
        status = vocab::withBit(status, vocab::report::kPanTimeout, true);
    }
    if (hasEnds && pan_.position() <= -kPanEnd + 0.5) {
        status = vocab::withBit(status, vocab::report::kCcwHardLimit, true);
    }
    if (hasEnds && pan_.position() >= kPanEnd - 0.5) {
        status = vocab::withBit(status, vocab::report::kCwHardLimit, true);
    }
    if (softStopped_[kLimitCcw]) {
        status = vocab::withBit(status, vocab::report::kCcwSoftLimit, true);
    }
    if (softStopped_[kLimitCw]) {
        status = vocab::withBit(status, vocab::report::kCwSoftLimit, true);
    }
    return status;
}

Byte Motion::statusB() const {
    Byte status = 0;
    if (tiltDirection_) {
        status = vocab::withBit(status, vocab::report::kTiltDirectionFault, true);
    }
    if (tiltTimeout_) {
        status = vocab::withBit(status, vocab::report::kTiltTimeout, true);
    }
    if (tilt_.position() <= -kTiltEnd + 0.5) {
        status = vocab::withBit(status, vocab::report::kDownHardLimit, true);
    }
    if (tilt_.position() >= kTiltEnd - 0.5) {
        status = vocab::withBit(status, vocab::report::kUpHardLimit, true);
    }
    if (softStopped_[kLimitDown]) {
        status = vocab::withBit(status, vocab::report::kDownSoftLimit, true);
    }
    if (softStopped_[kLimitUp]) {
        status = vocab::withBit(status, vocab::report::kUpSoftLimit, true);
    }
    return status;
}

Byte Motion::statusC(const Settings& settings, bool tourRunning) const {
    Byte status = 0;
    if (tilt_.direction() < 0) {
        status = vocab::withBit(status, vocab::report::kMovingDown, true);
    }
    if (tilt_.direction() > 0) {
        status = vocab::withBit(status, vocab::report::kMovingUp, true);
    }
    if (pan_.direction() < 0) {
        status = vocab::withBit(status, vocab::report::kMovingCcw, true);
    }
    if (pan_.direction() > 0) {
        status = vocab::withBit(status, vocab::report::kMovingCw, true);
    }
    if (override_) {
        status = vocab::withBit(status, vocab::report::kSoftLimitOverridden, true);
    }
    if (tourRunning) {
        status = vocab::withBit(status, vocab::report::kTourExecuting, true);
    }
    if (settings.continuousPan()) {
        status = vocab::withBit(status, vocab::report::kContinuousPan, true);
    }
    return status;
}

}  // namespace halvex::sim
