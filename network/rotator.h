#pragma once

#include <optional>
#include <string>

namespace halvex::network {

// Azimuth and elevation in degrees, as rotator clients speak them: azimuth
// clockwise from north, elevation up from the horizon.
struct AzEl {
    double azimuth = 0.0;
    double elevation = 0.0;
};

// What a client may ask for, told to clients in \dump_state.
struct RotatorLimits {
    double minAzimuth = 0.0;
    double maxAzimuth = 360.0;
    double minElevation = 0.0;
    double maxElevation = 90.0;
};

enum class RotatorResult {
    Ok,
    OutsideLimits,
    Offline,
    Refused,       // the console will not move now (operator in control, busy)
    NotAvailable,  // e.g. no park position is set
};

// The positioning unit as the network server sees it. The console implements
// it; the server calls it from the event loop thread only, so every call must
// return at once: setPosition() hands the move over and does not wait for the
// unit to arrive.
class Rotator {
  public:
    virtual ~Rotator() = default;

    virtual bool isOnline() const = 0;
    // From the latest position report; nothing before the first one.
    virtual std::optional<AzEl> position() const = 0;
    virtual RotatorResult setPosition(double azimuth, double elevation) = 0;
    virtual RotatorResult stop() = 0;
    virtual RotatorResult park() = 0;
    // One line naming the unit, e.g. "Halvex pan & tilt, unit 1".
    virtual std::string info() const = 0;
    virtual RotatorLimits limits() const = 0;
};

}  // namespace halvex::network
