#pragma once

// The command line of halvex-sim.

#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "sim/pty_unit_options.h"

namespace halvex::sim {

// --video and the options that go with it.
struct VideoCommandLine {
    // Serve the two video outputs over RTSP on this port (0: a free one).
    std::optional<int> port;
    std::string address = "127.0.0.1";
    // Each overrides the video mode's standard when not 0.
    int width = 0;
    int height = 0;
    int rate = 0;
};

struct SimCommandLine {
    PtyUnitOptions options;
    std::string link;    // symbolic link to the device, when asked for
    std::string replay;  // a recording to answer from instead of the model
    // Listen on this TCP port instead of a pseudo-terminal (0: a free one).
    std::optional<int> tcpPort;
    VideoCommandLine video;
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
