#pragma once

// How a unit is built: what it is told on its command line or by a test.

#include <array>
#include <cstdint>
#include <optional>
#include <string>

#include "protocol/frame.h"
#include "sim/camera.h"

namespace halvex::sim {

struct CalendarDate {
    int year = 2000;
    int month = 1;
    int day = 1;
};

struct UnitOptions {
    // Address at power up; when unset, the stored one (or 0).
    std::optional<Byte> id;
    // Controller type reported in bits 0-1 of status byte A: 0 standard,
    // 1 the type without second camera and video hardware.
    Byte variant = 0;
    // File that keeps the unit's stored settings; empty for none.
    std::string statePath;
    std::array<CameraKind, 2> cameras{CameraKind::Auto, CameraKind::Auto};
    Byte firmwareMajor = 2;
    Byte firmwareMinor = 10;
    // Date of the unit's clock; today's date when unset.
    std::optional<CalendarDate> clockDate;
    // The long procedures during which the unit answers nothing.
    std::int64_t alignmentMs = 6000;
    std::int64_t homingMs = 8000;
};

}  // namespace halvex::sim
