#pragma once

// The unit's stored settings: its configuration, the display and video
// settings kept for power up, presets and tours, in a small text file of
// "name value..." lines. A missing or damaged line leaves the factory value.

#include <optional>
#include <string>

#include "sim/presets.h"
#include "sim/settings.h"
#include "sim/tours.h"

namespace halvex::sim {

struct StoredState {
    Settings settings;
    PowerUpSettings powerUp;
    Presets presets;
    Tours tours;

    bool operator==(const StoredState&) const = default;
};

// Nothing when the file cannot be read.
std::optional<StoredState> loadState(const std::string& path);
// Writes a new file and renames it over the old, so a crash never leaves
// half a file. False when it cannot be written.
bool saveState(const std::string& path, const StoredState& state);

}  // namespace halvex::sim
