#pragma once

#include "protocol/frame.h"

namespace halvex {

// A value for each axis: top speeds, maxima and minima, ramps, encoder
// counts.
struct AxisPair {
    int pan = 0;
    int tilt = 0;

    bool operator==(const AxisPair&) const = default;
};

// One axis's safe speed, acceleration ramp and deceleration, a byte each.
struct AxisDrive {
    int safeSpeed = 0;
    int ramp = 0;
    int deceleration = 0;

    bool operator==(const AxisDrive&) const = default;
};

struct DriveRates {
    AxisDrive pan;
    AxisDrive tilt;

    bool operator==(const DriveRates&) const = default;
};

// The unit keeps two pairs of top speeds.
enum class TopSpeedSet { First, Second };

// An axis's lowest and highest step rate, a signed 16-bit word each.
struct StepRange {
    int minimum = 0;
    int maximum = 0;

    bool operator==(const StepRange&) const = default;
};

// How the platform is built and mounted: which motors run reversed, which
// resolvers read inverted, whether pan turns for ever, and whether the unit
// hangs upside down.
struct MountSettings {
    bool panMotorReversed = false;
    bool tiltMotorReversed = false;
    bool panResolverInverted = false;
    bool tiltResolverInverted = false;
    bool continuousRotation = false;
    bool invertedMount = false;
    // The byte's two other bits mean nothing to the unit; they go back as
    // they came.
    Byte otherBits = 0;

    bool operator==(const MountSettings&) const = default;
};

}  // namespace halvex
