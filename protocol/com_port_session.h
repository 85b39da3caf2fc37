#pragma once

// The console's side of a device server's RFC 2217 port: telnet with the com
// port control option. The console asks to control the remote serial port
// and, once the server agrees, sets its speed and the console's character
// format (8 data bits, no parity, one stop bit, no flow control). Options it
// has no use for are refused; binary transmission and suppress-go-ahead are
// accepted. Plain C++, no Qt, so it can be fuzzed and tested on its own.

#include <array>
#include <cstdint>
#include <optional>
#include <vector>

#include "protocol/telnet.h"

namespace halvex {

class ComPortSession {
  public:
    // Com port commands, client to server; the server's answer to each
    // carries the same number plus 100.
    static constexpr Byte kSetBaudRate = 1;
    static constexpr Byte kSetDataSize = 2;
    static constexpr Byte kSetParity = 3;
    static constexpr Byte kSetStopSize = 4;
    static constexpr Byte kSetControl = 5;
    static constexpr Byte kServerOffset = 100;

    static constexpr Byte kEightDataBits = 8;
    static constexpr Byte kNoParity = 1;
    static constexpr Byte kOneStopBit = 1;
    static constexpr Byte kNoFlowControl = 1;

    explicit ComPortSession(std::uint32_t baudRate);

    // What goes out as soon as the connection is made: WILL COM-PORT-OPTION
    // and the requests for binary transmission both ways.
    std::vector<Byte> opening();

    // The server's bytes: the data they carry is appended to `data`, and
    // what must be sent back (negotiation answers, the port settings) to
    // `replies`.
    void receive(const Byte* bytes, std::size_t count, std::vector<Byte>& data,
                 std::vector<Byte>& replies);

    // The server has answered the com port option, either way. Data written
    // before that waits, so that it reaches the line at the chosen speed.
    bool settled() const { return comPort_ != ComPort::Asked; }
    // The server refused to let the console set its port.
    bool refused() const { return comPort_ == ComPort::Refused; }

    // What the server reports having set, once it has.
    std::optional<std::uint32_t> serverBaudRate() const { return serverBaudRate_; }
    // The data size, parity and stop size the server reports, by the codes
    // of kEightDataBits, kNoParity and kOneStopBit.
    bool serverFormatDiffers() const { return formatDiffers_; }

    // The negotiated state of an option on the console's side (WILL) and the
    // server's side (DO).
    bool consoleWill(Byte option) const { return us_[option] == Side::Yes; }
    bool serverWill(Byte option) const { return him_[option] == Side::Yes; }

  private:
    // An option's state on one side, after RFC 1143: a request of ours is
    // answered, never echoed back, so negotiation cannot loop.
    enum class Side : std::uint8_t { No, Yes, WantYes };
    enum class ComPort { Asked, Agreed, Refused };

    void negotiate(const telnet::Command& command, std::vector<Byte>& replies);
    // The server asks the console to enable (`enable`) or disable an option
    // on one side; answers with `yes` or `no` where a reply is due.
    void answer(std::array<Side, 256>& side, Byte option, bool enable, bool acceptable, Byte yes,
                Byte no, std::vector<Byte>& replies);
    void comPortReply(const std::vector<Byte>& payload);
    void sendPortSettings(std::vector<Byte>& replies);

    std::uint32_t baudRate_;
    telnet::Decoder decoder_;
    std::vector<telnet::Command> commands_;
    std::array<Side, 256> us_{};
    std::array<Side, 256> him_{};
    ComPort comPort_ = ComPort::Asked;
    std::optional<std::uint32_t> serverBaudRate_;
    bool formatDiffers_ = false;
};

}  // namespace halvex
