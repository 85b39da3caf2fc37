#pragma once

// The unit's configuration: everything a command can set, with the values a
// unit leaves the factory with. Live motion, presets and tours are kept
// elsewhere; this is plain data so that it can be stored and compared.

#include <array>
#include <cstdint>

#include "protocol/frame.h"
#include "protocol/vocabulary.h"

namespace halvex::sim {

struct AxisRates {
    Byte safe = 20;
    Byte ramp = 40;   // acceleration, 2 degrees/s^2 per step
    Byte decel = 20;  // deceleration, 4 degrees/s^2 per step

    bool operator==(const AxisRates&) const = default;
};

// Soft limit indices as the commands number them.
enum SoftLimit { kLimitCw = 0, kLimitCcw = 1, kLimitUp = 2, kLimitDown = 3 };

// Both cameras' power bits, as the video commands carry them.
inline constexpr Byte kCamerasPowered = vocab::maskOf(vocab::video_configuration::kCamera1Power) |
                                        vocab::maskOf(vocab::video_configuration::kCamera2Power);

struct Settings {
    Byte unitId = 0;

    AxisRates panRates;
    AxisRates tiltRates;
    // Top speeds in half degrees per second: the first variant drives
    // automated moves, the second the full deflection of a jog.
    Byte panTop = 60;
    Byte tiltTop = 40;
    Byte panJogTop = 80;
    Byte tiltJogTop = 60;
    std::uint16_t panMin = 15;
    std::uint16_t panMax = 10000;
    std::uint16_t tiltMin = 15;
    std::uint16_t tiltMax = 10000;

    // Bits 0-3 motor and resolver senses, bit 4 continuous pan, bit 5
    // inverted mount.
    Byte directions = 0;
    std::uint16_t panEncoder = 15;
    std::uint16_t tiltEncoder = 15;
    Byte commTimeoutSeconds = 0;
    Byte heater = 1;

    // Mechanical hundredths: CW, CCW, up, down.
    std::array<std::int32_t, 4> softLimits{17000, -17000, 8500, -8500};
    std::int32_t panOffset = 0;
    std::int32_t tiltOffset = 0;
    // Resolver readings of the mechanical centre.
    std::int32_t panResolverCentre = 32768;
    std::int32_t tiltResolverCentre = 32768;

    // Per camera: lens configuration bits, minimum zoom and focus speeds,
    // serial settings byte and response time-out (8 ms steps).
    static constexpr Byte kLensesEnabled =
        vocab::maskOf(vocab::lens_configuration::Lens1::kZoomEnable) |
        vocab::maskOf(vocab::lens_configuration::Lens1::kFocusEnable);
    std::array<Byte, 2> lensConfig{kLensesEnabled, kLensesEnabled};
    std::array<Byte, 2> zoomMinSpeed{10, 10};
    std::array<Byte, 2> focusMinSpeed{10, 10};
    std::array<Byte, 2> cameraComm{1, 1};
    std::array<Byte, 2> cameraTimeout{10, 10};

    Byte videoMode = 0;
    Byte videoPower = kCamerasPowered;
    Byte legacyVideo = 0;
    Byte angleDisplay = 0;
    Byte nameDisplay = 0;
    Byte aux = 0;
    std::array<Byte, 12> siteName{' ', ' ', ' ', ' ', ' ', ' ', ' ', ' ', ' ', ' ', ' ', ' '};

    bool continuousPan() const {
        return vocab::isSet(directions, vocab::directions::kContinuousRotation);
    }

    bool operator==(const Settings&) const = default;
};

// Display and video settings the unit restores at power up; they change only
// when a command carries the power-up bit.
struct PowerUpSettings {
    Byte videoMode = 0;
    Byte videoPower = kCamerasPowered;
    Byte angleDisplay = 0;
    Byte nameDisplay = 0;

    bool operator==(const PowerUpSettings&) const = default;
};

// Display and video come up as they were stored for power up.
inline void applyPowerUp(Settings& settings, const PowerUpSettings& powerUp) {
    settings.videoMode = powerUp.videoMode;
    settings.videoPower = powerUp.videoPower;
    settings.angleDisplay = powerUp.angleDisplay;
    settings.nameDisplay = powerUp.nameDisplay;
}

}  // namespace halvex::sim
