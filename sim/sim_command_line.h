#pragma once

// The command line of halvex-sim.

#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "sim/pty_unit_options.h"

namespace halvex::sim {

struct SimCommandLine {
    PtyUnitOptions options;
    std::string link;    // symbolic link to the device, when asked for
    std::string replay;  // a recording to answer from instead of the model
    // Listen on this TCP port instead of a pseudo-terminal (0: a free one).
    std::optional<int> tcpPort;
    bool verbose = false;
    // Line commands are read from standard input.
    bool control = false;
    bool help = false;
    bool version = false;
};

// The parsed options, or a message saying what is wrong.
std::variant<SimCommandLine, std::string> parseSimCommandLine(const std::vector<std::string>& args);

std::string simUsage();

}  // namespace halvex::sim
