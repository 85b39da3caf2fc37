#include "network/rotctl_protocol.h"

#include <array>
#include <cctype>
#include <charconv>
#include <system_error>
#include <vector>

#include "network/rotator_angles.h"

namespace halvex::network {

namespace {

enum class Op {
    GetPos,
    SetPos,
    Stop,
    Park,
    GetInfo,
    DumpState,
    DumpCaps,
    Quit,
    NotCarriedOut,
};

struct Command {
    char shortName;  // '\0': long name only
    std::string_view longName;
    Op op;
};

// The rotctld command set. Locator arithmetic and the raw-command, move,
// reset and configuration commands belong to other kinds of rotator.
constexpr std::array kCommands{
    Command{'p', "get_pos", Op::GetPos},
    Command{'P', "set_pos", Op::SetPos},
    Command{'S', "stop", Op::Stop},
    Command{'K', "park", Op::Park},
    Command{'_', "get_info", Op::GetInfo},
    Command{'\0', "dump_state", Op::DumpState},
    Command{'1', "dump_caps", Op::DumpCaps},
    Command{'q', "quit", Op::Quit},
    Command{'Q', "quit", Op::Quit},
    Command{'M', "move", Op::NotCarriedOut},
    Command{'C', "set_conf", Op::NotCarriedOut},
    Command{'R', "reset", Op::NotCarriedOut},
    Command{'w', "send_cmd", Op::NotCarriedOut},
    Command{'L', "lonlat2loc", Op::NotCarriedOut},
    Command{'l', "loc2lonlat", Op::NotCarriedOut},
    Command{'D', "dms2dec", Op::NotCarriedOut},
    Command{'d', "dec2dms", Op::NotCarriedOut},
    Command{'E', "dmmm2dec", Op::NotCarriedOut},
    Command{'e', "dec2dmmm", Op::NotCarriedOut},
    Command{'B', "qrb", Op::NotCarriedOut},
    Command{'A', "a_sp2a_lp", Op::NotCarriedOut},
    Command{'a', "d_sp2d_lp", Op::NotCarriedOut},
    Command{'\0', "pause", Op::NotCarriedOut},
};

const Command* findCommand(std::string_view name) {
    if (name.size() > 1 && name.front() == '\\') {
        name.remove_prefix(1);
        for (const Command& command : kCommands) {
            if (command.longName == name) {
                return &command;
            }
        }
    } else if (name.size() == 1) {
        for (const Command& command : kCommands) {
            if (command.shortName != '\0' && command.shortName == name.front()) {
                return &command;
            }
        }
    }
    return nullptr;
}

bool isSpace(char c) {
    return c == ' ' || c == '\t' || c == '\r' || c == '\v' || c == '\f';
}

std::string_view trimmed(std::string_view text) {
    while (!text.empty() && isSpace(text.front())) {
        text.remove_prefix(1);
    }
    while (!text.empty() && isSpace(text.back())) {
        text.remove_suffix(1);
    }
    return text;
}

std::vector<std::string_view> tokens(std::string_view text) {
    std::vector<std::string_view> out;
    std::size_t at = 0;
    while (at < text.size()) {
        while (at < text.size() && isSpace(text[at])) {
            ++at;
        }
        const std::size_t start = at;
        while (at < text.size() && !isSpace(text[at])) {
            ++at;
        }
        if (at > start) {
            out.push_back(text.substr(start, at - start));
        }
    }
    return out;
}

// '+' asks for one record a line; any other ASCII punctuation becomes the
// record separator, except the characters Hamlib keeps for other uses.
std::optional<char> separatorFor(char first) {
    const bool punctuation = (first >= '!' && first <= '/') || (first >= ':' && first <= '@') ||
                             (first >= '[' && first <= '`') || (first >= '{' && first <= '~');
    if (!punctuation || first == '\\' || first == '?' || first == '_' || first == '#') {
        return std::nullopt;
    }
    return first == '+' ? '\n' : first;
}

// Locale-free both ways: the console runs under the operator's locale, and a
// decimal comma would break every client.
std::optional<double> parseNumber(std::string_view text) {
    if (!text.empty() && text.front() == '+') {
        text.remove_prefix(1);
        if (!text.empty() && text.front() == '-') {
            return std::nullopt;
        }
    }
    double value = 0.0;
    const char* end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, value);
    if (text.empty() || error != std::errc() || stop != end) {
        return std::nullopt;
    }
    return value;
}

std::string formatNumber(double value) {
    std::array<char, 64> text{};
    const auto [end, error] =
        std::to_chars(text.data(), text.data() + text.size(), value, std::chars_format::fixed, 6);
    const std::string printed(text.data(), error == std::errc() ? end : text.data());
    // A tracker would take "-0.000000" for a position just below zero.
    if (printed.empty() || printed == "-0.000000") {
        return "0.000000";
    }
    return printed;
}

std::string oneLine(std::string text) {
    for (char& c : text) {
        if (std::iscntrl(static_cast<unsigned char>(c)) != 0) {
            c = ' ';
        }
    }
    return text;
}

struct Record {
    std::string key;  // empty: the value stands alone, also in extended answers
    std::string value;
};

struct Outcome {
    RotctlCode code = RotctlCode::Ok;
    std::vector<Record> records;
    bool keysInPlainAnswer = false;
    // Plain answers to "get" commands end after the values; the few that run
    // to an unknown length end with the report instead.
    bool reportInPlainAnswer = false;
    std::optional<AzEl> acceptedMove;
};

Outcome failed(RotctlCode code) {
    Outcome outcome;
    outcome.code = code;
    return outcome;
}

Outcome getPosition(const Rotator& rotator) {
    const std::optional<AzEl> position = rotator.isOnline() ? rotator.position() : std::nullopt;
    if (!position) {
        return failed(RotctlCode::IoError);
    }
    Outcome outcome;
    outcome.records = {{"Azimuth", formatNumber(position->azimuth)},
                       {"Elevation", formatNumber(position->elevation)}};
    return outcome;
}

Outcome setPosition(Rotator& rotator, const std::vector<std::string_view>& args) {
    if (args.size() != 2) {
        return failed(RotctlCode::InvalidParameter);
    }
    const std::optional<double> azimuth = parseNumber(args[0]);
    const std::optional<double> elevation = parseNumber(args[1]);
    if (!azimuth || !elevation || !isAcceptedAzimuth(*azimuth) ||
        !isAcceptedElevation(*elevation)) {
        return failed(RotctlCode::InvalidParameter);
    }
    if (!rotator.isOnline()) {
        return failed(RotctlCode::IoError);
    }
    Outcome outcome = failed(rotctlCode(rotator.setPosition(*azimuth, *elevation)));
    if (outcome.code == RotctlCode::Ok) {
        outcome.acceptedMove = AzEl{*azimuth, *elevation};
    }
    return outcome;
}

template <typename Action>
Outcome whenOnline(Rotator& rotator, Action action) {
    if (!rotator.isOnline()) {
        return failed(RotctlCode::IoError);
    }
    return failed(rotctlCode(action()));
}

// What the NET rotctl backend reads when it opens: protocol version, model,
// the four limits, then key=value lines up to "done". There is no Hamlib
// model number for this unit, so it is 0, "none".
Outcome dumpState(const Rotator& rotator) {
    const RotatorLimits limits = rotator.limits();
    Outcome outcome;
    outcome.records = {{"", "1"},
                       {"", "0"},
                       {"", formatNumber(limits.minAzimuth)},
                       {"", formatNumber(limits.maxAzimuth)},
                       {"", formatNumber(limits.minElevation)},
                       {"", formatNumber(limits.maxElevation)},
                       {"", "done"}};
    return outcome;
}

Outcome dumpCaps(const Rotator& rotator) {
    const RotatorLimits limits = rotator.limits();
    Outcome outcome;
    outcome.records = {{"Model name", oneLine(rotator.info())},
                       {"Min Azimuth", formatNumber(limits.minAzimuth)},
                       {"Max Azimuth", formatNumber(limits.maxAzimuth)},
                       {"Min Elevation", formatNumber(limits.minElevation)},
                       {"Max Elevation", formatNumber(limits.maxElevation)}};
    outcome.keysInPlainAnswer = true;
    outcome.reportInPlainAnswer = true;
    return outcome;
}

Outcome carryOut(Op op, Rotator& rotator, const std::vector<std::string_view>& args) {
    const bool takesArguments = op == Op::SetPos || op == Op::NotCarriedOut;
    if (!takesArguments && !args.empty()) {
        return failed(RotctlCode::InvalidParameter);
    }
    switch (op) {
        case Op::GetPos:
            return getPosition(rotator);
        case Op::SetPos:
            return setPosition(rotator, args);
        case Op::Stop:
            return whenOnline(rotator, [&] { return rotator.stop(); });
        case Op::Park:
            return whenOnline(rotator, [&] { return rotator.park(); });
        case Op::GetInfo: {
            Outcome outcome;
            outcome.records = {{"Info", oneLine(rotator.info())}};
            return outcome;
        }
        case Op::DumpState:
            return dumpState(rotator);
        case Op::DumpCaps:
            return dumpCaps(rotator);
        case Op::Quit:
        case Op::NotCarriedOut:
            break;
    }
    return failed(RotctlCode::NotImplemented);
}

std::string record(const Record& record, bool withKey) {
    if (!withKey || record.key.empty()) {
        return record.value;
    }
    return record.key + ": " + record.value;
}

std::string plainAnswer(const Outcome& outcome) {
    if (outcome.code != RotctlCode::Ok || outcome.records.empty()) {
        return rotctlReport(outcome.code);
    }
    std::string text;
    for (const Record& each : outcome.records) {
        text += record(each, outcome.keysInPlainAnswer) + '\n';
    }
    if (outcome.reportInPlainAnswer) {
        text += rotctlReport(outcome.code);
    }
    return text;
}

// Echo of the command by its long name and arguments, the values as
// "Key: value", then the report, each record closed by the separator.
std::string extendedAnswer(const Outcome& outcome, char separator, std::string_view longName,
                           const std::vector<std::string_view>& args) {
    std::string text(longName);
    text += ':';
    for (std::string_view arg : args) {
        text += ' ';
        text += arg;
    }
    text += separator;
    if (outcome.code == RotctlCode::Ok) {
        for (const Record& each : outcome.records) {
            text += record(each, true) + separator;
        }
    }
    return text + rotctlReport(outcome.code);
}

}  // namespace

RotctlCode rotctlCode(RotatorResult result) {
    switch (result) {
        case RotatorResult::Ok:
            return RotctlCode::Ok;
        case RotatorResult::OutsideLimits:
            // Hamlib's own range check answers the same.
            return RotctlCode::InvalidParameter;
        case RotatorResult::Offline:
            return RotctlCode::IoError;
        case RotatorResult::Refused:
            return RotctlCode::Rejected;
        case RotatorResult::NotAvailable:
            return RotctlCode::NotAvailable;
    }
    return RotctlCode::Rejected;
}

std::string rotctlReport(RotctlCode code) {
    return "RPRT " + std::to_string(static_cast<int>(code)) + '\n';
}

RotctlReply answerRotctlLine(std::string_view line, Rotator& rotator) {
    RotctlReply reply;
    if (line.size() > kMaxRotctlLineLength) {
        reply.text = rotctlReport(RotctlCode::ProtocolError);
        reply.closeConnection = true;
        return reply;
    }
    std::string_view request = trimmed(line);
    if (request.empty()) {
        return reply;
    }
    const std::optional<char> separator = separatorFor(request.front());
    if (separator) {
        request.remove_prefix(1);
    }
    std::vector<std::string_view> args = tokens(request);
    const Command* command = args.empty() ? nullptr : findCommand(args.front());
    if (command == nullptr) {
        reply.text = rotctlReport(RotctlCode::InvalidParameter);
        return reply;
    }
    args.erase(args.begin());
    if (command->op == Op::Quit) {
        reply.closeConnection = true;
        return reply;
    }
    const Outcome outcome = carryOut(command->op, rotator, args);
    reply.acceptedMove = outcome.acceptedMove;
    reply.text = separator ? extendedAnswer(outcome, *separator, command->longName, args)
                           : plainAnswer(outcome);
    return reply;
}

}  // namespace halvex::network
