#pragma once

// The telnet layer a device server speaks on its RFC 2217 ports: commands
// start with IAC (0xFF), a data byte 0xFF travels doubled, and option
// subnegotiations run from IAC SB to IAC SE. Plain C++, no Qt.

#include <cstddef>
#include <vector>

#include "protocol/frame.h"

namespace halvex::telnet {

constexpr Byte kIac = 255;
constexpr Byte kDont = 254;
constexpr Byte kDo = 253;
constexpr Byte kWont = 252;
constexpr Byte kWill = 251;
constexpr Byte kSb = 250;
constexpr Byte kSe = 240;

constexpr Byte kBinary = 0;
constexpr Byte kEcho = 1;
constexpr Byte kSuppressGoAhead = 3;
constexpr Byte kComPort = 44;

// One command found among the server's bytes.
struct Command {
    // kWill, kWont, kDo, kDont, kSb, or another command byte (NOP, GA, ...).
    Byte verb = 0;
    // The option of WILL, WONT, DO, DONT and SB; 0 for other commands.
    Byte option = 0;
    // What a subnegotiation carries between its option and IAC SE, 0xFF
    // undoubled.
    std::vector<Byte> payload;

    bool operator==(const Command&) const = default;
};

// Splits the bytes from the server into the data they carry and the commands
// among them. Keeps its place between calls, so a command cut across two
// reads is found whole.
class Decoder {
  public:
    // A subnegotiation's payload is kept up to this size; the rest of an
    // overlong one is skipped. The com port replies carry at most four bytes.
    static constexpr std::size_t kMaxPayload = 64;

    void feed(const Byte* bytes, std::size_t count, std::vector<Byte>& data,
              std::vector<Command>& commands);

  private:
    enum class State { Data, Command, Option, Sub, SubIac };
    // `value` is the byte after IAC, and not another IAC.
    void startCommand(Byte value, std::vector<Command>& commands);

    State state_ = State::Data;
    Command current_;
};

// A data byte as it goes on the wire: 0xFF doubled.
void appendData(Byte value, std::vector<Byte>& wire);
// IAC `verb` `option` (WILL, WONT, DO, DONT).
void appendNegotiation(Byte verb, Byte option, std::vector<Byte>& wire);
// IAC SB `option` payload IAC SE, 0xFF in the payload doubled.
void appendSubnegotiation(Byte option, const std::vector<Byte>& payload, std::vector<Byte>& wire);

}  // namespace halvex::telnet
