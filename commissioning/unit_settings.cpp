#include "commissioning/unit_settings.h"

#include <cstdlib>
#include <iomanip>
#include <sstream>

namespace halvex::commissioning {

namespace {

// What printf's %0*d gives: at least `width` digits, a minus sign first.
std::string zeroPadded(int width, long long value) {
    std::ostringstream text;
    text << std::setw(width) << std::setfill('0') << std::internal << value;
    return text.str();
}

Difference identityRow(const std::string& label, const std::string& inFile,
                       const std::string& inUnit, const std::string& note) {
    Difference row;
    row.item = Difference::Item::Identity;
    row.label = label;
    row.inFile = inFile;
    row.inUnit = inUnit;
    row.written = false;
    row.note = note;
    return row;
}

std::string stepsOrNone(const std::vector<TourStep>& steps) {
    return steps.empty() ? std::string("no steps") : tourText(steps);
}

}  // namespace

TourStep TourStep::of(int preset, int camera, int dwell, bool blank) {
    std::array<Byte, vocab::TourStep::kLength> bytes{};
    vocab::put(bytes, Fields::kPreset, static_cast<std::uint32_t>(preset));
    vocab::put(bytes, Fields::kCamera, static_cast<std::uint32_t>(camera));
    vocab::put(bytes, Fields::kDwell, static_cast<std::uint32_t>(dwell));
    vocab::put(bytes, Fields::kBlank, blank ? 1u : 0u);
    return {bytes[Fields::kPreset.offset], bytes[Fields::kDwell.offset]};
}

std::array<Byte, vocab::TourStep::kLength> TourStep::bytes() const {
    std::array<Byte, vocab::TourStep::kLength> bytes{};
    bytes[Fields::kPreset.offset] = preset;
    bytes[Fields::kDwell.offset] = dwell;
    return bytes;
}

std::vector<std::int32_t> UnitSettings::groupValues(const SettingGroup& group) const {
    std::vector<std::int32_t> result;
    for (const SettingField& field : group.fields) {
        const auto found = values.find(settingKey(group, field));
        result.push_back(found == values.end() ? 0 : found->second);
    }
    return result;
}

void UnitSettings::setGroupValues(const SettingGroup& group,
                                  const std::vector<std::int32_t>& fieldValues) {
    for (std::size_t i = 0; i < group.fields.size(); ++i) {
        values[settingKey(group, group.fields[i])] = fieldValues.at(i);
    }
}

std::string degreesText(std::int32_t hundredths) {
    const long long value = hundredths;
    const long long magnitude = std::llabs(value);
    return (value < 0 ? "-" : "") + std::to_string(magnitude / 100) + "." +
           zeroPadded(2, magnitude % 100);
}

std::string fieldText(const SettingField& field, std::int32_t value) {
    switch (field.style) {
        case Style::Degrees:
            return degreesText(value);
        case Style::YesNo:
            if (value == 0 || value == 1) {
                return value == 1 ? "yes" : "no";
            }
            break;
        case Style::Choice:
            if (value >= 0 && static_cast<std::size_t>(value) < field.choices.size()) {
                return field.choices[static_cast<std::size_t>(value)];
            }
            break;
        case Style::Number:
            break;
    }
    return std::to_string(value);
}

std::string presetText(const StoredPreset& preset) {
    std::string text = degreesText(preset.pan) + " " + degreesText(preset.tilt);
    for (Byte lens : preset.lens) {
        text += " " + std::to_string(lens);
    }
    return text;
}

std::string tourText(const std::vector<TourStep>& steps) {
    std::string text;
    for (const TourStep& step : steps) {
        if (!text.empty()) {
            text += ' ';
        }
        text += std::to_string(step.presetNumber()) + "/" + std::to_string(step.camera()) + "/" +
                std::to_string(step.seconds()) + "/" + (step.blank() ? "yes" : "no");
    }
    return text;
}

std::string firmwareText(const UnitIdentity& identity) {
    return std::to_string(identity.firmwareMajor) + "." + zeroPadded(2, identity.firmwareMinor);
}

std::string clockText(const UnitIdentity& identity) {
    return zeroPadded(4, identity.clockYear) + "-" + zeroPadded(2, identity.clockMonth) + "-" +
           zeroPadded(2, identity.clockDay);
}

std::vector<Difference> differences(const UnitSettings& file, const UnitSettings& unit,
                                    bool factoryOpen) {
    std::vector<Difference> rows;
    const UnitIdentity& fileId = file.identity;
    const UnitIdentity& unitId = unit.identity;
    if (fileId.address != unitId.address) {
        rows.push_back(identityRow("unit/address", std::to_string(fileId.address),
                                   std::to_string(unitId.address), "an address is never copied"));
    }
    if (firmwareText(fileId) != firmwareText(unitId)) {
        rows.push_back(identityRow("unit/firmware", firmwareText(fileId), firmwareText(unitId),
                                   "for reference only"));
    }

    for (const SettingGroup& group : settingGroups()) {
        if (!appliesTo(group, fileId.controllerType)) {
            continue;
        }
        const std::vector<std::int32_t> wanted = file.groupValues(group);
        const std::vector<std::int32_t> found = unit.groupValues(group);
        for (std::size_t i = 0; i < group.fields.size(); ++i) {
            if (wanted[i] == found[i]) {
                continue;
            }
            const SettingField& field = group.fields[i];
            Difference row;
            row.label = settingKey(group, field);
            row.inFile = fieldText(field, wanted[i]);
            row.inUnit = fieldText(field, found[i]);
            row.group = &group;
            if (group.kind == Kind::Reference) {
                row.written = false;
                row.note = "for reference only";
            } else if (group.factory && !factoryOpen) {
                row.written = false;
                row.note = "factory area closed";
            }
            rows.push_back(row);
        }
    }

    for (int n = 0; n < kPresets; ++n) {
        const StoredPreset& wanted = file.presets[static_cast<std::size_t>(n)];
        const StoredPreset& found = unit.presets[static_cast<std::size_t>(n)];
        if (wanted != found) {
            Difference row;
            row.item = Difference::Item::Preset;
            row.label = "presets/" + std::to_string(n);
            row.inFile = presetText(wanted);
            row.inUnit = presetText(found);
            row.index = n;
            rows.push_back(row);
        }
    }
    for (int t = 0; t < kTours; ++t) {
        const auto& wanted = file.tours[static_cast<std::size_t>(t)];
        const auto& found = unit.tours[static_cast<std::size_t>(t)];
        if (wanted != found) {
            Difference row;
            row.item = Difference::Item::Tour;
            row.label = "tours/" + std::to_string(t + 1);
            row.inFile = stepsOrNone(wanted);
            row.inUnit = stepsOrNone(found);
            row.index = t;
            rows.push_back(row);
        }
    }
    return rows;
}

}  // namespace halvex::commissioning
