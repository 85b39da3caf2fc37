#include "window/console_rotator.h"

#include <QCheckBox>
#include <QSignalBlocker>
#include <QTimer>
#include <algorithm>
#include <cmath>

#include "network/rotator_angles.h"
#include "views/pages/pan_tilt_page.h"
#include "views/widgets/led_display.h"

namespace halvex {

using network::RotatorResult;

namespace {
// The unit takes angles in hundredths of a degree.
double toHundredths(double angle) {
    return std::round(angle * 100.0) / 100.0;
}

// Limits arrive as floats in hundredths; half a hundredth absorbs the float.
constexpr double kLimitSlack = 0.005;

bool within(double value, float lower, float upper) {
    return value >= static_cast<double>(lower) - kLimitSlack &&
           value <= static_cast<double>(upper) + kLimitSlack;
}
}  // namespace

ConsoleRotator::ConsoleRotator(ConsoleContext& context, PanTiltPage& page,
                               QAbstractButton* stopButton, std::function<int()> comPort,
                               QObject* parent)
    : QObject(parent),
      context_(context),
      page_(page),
      stopButton_(stopButton),
      comPort_(std::move(comPort)) {
    connect(&context_.events, &ConsoleEvents::currentPositionReported, this,
            [this](float pan, float tilt) {
                const auto azimuth = network::panToAzimuth(static_cast<double>(pan));
                const auto elevation = network::tiltToElevation(static_cast<double>(tilt));
                if (azimuth && elevation) {
                    position_ = network::AzEl{*azimuth, *elevation};
                }
            });
}

bool ConsoleRotator::isOnline() const {
    return context_.state.Online && context_.link.portOpen();
}

std::optional<network::AzEl> ConsoleRotator::position() const {
    return position_;
}

bool ConsoleRotator::withinLimits(double pan, double tilt) const {
    const UnitStatus& status = context_.status;
    // A unit that pans for ever has no pan limits.
    const bool panInside =
        status.PanContinuous || within(pan, status.PanMinLimit, status.PanMaxLimit);
    return panInside && within(tilt, status.TiltMinLimit, status.TiltMaxLimit);
}

RotatorResult ConsoleRotator::setPosition(double azimuth, double elevation) {
    if (!isOnline()) {
        return RotatorResult::Offline;
    }
    const auto pan = network::azimuthToPan(azimuth);
    const auto tilt = network::elevationToTilt(elevation);
    if (!pan || !tilt) {
        return RotatorResult::OutsideLimits;
    }
    const double panTarget = toHundredths(*pan);
    const double tiltTarget = toHundredths(*tilt);
    if (!withinLimits(panTarget, tiltTarget)) {
        return RotatorResult::OutsideLimits;
    }
    // Disabled while the pages are locked (an offset change is reloading
    // the limits): the operator could not click it either.
    if (!page_.AbsoBut->isEnabled() || operatorJogging()) {
        return RotatorResult::Refused;
    }
    QTimer::singleShot(0, this, [this, panTarget, tiltTarget] { moveTo(panTarget, tiltTarget); });
    return RotatorResult::Ok;
}

void ConsoleRotator::moveTo(double pan, double tilt) {
    page_.PanDesLED->setValue(pan);
    page_.TiltDesLED->setValue(tilt);
    QCheckBox* holds[] = {page_.HoldPanCheck, page_.HoldTiltCheck};
    bool held[] = {false, false};
    for (int i = 0; i < 2; ++i) {
        const QSignalBlocker quiet(holds[i]);
        held[i] = holds[i]->isChecked();
        holds[i]->setChecked(false);
    }
    // The click sends the frame and waits for its tick in a nested loop.
    page_.AbsoBut->click();
    for (int i = 0; i < 2; ++i) {
        const QSignalBlocker quiet(holds[i]);
        holds[i]->setChecked(held[i]);
    }
}

RotatorResult ConsoleRotator::stop() {
    if (!isOnline()) {
        return RotatorResult::Offline;
    }
    // Sets the stop bit for the next jog frame; sends nothing itself.
    stopButton_->click();
    return RotatorResult::Ok;
}

RotatorResult ConsoleRotator::park() {
    if (!isOnline()) {
        return RotatorResult::Offline;
    }
    if (!page_.HomeBut->isEnabled() || operatorJogging()) {
        return RotatorResult::Refused;
    }
    QTimer::singleShot(0, page_.HomeBut, &QAbstractButton::click);
    return RotatorResult::Ok;
}

std::string ConsoleRotator::info() const {
    return "Halvex pan & tilt unit on COM" + std::to_string(comPort_());
}

network::RotatorLimits ConsoleRotator::limits() const {
    const UnitStatus& status = context_.status;
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
