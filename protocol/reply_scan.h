#pragma once

// Finds one reply among the bytes waiting in the port without taking any of
// them. The receive path looks ahead with this, and takes bytes out of the
// port only once it knows what they are: a reply whose end has not arrived
// yet stays where it is until more bytes come or the line has settled.
// Plain C++, no Qt.

#include <cstddef>
#include <optional>
#include <vector>

#include "protocol/frame.h"

namespace halvex {

struct ReplyScan {
    enum class Outcome {
        // A reply has begun and its end may still come: take nothing yet.
        Unfinished,
        // No reply starts among the bytes (or only a 0x06 as the very last
        // byte, and nothing followed it): all of them are noise.
        NoStart,
        // The reply began but the line went quiet before its 0x03.
        RanDry,
        // The reply ran on past what the receive buffer holds.
        Overlong,
        // The reply ended on a raw 0x03. Its LRC is not checked here.
        Ended,
    };

    Outcome outcome = Outcome::Unfinished;
    // Bytes to take out of the port: the noise before the reply and the reply
    // itself, never the bytes after its 0x03.
    std::size_t used = 0;
    // Where the reply's 0x06 is among them; the bytes before it are noise
    // (all of them when no reply starts).
    std::size_t start = 0;
    // The unstuffed address, once it has been read.
    std::optional<Byte> address;
    // Code, payload, LRC and 0x03, unstuffed: what goes into RxBuffer.
    std::vector<Byte> body;
    // What the capture line shows from the 0x06 on: 1B before every value
    // that travelled escaped, the address's escape too.
    std::vector<Byte> capture;
};

// `settled`: the line has been quiet for a while, so nothing more of an
// unfinished reply is coming; it is then given up (RanDry, or NoStart for a
// lone 0x06) instead of waited for. An escape whose partner never came is
// taken as the byte 0x1B itself.
ReplyScan scanReply(const std::vector<Byte>& waiting, bool settled);

}  // namespace halvex
