#pragma once

#include <optional>

// Azimuth/elevation as rotator clients speak them, against the unit's pan and
// tilt. Pan runs -180..180 with 0 at north, so the western half of the compass
// is negative pan: azimuth 270 is pan -90.

namespace halvex::network {

// Clients send 0..360 mostly, -180..180 when set up for a south-stop rotator,
// and up to 450 for rotators that turn past north; anything wider is a fault.
inline constexpr double kLowestAzimuth = -180.0;
inline constexpr double kHighestAzimuth = 450.0;
inline constexpr double kLowestElevation = -90.0;
inline constexpr double kHighestElevation = 90.0;

bool isAcceptedAzimuth(double azimuth);
bool isAcceptedElevation(double elevation);

// Pan in (-180, 180]: 0..180 stays, above 180 goes negative; -180 and 180
// both become 180. Nothing for a non-finite or unaccepted azimuth.
std::optional<double> azimuthToPan(double azimuth);
// Azimuth in [0, 360) for any finite pan, so a report past a stop still reads.
std::optional<double> panToAzimuth(double pan);

std::optional<double> elevationToTilt(double elevation);
std::optional<double> tiltToElevation(double tilt);

}  // namespace halvex::network
