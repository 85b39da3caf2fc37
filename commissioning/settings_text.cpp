#include "commissioning/settings_text.h"

#include <map>
#include <set>
#include <sstream>
#include <vector>

namespace halvex::commissioning {

namespace {

constexpr int kLastAddress = 99;

// ---- writing --------------------------------------------------------------

// What a reader of the file needs to know about a section's values.
const char* sectionNote(const std::string& section) {
    static const std::map<std::string, const char*> notes = {
        {"housekeeping", "comm-timeout in seconds (0 = off)"},
        {"factory", "written back only while the factory area is open"},
        {"soft-limits", "set where the platform stands: a restore drives there"},
        {"cameras",
         "baud in bits per second (off = line off); response time-outs in steps of 8 ms"},
        {"display", "lines 0..11"},
        {"reference", "kept for reference: a restore never writes these"},
    };
    const auto found = notes.find(section);
    return found == notes.end() ? nullptr : found->second;
}

void writeGroups(std::ostringstream& out, const UnitSettings& settings, bool reference) {
    std::string section;
    for (const SettingGroup& group : settingGroups()) {
        if ((group.kind == Kind::Reference) != reference ||
            !appliesTo(group, settings.identity.controllerType)) {
            continue;
        }
        if (group.section != section) {
            section = group.section;
            out << "\n[" << section << "]\n";
            if (const char* note = sectionNote(section)) {
                out << "# " << note << '\n';
            }
        }
        const std::vector<std::int32_t> values = settings.groupValues(group);
        for (std::size_t i = 0; i < group.fields.size(); ++i) {
            out << group.fields[i].name << " = " << fieldText(group.fields[i], values[i]) << '\n';
        }
    }
}

// ---- reading --------------------------------------------------------------

// `text` is the value as the file gives it; `value` what it reads as.
std::int32_t inRange(const Entry& entry, const std::string& label, std::string_view text,
                     std::optional<std::int32_t> value, std::int32_t minimum, std::int32_t maximum,
                     const SettingField* shown = nullptr) {
    if (!value) {
        refuse(lineText(entry.line) + label + " '" + std::string(text) + "' is not a valid value");
    }
    if (*value < minimum || *value > maximum) {
        const auto bound = [shown](std::int32_t v) {
            return shown != nullptr ? fieldText(*shown, v) : std::to_string(v);
        };
        refuse(lineText(entry.line) + label + " is " + std::string(text) + ", outside " +
               bound(minimum) + ".." + bound(maximum));
    }
    return *value;
}

std::int32_t fieldValue(const Entry& entry, const std::string& label, const SettingField& field) {
    std::optional<std::int32_t> value;
    switch (field.style) {
        case Style::Number:
            value = wholeNumber(entry.value);
            break;
        case Style::Degrees:
            value = hundredths(entry.value);
            break;
        case Style::YesNo:
            if (entry.value == "yes" || entry.value == "no") {
                value = entry.value == "yes" ? 1 : 0;
            } else {
                refuse(lineText(entry.line) + label + " is '" + entry.value + "', not yes or no");
            }
            break;
        case Style::Choice:
            for (const auto* names : {&field.choices, &field.formerChoices}) {
                for (std::size_t i = 0; i < names->size() && !value; ++i) {
                    if ((*names)[i] == entry.value) {
                        value = static_cast<std::int32_t>(i);
                    }
                }
            }
            if (!value) {
                std::string list;
                for (const std::string& text : field.choices) {
                    list += (list.empty() ? "" : ", ") + text;
                }
                refuse(lineText(entry.line) + label + " is '" + entry.value + "', not one of " +
                       list);
            }
            break;
    }
    return inRange(entry, label, entry.value, value, field.minimum, field.maximum, &field);
}

// "2.10" -> 2 and 10; "2026-11-25" -> 2026, 11, 25.
std::vector<std::int32_t> numbersIn(const Entry& entry, const std::string& label, char separator,
                                    std::size_t count) {
    const auto parts = split(entry.value, separator);
    std::vector<std::int32_t> numbers;
    for (std::string_view part : parts) {
        const auto value = wholeNumber(part);
        if (!value || *value < 0) {
            break;
        }
        numbers.push_back(*value);
    }
    if (parts.size() != count || numbers.size() != count) {
        refuse(lineText(entry.line) + label + " '" + entry.value + "' is not a valid value");
    }
    return numbers;
}

void readIdentity(Lines& lines, UnitSettings& settings) {
    UnitIdentity& id = settings.identity;
    const Entry& address = lines.take("unit", "address");
    id.address = inRange(address, "unit/address", address.value, wholeNumber(address.value), 0,
                         kLastAddress);
    const Entry& type = lines.take("unit", "controller-type");
    id.controllerType = inRange(type, "unit/controller-type", type.value, wholeNumber(type.value),
                                0, kControllerTypes - 1);

    const Entry& firmware = lines.take("unit", "firmware");
    const auto revision = numbersIn(firmware, "unit/firmware", '.', 2);
    id.firmwareMajor = inRange(firmware, "unit/firmware", firmware.value, revision[0], 0, 255);
    id.firmwareMinor = inRange(firmware, "unit/firmware", firmware.value, revision[1], 0, 255);

    const Entry& clock = lines.take("unit", "clock-date");
    const auto date = numbersIn(clock, "unit/clock-date", '-', 3);
    id.clockYear = inRange(clock, "unit/clock-date", clock.value, date[0], 2000, 2255);
    id.clockMonth = inRange(clock, "unit/clock-date", clock.value, date[1], 0, 255);
    id.clockDay = inRange(clock, "unit/clock-date", clock.value, date[2], 0, 255);
    settings.saved = lines.take("unit", "saved").value;
}

void readGroups(Lines& lines, UnitSettings& settings) {
    for (const SettingGroup& group : settingGroups()) {
        if (!appliesTo(group, settings.identity.controllerType)) {
            continue;
        }
        for (const SettingField& field : group.fields) {
            const std::string label = settingKey(group, field);
            settings.values[label] =
                fieldValue(lines.take(group.section, field.name), label, field);
        }
    }
}

void readPresets(Lines& lines, UnitSettings& settings) {
    for (int n = 0; n < kPresets; ++n) {
        const std::string label = "presets/" + std::to_string(n);
        const Entry& entry = lines.take("presets", std::to_string(n));
        const auto parts = words(entry.value);
        if (parts.size() != 6) {
            refuse(lineText(entry.line) + label +
                   " needs six values: pan, tilt and the four lens bytes");
        }
        StoredPreset& preset = settings.presets[static_cast<std::size_t>(n)];
        preset.pan = inRange(entry, label + " pan", parts[0], hundredths(parts[0]),
                             -kPanReportedRange, kPanReportedRange);
        preset.tilt = inRange(entry, label + " tilt", parts[1], hundredths(parts[1]),
                              -kTiltReportedRange, kTiltReportedRange);
        for (std::size_t i = 0; i < preset.lens.size(); ++i) {
            const std::string_view lens = parts[2 + i];
            preset.lens[i] =
                static_cast<Byte>(inRange(entry, label + " lens", lens, wholeNumber(lens), 0, 255));
        }
    }
}

TourStep tourStep(const Entry& entry, const std::string& label, std::string_view text) {
    const auto parts = split(text, '/');
    if (parts.size() != 4 || (parts[3] != "yes" && parts[3] != "no")) {
        refuse(lineText(entry.line) + label + " step '" + std::string(text) +
               "' is not preset/camera/dwell/blank");
    }
    const auto number = [&](const char* what, std::string_view part, std::int32_t maximum) {
        return inRange(entry, label + " " + what, part, wholeNumber(part), 0, maximum);
    };
    using Step = TourStep::Fields;
    const auto preset = number("preset", parts[0], largest(Step::kPreset));
    const auto camera = number("camera", parts[1], largest(Step::kCamera));
    const auto dwell = number("dwell", parts[2], largest(Step::kDwell));
    return TourStep::of(preset, camera, dwell, parts[3] == "yes");
}

void readTours(Lines& lines, UnitSettings& settings) {
    for (int t = 0; t < kTours; ++t) {
        const std::string label = "tours/" + std::to_string(t + 1);
        const Entry& entry = lines.take("tours", std::to_string(t + 1));
        const auto steps = words(entry.value);
        if (steps.size() > static_cast<std::size_t>(kMostTourSteps)) {
            refuse(lineText(entry.line) + label + " has more than 63 steps");
        }
        for (std::string_view step : steps) {
            settings.tours[static_cast<std::size_t>(t)].push_back(tourStep(entry, label, step));
        }
    }
}

// Every setting a file for this controller type holds.
std::set<std::string> expectedKeys(int controllerType) {
    std::set<std::string> keys{"unit/address", "unit/controller-type", "unit/firmware",
                               "unit/clock-date", "unit/saved"};
    for (const SettingGroup& group : settingGroups()) {
        if (appliesTo(group, controllerType)) {
            for (const SettingField& field : group.fields) {
                keys.insert(settingKey(group, field));
            }
        }
    }
    for (int n = 0; n < kPresets; ++n) {
        keys.insert("presets/" + std::to_string(n));
    }
    for (int t = 1; t <= kTours; ++t) {
        keys.insert("tours/" + std::to_string(t));
    }
    return keys;
}

}  // namespace

std::string writeSettingsText(const UnitSettings& settings) {
    std::ostringstream out;
    out << "# Halvex unit settings, from Unit > Save Unit Settings or halvex --save-unit.\n"
           "# Restore them with Unit > Restore Unit Settings or halvex --restore-unit.\n"
           "# Angles are in degrees as the unit reports them (offsets applied).\n"
        << kFormatLine << "\n\n[unit]\n"
        << "address = " << settings.identity.address << '\n'
        << "controller-type = " << settings.identity.controllerType << '\n'
        << "firmware = " << firmwareText(settings.identity) << '\n'
        << "clock-date = " << clockText(settings.identity) << '\n'
        << "saved = " << settings.saved << '\n';
    writeGroups(out, settings, false);

    out << "\n[presets]\n# number = pan tilt zoom-1 focus-1 zoom-2 focus-2\n";
    for (int n = 0; n < kPresets; ++n) {
        out << n << " = " << presetText(settings.presets[static_cast<std::size_t>(n)]) << '\n';
    }
    out << "\n[tours]\n# tour = steps, each preset/camera/dwell-seconds/blank-video\n";
    for (int t = 0; t < kTours; ++t) {
        const std::string steps = tourText(settings.tours[static_cast<std::size_t>(t)]);
        out << t + 1 << " =" << (steps.empty() ? "" : " ") << steps << '\n';
    }
    writeGroups(out, settings, true);
    out << "\nend\n";
    return out.str();
}

SettingsRead readSettingsText(std::string_view text) {
    SettingsRead result;
    try {
        if (text.size() > kMostBytes) {
            refuse("it is larger than any unit settings file");
        }
        std::set<std::string> sections{"unit", "presets", "tours"};
        for (const SettingGroup& group : settingGroups()) {
            sections.insert(group.section);
        }
        Lines lines(text, sections);
        UnitSettings settings;
        readIdentity(lines, settings);
        lines.refuseUnknown(expectedKeys(settings.identity.controllerType));
        readGroups(lines, settings);
        readPresets(lines, settings);
        readTours(lines, settings);
        result.settings = std::move(settings);
    } catch (const Refused& refused) {
        result.problem = refused.problem;
    }
    return result;
}

}  // namespace halvex::commissioning
