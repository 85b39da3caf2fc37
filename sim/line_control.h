#pragma once

// Changes to the line while halvex-sim runs, one command a line on its
// standard input (with --control): a training room or a soak run moves the
// line from clean to noisy and back without unplugging the unit.
//
//   clean            no faults, no chatter, no pacing, answering
//   noise RATE       chance (0..1) of garbage bytes before a reply
//   corrupt RATE     chance (0..1) of a reply with a bad LRC
//   drop RATE        chance (0..1) of a reply never sent
//   chatter MS       a random well-formed reply every MS ms, one in five cut
//                    short (0 stops it)
//   pace BAUD        replies byte by byte at this speed (0: whole replies)
//   silent SECONDS   answer nothing for that long

#include <string>
#include <variant>

namespace halvex::sim {

struct LineCommand {
    enum class Kind { Clean, Noise, Corrupt, Drop, Chatter, Pace, Silent };
    Kind kind = Kind::Clean;
    double rate = 0.0;  // noise, corrupt, drop
    int number = 0;     // chatter milliseconds, pace baud, silent seconds
};

// The command on one line, or what is wrong with it.
std::variant<LineCommand, std::string> parseLineCommand(const std::string& line);

}  // namespace halvex::sim
