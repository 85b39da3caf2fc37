#include "views/widgets/motion_trail.h"

#include <algorithm>

namespace halvex {

void MotionTrail::add(qint64 nowMs, PlotAngles at) {
    if (!points_.empty() && points_.back().at == at) {
        return;
    }
    points_.push_back({nowMs, at});
    if (points_.size() > kMostPoints) {
        points_.pop_front();
    }
    forgetBefore(nowMs);
}

void MotionTrail::forgetBefore(qint64 nowMs) {
    while (!points_.empty() && nowMs - points_.front().atMs > kSpanMs) {
        points_.pop_front();
    }
}

double MotionTrail::freshness(const Point& point, qint64 nowMs) {
    const double age = static_cast<double>(nowMs - point.atMs) / static_cast<double>(kSpanMs);
    return std::clamp(1.0 - age, 0.0, 1.0);
}

double MotionTrail::opacity(const Point& point, qint64 nowMs) {
    return kFaintest + (1.0 - kFaintest) * freshness(point, nowMs);
}

}  // namespace halvex
