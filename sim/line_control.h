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

#include <cstddef>
#include <string>
#include <variant>
#include <vector>

namespace halvex::sim {

struct LineCommand {
    enum class Kind { Clean, Noise, Corrupt, Drop, Chatter, Pace, Silent };
    Kind kind = Kind::Clean;
    double rate = 0.0;  // noise, corrupt, drop
    int number = 0;     // chatter milliseconds, pace baud, silent seconds
};

// The command on one line, or what is wrong with it.
std::variant<LineCommand, std::string> parseLineCommand(const std::string& line);

// Cuts what arrives on standard input into lines and reads each one.
class LineCommandReader {
  public:
    // A line longer than this with no end in sight is not a command.
    static constexpr std::size_t kLongestLine = 512;

    // The commands (or complaints) of every line these bytes complete.
    std::vector<std::variant<LineCommand, std::string>> feed(const char* data, std::size_t size);

  private:
    std::string pending_;
};

}  // namespace halvex::sim
