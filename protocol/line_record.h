#pragma once

// One thing that happened on the line, as the Line Log keeps it and a
// recording stores it: a frame sent, bytes received with the console's
// verdict on them, or a link event. Plain C++, no Qt.

#include <cstdint>
#include <string>
#include <vector>

#include "protocol/frame.h"

namespace halvex::recording {

enum class LineKind { Sent, Received, Event };

// What the console made of what it read; frames it sent are Good.
enum class Verdict {
    Good,
    BadLrc,  // a whole reply whose LRC did not add up
    Cut,     // the line ran dry before the ETX
    Noise,   // bytes outside any reply, thrown away
};

struct LineRecord {
    std::int64_t timeUs = 0;  // microseconds since 1970-01-01 UTC
    LineKind kind = LineKind::Sent;
    Verdict verdict = Verdict::Good;
    std::vector<Byte> bytes;  // the frame as on the wire; an event's text in UTF-8

    std::string text() const { return {bytes.begin(), bytes.end()}; }
};

inline LineRecord eventRecord(std::int64_t timeUs, const std::string& text) {
    LineRecord record;
    record.timeUs = timeUs;
    record.kind = LineKind::Event;
    record.bytes.assign(text.begin(), text.end());
    return record;
}

}  // namespace halvex::recording
