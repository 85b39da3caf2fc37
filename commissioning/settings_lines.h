#pragma once

// The shape of a unit settings file before anything is made of its values:
// the format line first, the line "end" last, [sections] and "name = value"
// lines between; and how numbers are spelled in it. Whatever is wrong is
// refused by throwing Refused, which the reader turns into its problem.

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace halvex::commissioning {

constexpr const char* kFormatLine = "halvex-unit-settings 1";

struct Refused {
    std::string problem;
};

[[noreturn]] void refuse(std::string problem);
// "line 12: ", to begin a problem found on that line.
std::string lineText(int line);

// Pieces between separators, empty ones included: "a//b" has three.
std::vector<std::string_view> split(std::string_view text, char separator);
// Words between blanks and tabs.
std::vector<std::string_view> words(std::string_view text);
// A whole number of at most nine digits with an optional minus sign.
std::optional<std::int32_t> wholeNumber(std::string_view text);
// "-12.3" -> -1230: degrees with at most two decimals, as hundredths.
std::optional<std::int32_t> hundredths(std::string_view text);

struct Entry {
    std::string value;
    int line = 0;
};

// The file's lines, checked for shape, by section and name.
class Lines {
  public:
    // Refuses a file that is not a settings file, is cut short, or has a
    // line of the wrong shape, a section not in `knownSections`, or a
    // section or setting twice.
    Lines(std::string_view text, const std::set<std::string>& knownSections);

    // The value named `name` in `section`; refuses when there is none.
    const Entry& take(const std::string& section, const std::string& name);
    // Refuses the first setting that is not one of `expected` ("speeds/pan-ramp").
    void refuseUnknown(const std::set<std::string>& expected) const;

  private:
    void addEntry(const std::string& section, std::string_view line, int number);

    std::map<std::string, std::map<std::string, Entry>> sections_;
};

}  // namespace halvex::commissioning
