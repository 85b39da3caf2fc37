#pragma once

#include <QPointF>
#include <QRectF>
#include <optional>

namespace halvex {

// Where a point of the picture lies from the camera's axis, for a pinhole
// camera with square pixels: the picture's width spans `fieldDegrees`, and a
// point's pan and tilt from the axis are the arc tangents of its distances
// from the centre over the focal length. Points are given as fractions of
// the picture, (0, 0) top left and (1, 1) bottom right, so the size the
// picture is shown at does not matter.
struct PictureGeometry {
    double fieldDegrees = 60.0;  // horizontal
    double aspect = 9.0 / 16.0;  // height over width

    // The pan (right positive) and tilt (up positive) that bring `point`
    // to the centre.
    QPointF anglesTo(QPointF point) const;
    // The horizontal field in which `box` fills the picture: its wider side,
    // for the picture's shape, reaches the edges.
    double fieldFilledBy(const QRectF& box) const;
    // Where an angle from the axis falls across or down the picture, as a
    // fraction; nullopt when it is out of view.
    std::optional<double> acrossAt(double panFromAxis) const;
    std::optional<double> downAt(double tiltFromAxis) const;
};

}  // namespace halvex
