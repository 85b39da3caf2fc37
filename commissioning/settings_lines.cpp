#include "commissioning/settings_lines.h"

#include <algorithm>
#include <charconv>

namespace halvex::commissioning {

namespace {

std::string_view trimmed(std::string_view text) {
    const auto first = text.find_first_not_of(" \t\r");
    if (first == std::string_view::npos) {
        return {};
    }
    const auto last = text.find_last_not_of(" \t\r");
    return text.substr(first, last - first + 1);
}

}  // namespace

[[noreturn]] void refuse(std::string problem) {
    throw Refused{std::move(problem)};
}

std::string lineText(int line) {
    return "line " + std::to_string(line) + ": ";
}

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

Lines::Lines(std::string_view text, const std::set<std::string>& known) {
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

void Lines::addEntry(const std::string& section, std::string_view line, int number) {
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

const Entry& Lines::take(const std::string& section, const std::string& name) {
    auto& entries = sections_[section];
    const auto found = entries.find(name);
    if (found == entries.end()) {
        refuse("the setting " + section + "/" + name + " is missing");
    }
    return found->second;
}

void Lines::refuseUnknown(const std::set<std::string>& expected) const {
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

}  // namespace halvex::commissioning
