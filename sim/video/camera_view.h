#pragma once

// How a camera of the virtual unit turns directions into its picture: square
// pixels, a horizontal field of view set by the zoom byte, and a mapping in
// which each column has one azimuth and each row one elevation. The console's
// click-to-centre inverts exactly this mapping, so the renderer and the tests
// both go through here. Angles in degrees.

#include <numbers>
#include <optional>
#include <vector>

namespace halvex::sim::video {

inline constexpr double kRadiansPerDegree = std::numbers::pi / 180.0;

inline constexpr double kWidestFieldDegrees = 60.0;    // zoom byte 0
inline constexpr double kNarrowestFieldDegrees = 3.0;  // zoom byte 255

// The horizontal field of view at a zoom byte, geometric between the two
// ends, so each step of the byte narrows the view by the same factor.
double fieldOfViewDegrees(int zoom);

struct Direction {
    double azimuth = 0.0;
    double elevation = 0.0;
};

// A place in the picture: (0, 0) is the top-left corner of the top-left
// pixel, so the centre of column x is at x + 0.5.
struct PicturePoint {
    double x = 0.0;
    double y = 0.0;
};

struct CameraView {
    double pan = 0.0;  // where the centre of the picture looks
    double tilt = 0.0;
    double fieldOfView = kWidestFieldDegrees;  // horizontal
    int width = 0;
    int height = 0;

    // The focal length in pixels: (width / 2) / tan(fieldOfView / 2).
    double focalPixels() const;

    // pan + atan((x - width/2) / f), tilt + atan((height/2 - y) / f).
    Direction directionAt(PicturePoint point) const;
    // The inverse: where a direction lands (azimuths compared modulo a full
    // turn). Nothing when it lies a quarter turn or more off the axis.
    std::optional<PicturePoint> pointOf(Direction direction) const;

    // directionAt for the centre of every column and every row: what the
    // renderer works out once a frame and then only looks up.
    std::vector<double> columnAzimuths() const;
    std::vector<double> rowElevations() const;
};

}  // namespace halvex::sim::video
