#include "sim/video/camera_view.h"

#include <cmath>
#include <numbers>

namespace halvex::sim::video {

namespace {

double degrees(double radians) {
    return radians / kRadiansPerDegree;
}
double radians(double degrees) {
    return degrees * kRadiansPerDegree;
}

// a - b folded into -180 .. +180.
double azimuthDifference(double a, double b) {
    return std::remainder(a - b, 360.0);
}

}  // namespace

double fieldOfViewDegrees(int zoom) {
    return kWidestFieldDegrees *
           std::pow(kNarrowestFieldDegrees / kWidestFieldDegrees, zoom / 255.0);
}

double CameraView::focalPixels() const {
    return (width / 2.0) / std::tan(radians(fieldOfView) / 2.0);
}

Direction CameraView::directionAt(PicturePoint point) const {
    const double f = focalPixels();
    return {pan + degrees(std::atan((point.x - width / 2.0) / f)),
            tilt + degrees(std::atan((height / 2.0 - point.y) / f))};
}

std::optional<PicturePoint> CameraView::pointOf(Direction direction) const {
    const double across = azimuthDifference(direction.azimuth, pan);
    const double up = direction.elevation - tilt;
    if (std::abs(across) >= 90.0 || std::abs(up) >= 90.0) {
        return std::nullopt;
    }
    const double f = focalPixels();
    return PicturePoint{width / 2.0 + f * std::tan(radians(across)),
                        height / 2.0 - f * std::tan(radians(up))};
}

std::vector<double> CameraView::columnAzimuths() const {
    std::vector<double> azimuths(static_cast<std::size_t>(width));
    for (int x = 0; x < width; ++x) {
        azimuths[static_cast<std::size_t>(x)] = directionAt({x + 0.5, height / 2.0}).azimuth;
    }
    return azimuths;
}

std::vector<double> CameraView::rowElevations() const {
    std::vector<double> elevations(static_cast<std::size_t>(height));
    for (int y = 0; y < height; ++y) {
        elevations[static_cast<std::size_t>(y)] = directionAt({width / 2.0, y + 0.5}).elevation;
    }
    return elevations;
}

}  // namespace halvex::sim::video
