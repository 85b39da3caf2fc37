#include "views/widgets/plot_frame.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace halvex {

void PlotFrame::setRange(const PlotLimits& range) {
    if (range == range_) {
        return;
    }
    range_ = range;
    keepCentreInRange();
}

void PlotFrame::setArea(const QRectF& area) {
    area_ = area;
}

void PlotFrame::resetZoom() {
    zoom_ = 1.0;
    keepCentreInRange();
}

void PlotFrame::zoomAt(QPointF pixel, double factor) {
    const PlotAngles under = toAngles(pixel);
    zoom_ = std::clamp(zoom_ * factor, 1.0, kMostZoom);
    // Put the angles that were under the pointer back under it.
    const PlotAngles now = toAngles(pixel);
    centre_.pan += under.pan - now.pan;
    centre_.tilt += under.tilt - now.tilt;
    keepCentreInRange();
}

namespace {
// Where the middle of `half` either side may lie within least..most. Whole,
// the two ends meet in the middle, and rounding may cross them over.
double keepWithin(double centre, double least, double most, double half) {
    const double lowest = least + half;
    const double highest = most - half;
    return lowest < highest ? std::clamp(centre, lowest, highest) : (least + most) / 2.0;
}
}  // namespace

void PlotFrame::keepCentreInRange() {
    const double halfPan = (range_.panMax - range_.panMin) / zoom_ / 2.0;
    const double halfTilt = (range_.tiltMax - range_.tiltMin) / zoom_ / 2.0;
    centre_.pan = keepWithin(centre_.pan, range_.panMin, range_.panMax, halfPan);
    centre_.tilt = keepWithin(centre_.tilt, range_.tiltMin, range_.tiltMax, halfTilt);
}

PlotLimits PlotFrame::visible() const {
    const double halfPan = (range_.panMax - range_.panMin) / zoom_ / 2.0;
    const double halfTilt = (range_.tiltMax - range_.tiltMin) / zoom_ / 2.0;
    return {centre_.pan - halfPan, centre_.pan + halfPan, centre_.tilt - halfTilt,
            centre_.tilt + halfTilt};
}

double PlotFrame::pixelsPerDegree() const {
    const PlotLimits shown = visible();
    // A widget not yet laid out has no area: keep the scale finite.
    return std::max(std::min(area_.width() / (shown.panMax - shown.panMin),
                             area_.height() / (shown.tiltMax - shown.tiltMin)),
                    1e-6);
}

QRectF PlotFrame::plotArea() const {
    const PlotLimits shown = visible();
    const double scale = pixelsPerDegree();
    const QSizeF size((shown.panMax - shown.panMin) * scale,
                      (shown.tiltMax - shown.tiltMin) * scale);
    return {area_.center().x() - size.width() / 2.0, area_.center().y() - size.height() / 2.0,
            size.width(), size.height()};
}

QPointF PlotFrame::toPixel(PlotAngles at) const {
    const PlotLimits shown = visible();
    const QRectF plot = plotArea();
    const double scale = pixelsPerDegree();
    return {plot.left() + (at.pan - shown.panMin) * scale,
            plot.top() + (shown.tiltMax - at.tilt) * scale};
}

PlotAngles PlotFrame::toAngles(QPointF pixel) const {
    const PlotLimits shown = visible();
    const QRectF plot = plotArea();
    const double scale = pixelsPerDegree();
    return {shown.panMin + (pixel.x() - plot.left()) / scale,
            shown.tiltMax - (pixel.y() - plot.top()) / scale};
}

double PlotFrame::gridStep(double minimumPixels) const {
    // No range is wider than a turn.
    static constexpr std::array<double, 9> kSteps = {1, 2, 5, 10, 15, 30, 45, 90, 180};
    const double scale = pixelsPerDegree();
    for (const double step : kSteps) {
        if (step * scale >= minimumPixels) {
            return step;
        }
    }
    return kSteps.back();
}

std::vector<double> PlotFrame::gridLines(double least, double most, double step) {
    std::vector<double> lines;
    // The first line is counted, not summed, so that none is lost to rounding.
    for (auto k = static_cast<long long>(std::ceil(least / step)); k * step <= most; ++k) {
        lines.push_back(static_cast<double>(k) * step);
    }
    return lines;
}

std::vector<PlotPiece> travelPieces(PlotAngles from, PlotAngles to, bool panWraps) {
    const double panApart = to.pan - from.pan;
    if (!panWraps || std::abs(panApart) <= 180.0) {
        return {{from, to}};
    }
    // Across the seam: out at the edge behind `from`, in at the other one.
    const double edge = std::copysign(180.0, -panApart);
    const double share = std::abs(edge - from.pan) / (360.0 - std::abs(panApart));
    const double tiltAtEdge = from.tilt + (to.tilt - from.tilt) * share;
    return {{from, {edge, tiltAtEdge}}, {{-edge, tiltAtEdge}, to}};
}

}  // namespace halvex
