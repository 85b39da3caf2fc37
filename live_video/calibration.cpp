#include "live_video/calibration.h"

#include <QtMath>
#include <cmath>

namespace halvex {

namespace {
constexpr double kNarrowest = 0.05;
constexpr double kWidest = 179.0;
constexpr double kScanStep = 0.05;

// The angle from the axis of a point `across` the picture, for a field.
double angleOf(double across, double fieldDegrees) {
    const double reach = std::tan(qDegreesToRadians(fieldDegrees) / 2);
    return qRadiansToDegrees(std::atan((across - 0.5) * 2 * reach));
}
}  // namespace

double mirroringPan(double across, double fieldDegrees) {
    return 2 * angleOf(across, fieldDegrees);
}

std::optional<double> fieldFromMarks(double firstAcross, double secondAcross,
                                     double pannedDegrees) {
    // How far the field's account of the pan falls short of the real one:
    // rising from below zero with the field, through the answer.
    const auto shortfall = [&](double field) {
        return angleOf(firstAcross, field) - angleOf(secondAcross, field) - pannedDegrees;
    };
    if (pannedDegrees == 0.0 || std::isnan(shortfall(kNarrowest))) {
        return std::nullopt;
    }
    const double sign = pannedDegrees > 0 ? 1.0 : -1.0;
    // The narrowest field that fits: the first crossing, then halving.
    double low = kNarrowest;
    if (sign * shortfall(low) >= 0) {
        return std::nullopt;
    }
    double high = low;
    while (sign * shortfall(high) < 0) {
        low = high;
        high += kScanStep;
        if (high > kWidest) {
            return std::nullopt;
        }
    }
    // Halving until no number lies between the two.
    for (double middle = (low + high) / 2; middle != low && middle != high;
         middle = (low + high) / 2) {
        (sign * shortfall(middle) < 0 ? low : high) = middle;
    }
    return (low + high) / 2;
}

}  // namespace halvex
