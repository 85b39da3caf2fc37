#include "commissioning/settings_text.h"

#include <algorithm>
#include <charconv>
#include <map>
#include <set>
#include <sstream>
#include <vector>

namespace halvex::commissioning {

namespace {

constexpr int kLastAddress = 99;
constexpr int kPresetBits = 63;
constexpr int kLastCamera = 3;
constexpr int kLongestDwell = 127;

// ---- writing --------------------------------------------------------------

// What a reader of the file needs to know about a section's values.
const char* sectionNote(const std::string& section) {
    static const std::map<std::string, const char*> notes = {
        {"housekeeping", "comm-timeout in seconds (0 = off)"},
        {"factory", "written back only while the factory area is open"},
        {"soft-limits", "set where the platform stands: a restore drives there"},
        {"cameras", "baud in kilobaud (Dis = line off); response time-outs in steps of 8 ms"},
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

struct Refused {
    std::string problem;
};

[[noreturn]] void refuse(std::string problem) {
    throw Refused{std::move(problem)};
}

std::string lineText(int line) {
    return "line " + std::to_string(line) + ": ";
}

std::string_view trimmed(std::string_view text) {
    const auto first = text.find_first_not_of(" \t\r");
    if (first == std::string_view::npos) {
        return {};
    }
    const auto last = text.find_last_not_of(" \t\r");
    return text.substr(first, last - first + 1);
}

// Pieces between separators, empty ones included: "a//b" has three.
std::vector<std::string_view> split(std::string_view text, char separator) {
    std::vector<std::string_view> result;
    std::size_t start = 0;
    while (true) {
        const auto end = text.find(separator, start);
        if (end == std::string_view::npos) {
            result.push_back(text.substr(start));
            return result;
        }
        result.push_back(text.substr(start, end - start));
        start = end + 1;
    }
}

// Words between blanks and tabs.
std::vector<std::string_view> words(std::string_view text) {
    std::vector<std::string_view> result;
    std::size_t start = 0;
    while (true) {
        start = text.find_first_not_of(" \t", start);
        if (start == std::string_view::npos) {
            return result;
        }
        const auto end = text.find_first_of(" \t", start);
        result.push_back(text.substr(start, end == std::string_view::npos ? end : end - start));
        if (end == std::string_view::npos) {
            return result;
        }
        start = end;
    }
}

// A whole number of at most nine digits with an optional minus sign.
std::optional<std::int32_t> wholeNumber(std::string_view text) {
    const std::size_t digits = text.size() - (text.starts_with('-') ? 1 : 0);
    if (digits == 0 || digits > 9 || text.starts_with('+')) {
        return std::nullopt;
    }
    std::int32_t value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size()) {
        return std::nullopt;
    }
    return value;
}

// "-12.3" -> -1230: degrees with at most two decimals, as hundredths.
std::optional<std::int32_t> hundredths(std::string_view text) {
    const bool negative = text.starts_with('-');
    if (negative) {
        text.remove_prefix(1);
    }
    const auto point = text.find('.');
    const std::string_view whole = text.substr(0, point);
    const std::string_view fraction =
        point == std::string_view::npos ? std::string_view() : text.substr(point + 1);
    if (whole.empty() || whole.size() > 7 ||
        (point != std::string_view::npos && fraction.empty()) || fraction.size() > 2 ||
        whole.starts_with('-') || fraction.starts_with('-')) {
        return std::nullopt;
    }
    const auto degrees = wholeNumber(whole);
    const auto part = fraction.empty() ? std::optional<std::int32_t>(0) : wholeNumber(fraction);
    if (!degrees || !part) {
        return std::nullopt;
    }
    const std::int32_t scaled = fraction.size() == 1 ? *part * 10 : *part;
    const std::int32_t value = *degrees * 100 + scaled;
    return negative ? -value : value;
}

struct Entry {
    std::string value;
    int line = 0;
};

// The file's lines, checked for shape, by section and name.
class Lines {
  public:
    explicit Lines(std::string_view text) { parse(text); }

    // The value named `name` in `section`.
    const Entry& take(const std::string& section, const std::string& name) {
        auto& entries = sections_[section];
        const auto found = entries.find(name);
        if (found == entries.end()) {
            refuse("the setting " + section + "/" + name + " is missing");
        }
        return found->second;
    }

    // Refuses the first setting that is not one of `expected` ("speeds/pan-ramp").
    void refuseUnknown(const std::set<std::string>& expected) const {
        const Entry* first = nullptr;
        std::string label;
        for (const auto& [section, entries] : sections_) {
            for (const auto& [name, entry] : entries) {
                const std::string key = section + "/" + name;
                if (!expected.count(key) && (first == nullptr || entry.line < first->line)) {
                    first = &entry;
                    label = key;
                }
            }
        }
        if (first != nullptr) {
            refuse(lineText(first->line) + "unknown setting " + label);
        }
    }

  private:
    void parse(std::string_view text) {
        // The lines that say something, with their numbers.
        std::vector<std::pair<int, std::string_view>> lines;
        int number = 0;
        for (std::string_view raw : split(text, '\n')) {
            ++number;
            const std::string_view line = trimmed(raw);
            if (!line.empty() && !line.starts_with('#')) {
                lines.emplace_back(number, line);
            }
        }
        if (lines.empty() || lines.front().second != kFormatLine) {
            refuse(!lines.empty() && lines.front().second.starts_with("halvex-unit-settings")
                       ? "it is written in a newer format than this console reads"
                       : "it is not a unit settings file");
        }
        // Checked before anything else: a file cut short is the likeliest fault.
        const auto end = std::find_if(lines.begin() + 1, lines.end(),
                                      [](const auto& line) { return line.second == "end"; });
        if (end == lines.end()) {
            refuse("it is cut short: the line 'end' is missing");
        }
        if (end + 1 != lines.end()) {
            refuse(lineText((end + 1)->first) + "there is more after the line 'end'");
        }

        const std::set<std::string> known = knownSections();
        std::set<std::string> seen;
        std::string section;
        for (auto line = lines.begin() + 1; line != end; ++line) {
            const auto [at, content] = *line;
            if (!content.starts_with('[')) {
                addEntry(section, content, at);
                continue;
            }
            const std::string name(content.size() > 2 ? content.substr(1, content.size() - 2) : "");
            if (!content.ends_with(']') || !known.count(name)) {
                refuse(lineText(at) + "unknown section " + std::string(content));
            }
            if (!seen.insert(name).second) {
                refuse(lineText(at) + "the section [" + name + "] comes twice");
            }
            section = name;
        }
    }

    void addEntry(const std::string& section, std::string_view line, int number) {
        const auto equals = line.find('=');
        if (equals == std::string_view::npos) {
            refuse(lineText(number) + "expected 'name = value'");
        }
        if (section.empty()) {
            refuse(lineText(number) + "a setting before the first [section]");
        }
        const std::string name(trimmed(line.substr(0, equals)));
        Entry entry{std::string(trimmed(line.substr(equals + 1))), number};
        if (name.empty()) {
            refuse(lineText(number) + "expected 'name = value'");
        }
        if (!sections_[section].emplace(name, std::move(entry)).second) {
            refuse(lineText(number) + "the setting " + section + "/" + name + " comes twice");
        }
    }

    static std::set<std::string> knownSections() {
        std::set<std::string> names{"unit", "presets", "tours"};
        for (const SettingGroup& group : settingGroups()) {
            names.insert(group.section);
        }
        return names;
    }

    std::map<std::string, std::map<std::string, Entry>> sections_;
};

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
            for (std::size_t i = 0; i < field.choices.size(); ++i) {
                if (field.choices[i] == entry.value) {
                    value = static_cast<std::int32_t>(i);
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
    const auto preset = number("preset", parts[0], kPresetBits);
    const auto camera = number("camera", parts[1], kLastCamera);
    const auto dwell = number("dwell", parts[2], kLongestDwell);
    return TourStep{static_cast<Byte>(preset | (camera << 6)),
                    static_cast<Byte>(dwell | (parts[3] == "yes" ? 0x80 : 0))};
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
        Lines lines(text);
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
