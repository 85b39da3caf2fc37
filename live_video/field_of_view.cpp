#include "live_video/field_of_view.h"

#include <QLocale>
#include <QStringList>
#include <algorithm>
#include <cmath>

#include "protocol/vocabulary_lenses.h"

namespace halvex {

namespace {
constexpr int kLeastZoom = vocab::lenses::kLowest;
constexpr int kMostZoom = vocab::lenses::kHighest;
constexpr double kWidestField = 180.0;

// The shortest text that reads back as the same number.
QString exactText(double value) {
    return QString::number(value, 'g', QLocale::FloatingPointShortest);
}

// Where `value` lies between `from` and `to` on a logarithmic scale, 0 to 1.
double logFraction(double value, double from, double to) {
    return std::log(value / from) / std::log(to / from);
}
}  // namespace

FieldOfView::FieldOfView() : points_{{kLeastZoom, 60.0}, {kMostZoom, 3.0}} {}

std::optional<FieldOfView> FieldOfView::fromPoints(std::vector<Point> points) {
    if (points.size() < 2) {
        return std::nullopt;
    }
    for (std::size_t i = 0; i < points.size(); ++i) {
        const Point& p = points[i];
        if (p.zoom < kLeastZoom || p.zoom > kMostZoom || !(p.degrees > 0.0) ||
            !(p.degrees < kWidestField)) {
            return std::nullopt;
        }
        if (i > 0 && (p.zoom <= points[i - 1].zoom || p.degrees >= points[i - 1].degrees)) {
            return std::nullopt;
        }
    }
    return FieldOfView(std::move(points));
}

std::optional<FieldOfView> FieldOfView::fromText(const QString& text, QString* why) {
    std::vector<Point> points;
    for (const QString& pair : text.split(QLatin1Char(';'), Qt::SkipEmptyParts)) {
        const QStringList parts = pair.split(QLatin1Char(':'));
        Point point;
        bool read = parts.size() == 2;
        if (read) {
            bool zoomRead;  // each set by its reading
            bool degreesRead;
            point.zoom = parts[0].trimmed().toInt(&zoomRead);
            point.degrees = parts[1].trimmed().toDouble(&degreesRead);
            read = zoomRead && degreesRead;
        }
        if (!read) {
            if (why != nullptr) {
                *why = QStringLiteral("not a zoom and a field of view: %1").arg(pair.trimmed());
            }
            return std::nullopt;
        }
        points.push_back(point);
    }
    auto table = fromPoints(std::move(points));
    if (!table && why != nullptr) {
        *why = QStringLiteral(
            "give at least two points, zoom rising from 0 to 255, the field narrowing "
            "and under 180 degrees");
    }
    return table;
}

QString FieldOfView::text() const {
    QStringList pairs;
    for (const Point& p : points_) {
        pairs << QStringLiteral("%1:%2").arg(p.zoom).arg(exactText(p.degrees));
    }
    return pairs.join(QLatin1Char(';'));
}

double FieldOfView::degreesAt(int zoom) const {
    if (zoom <= points_.front().zoom) {
        return points_.front().degrees;
    }
    if (zoom >= points_.back().zoom) {
        return points_.back().degrees;
    }
    const auto next = std::find_if(points_.begin(), points_.end(),
                                   [zoom](const Point& p) { return p.zoom > zoom; });
    const Point& a = *(next - 1);
    const Point& b = *next;
    const double along = static_cast<double>(zoom - a.zoom) / (b.zoom - a.zoom);
    return a.degrees * std::pow(b.degrees / a.degrees, along);
}

int FieldOfView::zoomFor(double degrees) const {
    if (!(degrees < points_.front().degrees)) {
        return points_.front().zoom;
    }
    if (!(degrees > points_.back().degrees)) {
        return points_.back().zoom;
    }
    const auto next = std::find_if(points_.begin(), points_.end(),
                                   [degrees](const Point& p) { return p.degrees < degrees; });
    const Point& a = *(next - 1);
    const Point& b = *next;
    const double along = logFraction(degrees, a.degrees, b.degrees);
    return static_cast<int>(std::lround(a.zoom + along * (b.zoom - a.zoom)));
}

}  // namespace halvex
