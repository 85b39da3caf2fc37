#pragma once

#include "app/command_line.h"

namespace halvex {

// halvex --headless: the session with no window and no display. Connects to
// the unit on the chosen line, serves network control when asked, reports
// on stderr in the console's words, looks for a lost unit again by itself,
// and on SIGTERM or SIGINT stops the platform before it exits (status 0).
int runHeadless(int& argc, char* argv[], const CommandLine& commandLine);

}  // namespace halvex
