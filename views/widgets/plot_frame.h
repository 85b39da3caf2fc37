#pragma once

#include <QPointF>
#include <QRectF>
#include <utility>
#include <vector>

namespace halvex {

// Pan and tilt in degrees.
struct PlotAngles {
    double pan = 0.0;
    double tilt = 0.0;

    bool operator==(const PlotAngles&) const = default;
};

// A rectangle of pan and tilt, edges included.
struct PlotLimits {
    double panMin = -180.0;
    double panMax = 180.0;
    double tiltMin = -90.0;
    double tiltMax = 90.0;

    bool contains(PlotAngles at) const {
        return at.pan >= panMin && at.pan <= panMax && at.tilt >= tiltMin && at.tilt <= tiltMax;
    }
    bool operator==(const PlotLimits&) const = default;
};

// Where pan and tilt fall on the screen: pan grows to the right, tilt
// upwards, a degree as long on both axes so that a field of view keeps its
// shape. At zoom 1 the whole range fits the area; zooming in shows part of
// it, never more than the range.
class PlotFrame {
  public:
    static constexpr double kMostZoom = 16.0;

    void setRange(const PlotLimits& range);
    void setArea(const QRectF& area);
    const PlotLimits& range() const { return range_; }

    // Zooms by `factor` keeping the angles under `pixel` where they are.
    void zoomAt(QPointF pixel, double factor);
    void resetZoom();
    double zoom() const { return zoom_; }

    QPointF toPixel(PlotAngles at) const;
    PlotAngles toAngles(QPointF pixel) const;
    // The pixels the visible angles cover, and those angles.
    QRectF plotArea() const;
    PlotLimits visible() const;
    double pixelsPerDegree() const;
    // Degrees between grid lines: a round step that leaves at least
    // `minimumPixels` between neighbours.
    double gridStep(double minimumPixels = 36.0) const;
    // The multiples of `step` from `least` to `most`, both included.
    static std::vector<double> gridLines(double least, double most, double step);

  private:
    void keepCentreInRange();

    PlotLimits range_;
    QRectF area_;
    double zoom_ = 1.0;
    PlotAngles centre_;
};

// The way from `from` to `to` as the platform travels it: one straight
// piece, or for a unit that pans for ever the short way round, which may be
// two pieces, out at one side of ±180 and in at the other.
using PlotPiece = std::pair<PlotAngles, PlotAngles>;
std::vector<PlotPiece> travelPieces(PlotAngles from, PlotAngles to, bool panWraps);

}  // namespace halvex
