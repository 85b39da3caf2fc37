#pragma once

#include <QString>
#include <optional>
#include <vector>

namespace halvex {

// A lens's horizontal field of view across its zoom travel: a few measured
// points, from the lens's data sheet or a calibration, and between them a
// geometric interpolation, since a zoom lens narrows its view by a steady
// factor per step far more nearly than by a steady angle.
class FieldOfView {
  public:
    struct Point {
        int zoom = 0;          // the lens position, 0 to 255
        double degrees = 0.0;  // the horizontal field of view there
        bool operator==(const Point&) const = default;
    };

    // The virtual unit's lens: 60 degrees at zoom 0 down to 3 at 255.
    FieldOfView();
    // Nullopt unless there are at least two points, in rising zoom order,
    // each zoom 0 to 255 and each field narrower than the one before and
    // between 0 and 180 degrees.
    static std::optional<FieldOfView> fromPoints(std::vector<Point> points);
    // The kept form, "0:60;255:3"; nullopt and the reason for anything else.
    static std::optional<FieldOfView> fromText(const QString& text, QString* why = nullptr);
    QString text() const;

    const std::vector<Point>& points() const { return points_; }
    // The field at a zoom position; beyond the end points the nearest holds.
    double degreesAt(int zoom) const;
    // The zoom position whose field comes nearest `degrees`, within the
    // lens's travel.
    int zoomFor(double degrees) const;

    bool operator==(const FieldOfView&) const = default;

  private:
    explicit FieldOfView(std::vector<Point> points) : points_(std::move(points)) {}
    std::vector<Point> points_;
};

}  // namespace halvex
