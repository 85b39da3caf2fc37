#include "live_video/aiming.h"

#include <QtMath>
#include <algorithm>
#include <cmath>

namespace halvex {

namespace {
// How far the half-width reaches on a focal length of one.
double halfWidthReach(double fieldDegrees) {
    return std::tan(qDegreesToRadians(fieldDegrees) / 2.0);
}

std::optional<double> inView(double fraction) {
    return fraction >= 0.0 && fraction <= 1.0 ? std::optional<double>(fraction) : std::nullopt;
}
}  // namespace

QPointF PictureGeometry::anglesTo(QPointF point) const {
    const double reach = halfWidthReach(fieldDegrees);
    // In focal lengths: the half-width is `reach`, the half-height that times
    // the aspect.
    const double across = (point.x() - 0.5) * 2.0 * reach;
    const double up = (0.5 - point.y()) * 2.0 * reach * aspect;
    return {qRadiansToDegrees(std::atan(across)), qRadiansToDegrees(std::atan(up))};
}

double PictureGeometry::fieldFilledBy(const QRectF& box) const {
    // Both sides are fractions of the picture's, whose shape the zoom keeps.
    const double share = std::max(std::abs(box.width()), std::abs(box.height()));
    return qRadiansToDegrees(2.0 * std::atan(halfWidthReach(fieldDegrees) * share));
}

std::optional<double> PictureGeometry::acrossAt(double panFromAxis) const {
    if (std::abs(panFromAxis) >= 90.0) {
        return std::nullopt;
    }
    const double across = std::tan(qDegreesToRadians(panFromAxis)) / halfWidthReach(fieldDegrees);
    return inView(0.5 + across / 2.0);
}

std::optional<double> PictureGeometry::downAt(double tiltFromAxis) const {
    if (std::abs(tiltFromAxis) >= 90.0) {
        return std::nullopt;
    }
    const double up =
        std::tan(qDegreesToRadians(tiltFromAxis)) / (halfWidthReach(fieldDegrees) * aspect);
    return inView(0.5 - up / 2.0);
}

}  // namespace halvex
