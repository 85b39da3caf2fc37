#pragma once

#include <QCommandLineParser>
#include <optional>

// halvex --save-unit FILE / --restore-unit FILE [--yes] [--address N]
// [--factory-code CODE]: commissioning from a script, on the chosen port,
// without a window or a display.

// Adds the options to the console's own parser, for --help.
void addCommissioningOptions(QCommandLineParser& parser);

// Runs the command when the command line asks for one and returns its exit
// status; nothing when it does not.
std::optional<int> runCommissioningCommand(int& argc, char* argv[]);
