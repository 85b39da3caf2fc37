#include "views/widgets/pan_gauge.h"

#include <algorithm>
#include <cmath>

#include "views/widgets/widget_accessibility.h"

namespace halvex {

namespace {

constexpr double kStartAngle = 225.0;  // the minimum, lower left
constexpr double kSweep = 270.0;       // clockwise to the maximum, lower right

bool sameNumber(double a, double b) {
    return a == b || (std::isnan(a) && std::isnan(b));
}

}  // namespace

PanGauge::PanGauge(QWidget* parent) : QWidget(parent) {
    QSizePolicy policy(QSizePolicy::Preferred, QSizePolicy::Preferred);
    policy.setHeightForWidth(true);
    setSizePolicy(policy);
}

double PanGauge::needleValue() const {
    if (std::isnan(value_)) {
        return minimum_;
    }
    const double low = std::min(minimum_, maximum_);
    const double high = std::max(minimum_, maximum_);
    return std::clamp(value_, low, high);
}

double PanGauge::angleFor(double scaleValue) const {
    const double span = maximum_ - minimum_;
    // A scale with no usable width puts everything at its start.
    if (!std::isfinite(span) || span == 0.0) {
        return kStartAngle;
    }
    const double fraction = std::clamp((scaleValue - minimum_) / span, 0.0, 1.0);
    return kStartAngle - kSweep * (std::isnan(fraction) ? 0.0 : fraction);
}

void PanGauge::setMinimum(double minimum) {
    if (sameNumber(minimum, minimum_)) {
        return;
    }
    minimum_ = minimum;
    update();
    emit minimumChanged(minimum_);
}

void PanGauge::setMaximum(double maximum) {
    if (sameNumber(maximum, maximum_)) {
        return;
    }
    maximum_ = maximum;
    update();
    emit maximumChanged(maximum_);
}

void PanGauge::setRange(double minimum, double maximum) {
    setMinimum(minimum);
    setMaximum(maximum);
}

void PanGauge::setValue(double value) {
    const bool changed = !sameNumber(value, value_);
    value_ = value;  // stored even when equal, so that -0.0 is held as given
    if (changed) {
        update();
        emit valueChanged(value_);
        announceValueChange(this);
    }
}

void PanGauge::setRangeMarks(int pair, double first, double second) {
    if (pair < 0 || pair >= kRangeMarkPairs) {
        return;
    }
    if (second < first) {
        second = first + kMinRangeMarkGap;
    }
    rangeMarks_[static_cast<std::size_t>(pair)] = {true, first, second};
    update();
    emit rangeMarksChanged(pair);
}

void PanGauge::clearRangeMarks(int pair) {
    if (pair < 0 || pair >= kRangeMarkPairs) {
        return;
    }
    rangeMarks_[static_cast<std::size_t>(pair)] = {};
    update();
    emit rangeMarksChanged(pair);
}

PanGauge::RangeMarks PanGauge::rangeMarks(int pair) const {
    if (pair < 0 || pair >= kRangeMarkPairs) {
        return {};
    }
    return rangeMarks_[static_cast<std::size_t>(pair)];
}

}  // namespace halvex
