#include "network/rotator_angles.h"

#include <cmath>

namespace halvex::network {

bool isAcceptedAzimuth(double azimuth) {
    return std::isfinite(azimuth) && azimuth >= kLowestAzimuth && azimuth <= kHighestAzimuth;
}

bool isAcceptedElevation(double elevation) {
    return std::isfinite(elevation) && elevation >= kLowestElevation &&
           elevation <= kHighestElevation;
}

std::optional<double> azimuthToPan(double azimuth) {
    if (!isAcceptedAzimuth(azimuth)) {
        return std::nullopt;
    }
    double pan = std::fmod(azimuth, 360.0);
    if (pan > 180.0) {
        pan -= 360.0;
    } else if (pan <= -180.0) {
        pan += 360.0;
    }
    // Adding zero turns -0 into 0, which would otherwise print as "-0.00".
    return pan + 0.0;
}

std::optional<double> panToAzimuth(double pan) {
    if (!std::isfinite(pan)) {
        return std::nullopt;
    }
    double azimuth = std::fmod(pan, 360.0);
    if (azimuth < 0.0) {
        azimuth += 360.0;
    }
    // A pan a hair below zero adds up to exactly 360.
    if (azimuth >= 360.0) {
        azimuth = 0.0;
    }
    return azimuth + 0.0;
}

std::optional<double> elevationToTilt(double elevation) {
    if (!isAcceptedElevation(elevation)) {
        return std::nullopt;
    }
    return elevation + 0.0;
}

std::optional<double> tiltToElevation(double tilt) {
    if (!std::isfinite(tilt)) {
        return std::nullopt;
    }
    return tilt + 0.0;
}

}  // namespace halvex::network
