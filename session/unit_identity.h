#pragma once

namespace halvex {

// The unit's firmware revision and the date its clock holds.
struct FirmwareRevision {
    int major = 0;
    int minor = 0;
    int day = 0;
    int month = 0;
    int year = 0;  // in full: 2011

    bool operator==(const FirmwareRevision&) const = default;
};

}  // namespace halvex
