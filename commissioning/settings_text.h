#pragma once

// The unit settings file: plain text, one value a line, grouped in sections
// in the order of the pages, angles in degrees, closed by a line "end" so
// that a file cut short is always noticed:
//
//   halvex-unit-settings 1
//   [unit]
//   address = 7
//   ...
//   [speeds]
//   pan-ramp = 40
//   ...
//   end
//
// The reader refuses anything it would have to guess at: another format, a
// file without its end line, a setting missing, unknown, given twice or
// outside its range. It never throws and reads at most kMostBytes.

#include <optional>
#include <string>
#include <string_view>

#include "commissioning/settings_lines.h"
#include "commissioning/unit_settings.h"

namespace halvex::commissioning {

constexpr std::size_t kMostBytes = 256 * 1024;

std::string writeSettingsText(const UnitSettings& settings);

struct SettingsRead {
    std::optional<UnitSettings> settings;
    // Set when refused: what is wrong, e.g. "line 12: speeds/pan-ramp is 300,
    // outside 1..255".
    std::string problem;
};

SettingsRead readSettingsText(std::string_view text);

}  // namespace halvex::commissioning
