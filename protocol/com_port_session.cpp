#include "protocol/com_port_session.h"

namespace halvex {

using namespace telnet;

namespace {
// Options the console takes on on its own side (WILL) and lets the server
// take on (DO). Everything else is refused.
bool consoleTakesOn(Byte option) {
    return option == kBinary || option == kSuppressGoAhead || option == kComPort;
}
bool serverMayTakeOn(Byte option) {
    return option == kBinary || option == kSuppressGoAhead;
}
}  // namespace

ComPortSession::ComPortSession(std::uint32_t baudRate) : baudRate_(baudRate) {}

std::vector<Byte> ComPortSession::opening() {
    std::vector<Byte> wire;
    us_[kComPort] = Side::WantYes;
    appendNegotiation(kWill, kComPort, wire);
    us_[kBinary] = Side::WantYes;
    appendNegotiation(kWill, kBinary, wire);
    him_[kBinary] = Side::WantYes;
    appendNegotiation(kDo, kBinary, wire);
    return wire;
}

void ComPortSession::receive(const Byte* bytes, std::size_t count, std::vector<Byte>& data,
                             std::vector<Byte>& replies) {
    commands_.clear();
    decoder_.feed(bytes, count, data, commands_);
    for (const Command& command : commands_) {
        if (command.verb == kSb) {
            if (command.option == kComPort) {
                comPortReply(command.payload);
            }
        } else {
            negotiate(command, replies);
        }
    }
}

void ComPortSession::negotiate(const Command& command, std::vector<Byte>& replies) {
    const Byte option = command.option;
    switch (command.verb) {
        case kWill:
        case kWont:
            answer(him_, option, command.verb == kWill, serverMayTakeOn(option), kDo, kDont,
                   replies);
            break;
        case kDo:
        case kDont:
            answer(us_, option, command.verb == kDo, consoleTakesOn(option), kWill, kWont, replies);
            break;
        default:
            return;  // NOP, GA and the like carry nothing for the console
    }
    if (option == kComPort && comPort_ == ComPort::Asked) {
        if (us_[kComPort] == Side::Yes) {
            comPort_ = ComPort::Agreed;
            sendPortSettings(replies);
        } else if (us_[kComPort] == Side::No) {
            comPort_ = ComPort::Refused;
        }
    }
}

void ComPortSession::answer(std::array<Side, 256>& side, Byte option, bool enable, bool acceptable,
                            Byte yes, Byte no, std::vector<Byte>& replies) {
    Side& state = side[option];
    if (enable) {
        if (state == Side::No) {
            if (acceptable) {
                state = Side::Yes;
                appendNegotiation(yes, option, replies);
            } else {
                appendNegotiation(no, option, replies);
            }
        } else {
            state = Side::Yes;  // already on, or the answer to our own request
        }
        return;
    }
    if (state == Side::Yes) {
        appendNegotiation(no, option, replies);
    }
    state = Side::No;  // off, or our request refused: no answer to a refusal
}

void ComPortSession::sendPortSettings(std::vector<Byte>& replies) {
    appendSubnegotiation(
        kComPort,
        {kSetBaudRate, static_cast<Byte>(baudRate_ >> 24), static_cast<Byte>(baudRate_ >> 16),
         static_cast<Byte>(baudRate_ >> 8), static_cast<Byte>(baudRate_)},
        replies);
    appendSubnegotiation(kComPort, {kSetDataSize, kEightDataBits}, replies);
    appendSubnegotiation(kComPort, {kSetParity, kNoParity}, replies);
    appendSubnegotiation(kComPort, {kSetStopSize, kOneStopBit}, replies);
    appendSubnegotiation(kComPort, {kSetControl, kNoFlowControl}, replies);
}

void ComPortSession::comPortReply(const std::vector<Byte>& payload) {
    if (payload.empty()) {
        return;
    }
    const Byte command = payload[0];
    if (command == kServerOffset + kSetBaudRate && payload.size() == 5) {
        serverBaudRate_ = static_cast<std::uint32_t>(payload[1]) << 24 |
                          static_cast<std::uint32_t>(payload[2]) << 16 |
                          static_cast<std::uint32_t>(payload[3]) << 8 | payload[4];
        return;
    }
    if (payload.size() != 2) {
        return;  // line and modem state notices, and what the console did not ask
    }
    const Byte value = payload[1];
    if ((command == kServerOffset + kSetDataSize && value != kEightDataBits) ||
        (command == kServerOffset + kSetParity && value != kNoParity) ||
        (command == kServerOffset + kSetStopSize && value != kOneStopBit)) {
        formatDiffers_ = true;
    }
}

}  // namespace halvex
