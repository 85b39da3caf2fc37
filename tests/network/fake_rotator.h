#pragma once

#include <optional>
#include <string>
#include <vector>

#include "network/rotator.h"

namespace halvex::network {

// Stands in for the console: refuses moves outside its limits like the real
// one, otherwise records them and reports the new position at once.
class FakeRotator : public Rotator {
  public:
    bool online = true;
    std::optional<AzEl> reported = AzEl{123.5, 45.25};
    RotatorLimits limitsToTell{0.0, 360.0, 0.0, 80.0};
    std::string infoText = "Halvex test unit";
    // What every command answers instead, when set.
    std::optional<RotatorResult> forcedResult;

    int positionRequests = 0;
    std::vector<AzEl> moves;
    int stops = 0;
    int parks = 0;

    bool isOnline() const override { return online; }
    std::optional<AzEl> position() const override { return reported; }

    RotatorResult setPosition(double azimuth, double elevation) override {
        ++positionRequests;
        if (forcedResult) {
            return *forcedResult;
        }
        const RotatorLimits& l = limitsToTell;
        if (azimuth < l.minAzimuth || azimuth > l.maxAzimuth || elevation < l.minElevation ||
            elevation > l.maxElevation) {
            return RotatorResult::OutsideLimits;
        }
        moves.push_back({azimuth, elevation});
        reported = AzEl{azimuth, elevation};
        return RotatorResult::Ok;
    }
    RotatorResult stop() override {
        ++stops;
        return forcedResult.value_or(RotatorResult::Ok);
    }
    RotatorResult park() override {
        ++parks;
        return forcedResult.value_or(RotatorResult::Ok);
    }
    std::string info() const override { return infoText; }
    RotatorLimits limits() const override { return limitsToTell; }
};

}  // namespace halvex::network
