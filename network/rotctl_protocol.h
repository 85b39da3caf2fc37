#pragma once

// The text protocol of Hamlib's rotctld, one request line at a time, with no
// sockets: what the NET rotctl backend (rotator model 2) and tracking programs
// send, and the answer they expect.

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "network/rotator.h"

namespace halvex::network {

// Hamlib's result codes as they go on the wire in "RPRT n".
enum class RotctlCode : int {
    Ok = 0,
    InvalidParameter = -1,  // unknown command, bad or missing argument, outside limits
    NotImplemented = -4,    // a Hamlib command this server does not carry out
    IoError = -6,           // the unit is offline or has not reported a position
    ProtocolError = -8,     // a line over kMaxRotctlLineLength
    Rejected = -9,
    NotAvailable = -11,
};

inline constexpr std::size_t kMaxRotctlLineLength = 1024;

struct RotctlReply {
    std::string text;  // empty for a blank line and for quit
    bool closeConnection = false;
    std::optional<AzEl> acceptedMove;  // a set_pos the rotator took
};

RotctlCode rotctlCode(RotatorResult result);

// `line` is one request without its '\n' (a trailing '\r' is allowed).
RotctlReply answerRotctlLine(std::string_view line, Rotator& rotator);

// "RPRT n\n", what a line over the limit gets before the client is dropped.
std::string rotctlReport(RotctlCode code);

}  // namespace halvex::network
