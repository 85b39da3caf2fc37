#pragma once

// The presets as the unit last reported them, and the text of their entries
// in the preset list.

#include <QString>
#include <QStringList>
#include <array>
#include <cstdint>
#include <optional>

#include "protocol/frame.h"

namespace halvex {

// Preset numbers the unit is asked for: 0..31, 31 being the home position.
constexpr int kUnitPresets = 32;
// The tables hold one entry more than the unit is asked for (0..32).
constexpr int kPresetTableSize = 33;

struct PresetRecord {
    std::int32_t pan = 0;   // hundredths of a degree
    std::int32_t tilt = 0;  // hundredths of a degree
    Byte zoom1 = 0;
    Byte focus1 = 0;
    Byte zoom2 = 0;
    Byte focus2 = 0;
};

class PresetTable {
  public:
    // A number outside 0..32 is a subscript range fault.
    const PresetRecord& at(int number) const;
    void store(int number, const PresetRecord& record);

    // The lines of the preset list as the operator sees them, for the pages
    // that offer the presets as choices.
    const QStringList& listEntries() const { return listEntries_; }
    void setListEntries(QStringList entries) { listEntries_ = std::move(entries); }

  private:
    static std::size_t checkNumber(int number);
    std::array<PresetRecord, kPresetTableSize> records_{};
    QStringList listEntries_;
};

// Reads the preset record of a preset reply (codes 64..67): byte 1 the
// number, 2..4 pan, 5..7 tilt, 8..11 the lens bytes.
PresetRecord readPresetRecord(const ByteTable& rx);

// The list entry of a preset: number, pan, tilt and the lens columns the
// controller type has. Type 0 shows all four lens bytes, type 1 (no second
// camera) only zoom 1 and focus 1; other types have no entry.
std::optional<QString> presetEntryText(int number, const PresetRecord& record, Byte unitVariant);

// Column headings that line up with the entries of a type 0 controller.
QString presetHeadingText();

}  // namespace halvex
