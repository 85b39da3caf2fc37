#include "remote/session_rotator.h"

#include <algorithm>
#include <cmath>

#include "network/rotator_angles.h"
#include "protocol/fault_guard.h"

namespace halvex {

using network::RotatorResult;

namespace {
// The unit takes angles in hundredths of a degree.
double toHundredths(double angle) {
    return std::round(angle * 100.0) / 100.0;
}
}  // namespace

SessionRotator::SessionRotator(Session& session, std::function<QString()> lineName, QObject* parent)
    : QObject(parent), session_(session), lineName_(std::move(lineName)) {
    connect(&session_, &Session::positionReported, this, [this](float pan, float tilt) {
        const auto azimuth = network::panToAzimuth(static_cast<double>(pan));
        const auto elevation = network::tiltToElevation(static_cast<double>(tilt));
        if (azimuth && elevation) {
            position_ = network::AzEl{*azimuth, *elevation};
        }
    });
}

bool SessionRotator::isOnline() const {
    return session_.online();
}

std::optional<network::AzEl> SessionRotator::position() const {
    return position_;
}

RotatorResult SessionRotator::resultFor(Refusal refusal) {
    switch (refusal) {
        case Refusal::Offline:
            return RotatorResult::Offline;
        case Refusal::OutsideLimits:
            return RotatorResult::OutsideLimits;
        case Refusal::PagesLocked:
        case Refusal::OperatorJogging:
        case Refusal::UnitBusy:
            return RotatorResult::Refused;
    }
    return RotatorResult::Refused;
}

void SessionRotator::launchMove(QCoro::Task<Outcome> move) {
    launch(session_.state(), "NetworkControl_Move", completing(std::move(move)));
}

RotatorResult SessionRotator::setPosition(double azimuth, double elevation) {
    if (!session_.online()) {
        return RotatorResult::Offline;
    }
    const auto pan = network::azimuthToPan(azimuth);
    const auto tilt = network::elevationToTilt(elevation);
    if (!pan || !tilt) {
        return RotatorResult::OutsideLimits;
    }
    const PanTiltTarget target{toHundredths(*pan), toHundredths(*tilt)};
    if (const auto refusal = session_.refusalFor(Requester::Program, &target)) {
        return resultFor(*refusal);
    }
    launchMove(session_.moveTo(target));
    return RotatorResult::Ok;
}

RotatorResult SessionRotator::stop() {
    const Outcome outcome = session_.stop();
    return outcome.refusal() ? resultFor(*outcome.refusal()) : RotatorResult::Ok;
}

RotatorResult SessionRotator::park() {
    if (const auto refusal = session_.refusalFor(Requester::Program)) {
        return resultFor(*refusal);
    }
    launchMove(session_.moveHome());
    return RotatorResult::Ok;
}

std::string SessionRotator::info() const {
    return "Halvex pan & tilt unit on " + lineName_().toStdString();
}

network::RotatorLimits SessionRotator::limits() const {
    const UnitStatus& status = session_.status();
    network::RotatorLimits limits;
    limits.minAzimuth = 0.0;
    limits.maxAzimuth = 360.0;
    // Pan limits inside a half turn either side of north read as a rotator
    // that stops in the south: azimuth -170..170 is pan -170..170.
    if (!status.PanContinuous && status.PanMinLimit < status.PanMaxLimit &&
        status.PanMinLimit > -180.0f && status.PanMaxLimit < 180.0f) {
        limits.minAzimuth = static_cast<double>(status.PanMinLimit);
        limits.maxAzimuth = static_cast<double>(status.PanMaxLimit);
    }
    limits.minElevation = network::kLowestElevation;
    limits.maxElevation = network::kHighestElevation;
    if (status.TiltMinLimit < status.TiltMaxLimit) {
        limits.minElevation =
            std::max(static_cast<double>(status.TiltMinLimit), network::kLowestElevation);
        limits.maxElevation =
            std::min(static_cast<double>(status.TiltMaxLimit), network::kHighestElevation);
    }
    return limits;
}

}  // namespace halvex
