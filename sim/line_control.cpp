#include "sim/line_control.h"

#include <charconv>
#include <sstream>

namespace halvex::sim {

namespace {
bool wholeNumber(const std::string& text, int low, int high, int& value) {
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    return error == std::errc() && end == text.data() + text.size() && value >= low &&
           value <= high;
}

bool chance(const std::string& text, double& value) {
    std::istringstream in(text);
    in >> value;
    return in && in.peek() == std::char_traits<char>::eof() && value >= 0.0 && value <= 1.0;
}
}  // namespace

std::variant<LineCommand, std::string> parseLineCommand(const std::string& line) {
    std::istringstream words(line);
    std::string name;
    std::string argument;
    std::string extra;
    words >> name >> argument >> extra;
    if (!extra.empty()) {
        return "too many words: " + line;
    }
    LineCommand command;
    if (name == "clean") {
        if (!argument.empty()) {
            return "clean takes no value";
        }
        return command;
    }
    struct Named {
        const char* name;
        LineCommand::Kind kind;
        bool isRate;
        int low;
        int high;
    };
    static const Named kCommands[] = {
        {"noise", LineCommand::Kind::Noise, true, 0, 0},
        {"corrupt", LineCommand::Kind::Corrupt, true, 0, 0},
        {"drop", LineCommand::Kind::Drop, true, 0, 0},
        {"chatter", LineCommand::Kind::Chatter, false, 0, 60000},
        {"pace", LineCommand::Kind::Pace, false, 0, 4000000},
        {"silent", LineCommand::Kind::Silent, false, 0, 3600},
    };
    for (const Named& entry : kCommands) {
        if (name != entry.name) {
            continue;
        }
        command.kind = entry.kind;
        const bool good = entry.isRate
                              ? chance(argument, command.rate)
                              : wholeNumber(argument, entry.low, entry.high, command.number);
        if (!good) {
            return "bad value for " + name + ": " + argument;
        }
        if (command.kind == LineCommand::Kind::Pace && command.number > 0 && command.number < 50) {
            return "bad value for pace: " + argument;
        }
        return command;
    }
    return "unknown command: " + name;
}

std::vector<std::variant<LineCommand, std::string>> LineCommandReader::feed(const char* data,
                                                                            std::size_t size) {
    std::vector<std::variant<LineCommand, std::string>> commands;
    for (std::size_t i = 0; i < size; ++i) {
        if (data[i] != '\n') {
            if (pending_.size() < kLongestLine) {
                pending_.push_back(data[i]);
            }
            continue;
        }
        if (pending_.size() >= kLongestLine) {
            commands.emplace_back(std::string("line too long"));
        } else {
            commands.push_back(parseLineCommand(pending_));
        }
        pending_.clear();
    }
    return commands;
}

}  // namespace halvex::sim
