#pragma once

// What the console knows of one unit's setup: who it is, every value of the
// settings table, the presets and the tours. What a settings file holds, and
// what a unit was read to be.

#include <array>
#include <bit>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "commissioning/settings_catalog.h"
#include "protocol/vocabulary.h"

namespace halvex::commissioning {

constexpr int kPresets = 32;

// A tour step's two bytes as the unit keeps them: the preset with its
// camera, then the dwell with the blank bit.
struct TourStep {
    // Where the tour step reply has the fields of the two bytes.
    using Fields = vocab::tour_step::Step;

    Byte preset = 0;
    Byte dwell = 0;

    static TourStep of(int preset, int camera, int dwell, bool blank);
    int presetNumber() const { return field(Fields::kPreset); }
    int camera() const { return field(Fields::kCamera); }
    int seconds() const { return field(Fields::kDwell); }
    bool blank() const { return field(Fields::kBlank) != 0; }

    bool operator==(const TourStep&) const = default;

  private:
    std::array<Byte, vocab::TourStep::kLength> bytes() const;
    int field(vocab::Field<vocab::TourStep> place) const {
        return static_cast<int>(vocab::get(bytes(), place));
    }
};

// The largest value a field holds.
template <class M>
constexpr std::int32_t largest(vocab::Field<M> place) {
    return static_cast<std::int32_t>(place.mask >> std::countr_zero(place.mask));
}

struct StoredPreset {
    std::int32_t pan = 0;        // hundredths of a degree, as the unit reports it
    std::int32_t tilt = 0;       // likewise
    std::array<Byte, 4> lens{};  // zoom 1, focus 1, zoom 2, focus 2; all 0: none

    bool hasLens() const { return lens != std::array<Byte, 4>{}; }
    bool operator==(const StoredPreset&) const = default;
};

struct UnitIdentity {
    int address = 0;
    int controllerType = 0;
    int firmwareMajor = 0;
    int firmwareMinor = 0;
    // The unit's clock, as it reported it (not checked against a calendar).
    int clockYear = 2000;
    int clockMonth = 1;
    int clockDay = 1;

    bool operator==(const UnitIdentity&) const = default;
};

struct UnitSettings {
    UnitIdentity identity;
    // When the settings were read ("2026-11-25 14:37:05"), for the reader.
    std::string saved;
    // settingKey() -> value, for every field of every group that applies to
    // the controller type.
    std::map<std::string, std::int32_t> values;
    std::array<StoredPreset, kPresets> presets{};
    std::array<std::vector<TourStep>, kTours> tours;

    bool operator==(const UnitSettings&) const = default;

    // The group's values in field order; a missing one reads as 0.
    std::vector<std::int32_t> groupValues(const SettingGroup& group) const;
    void setGroupValues(const SettingGroup& group, const std::vector<std::int32_t>& values);
};

// One row of the side-by-side view: a setting whose value in the file is not
// the unit's.
struct Difference {
    enum class Item { Setting, Preset, Tour, Identity };

    Item item = Item::Setting;
    std::string label;   // "speeds/pan-ramp", "presets/3", "tours/1", "unit/address"
    std::string inFile;  // as the settings file spells it
    std::string inUnit;
    const SettingGroup* group = nullptr;  // for Item::Setting
    int index = -1;                       // preset number, or tour 0..2
    // Restore writes it; when not, `note` says why.
    bool written = true;
    std::string note;
};

// Everything in which the unit differs from the file, in the order of the
// file. Factory settings are written only while the factory area is open.
std::vector<Difference> differences(const UnitSettings& file, const UnitSettings& unit,
                                    bool factoryOpen);

// How a value, a preset and a tour are spelled in the file and the views.
std::string fieldText(const SettingField& field, std::int32_t value);
std::string presetText(const StoredPreset& preset);
std::string tourText(const std::vector<TourStep>& steps);
std::string degreesText(std::int32_t hundredths);
std::string firmwareText(const UnitIdentity& identity);
std::string clockText(const UnitIdentity& identity);

}  // namespace halvex::commissioning
