#pragma once

// Faults of the line between unit and console, applied to the unit's reply
// frames: garbage between frames, broken checks, lost replies, and a unit
// that falls silent. Used by the pseudo-terminal runner and, through
// FaultyLine, by anything that drives a unit in process.

#include <cstdint>
#include <optional>
#include <random>
#include <vector>

#include "protocol/frame.h"
#include "protocol/unit_peer.h"
#include "sim/unit.h"

namespace halvex::sim {

struct LineFaultOptions {
    double noise = 0.0;    // chance of garbage bytes before a reply
    double corrupt = 0.0;  // chance of a reply with a wrong LRC
    double drop = 0.0;     // chance of a reply never sent
    // Replies sent before the unit stops answering altogether.
    std::optional<std::uint64_t> silentAfter;
    std::uint32_t randomStart = 1;

    bool any() const { return noise > 0 || corrupt > 0 || drop > 0 || silentAfter.has_value(); }
};

class LineFaults {
  public:
    explicit LineFaults(const LineFaultOptions& options)
        : options_(options), random_(options.randomStart) {}

    // What goes on the wire for these reply frames.
    std::vector<Byte> apply(const std::vector<std::vector<Byte>>& frames);

    // Other faults from now on; the count of replies sent goes on.
    void setOptions(const LineFaultOptions& options) { options_ = options; }
    const LineFaultOptions& options() const { return options_; }

    // A reply nobody asked for, as on a line shared with a chattering unit:
    // any code, a few payload bytes, an LRC that a console talking to
    // `unitId` accepts; one in five is cut short.
    std::vector<Byte> chatter(Byte unitId);

  private:
    bool chance(double probability);
    void appendNoise(std::vector<Byte>& wire);

    LineFaultOptions options_;
    std::mt19937 random_;
    std::uint64_t sent_ = 0;
};

// Breaks the LRC of one wire frame, keeping it a well-formed frame.
void corruptLrc(std::vector<Byte>& frame);

// A unit seen through a faulty line.
class FaultyLine : public UnitPeer {
  public:
    FaultyLine(Unit& unit, const LineFaultOptions& options) : unit_(unit), faults_(options) {}

    void receiveFromConsole(const std::uint8_t* data, std::size_t size) override {
        unit_.receiveFromConsole(data, size);
    }
    void advanceTo(std::int64_t nowMs) override { unit_.advanceTo(nowMs); }
    std::vector<std::uint8_t> takeOutput() override { return faults_.apply(unit_.takeFrames()); }

  private:
    Unit& unit_;
    LineFaults faults_;
};

}  // namespace halvex::sim
