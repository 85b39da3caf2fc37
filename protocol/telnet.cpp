#include "protocol/telnet.h"

namespace halvex::telnet {

namespace {
bool isNegotiation(Byte verb) {
    return verb == kWill || verb == kWont || verb == kDo || verb == kDont;
}
}  // namespace

void Decoder::startCommand(Byte value, std::vector<Command>& commands) {
    current_ = Command{};
    current_.verb = value;
    if (isNegotiation(value) || value == kSb) {
        state_ = State::Option;
        return;
    }
    // NOP, GA, a stray SE and anything else: a command without an option.
    commands.push_back(current_);
    state_ = State::Data;
}

void Decoder::feed(const Byte* bytes, std::size_t count, std::vector<Byte>& data,
                   std::vector<Command>& commands) {
    for (std::size_t i = 0; i < count; ++i) {
        const Byte value = bytes[i];
        switch (state_) {
            case State::Data:
                if (value == kIac) {
                    state_ = State::Command;
                } else {
                    data.push_back(value);
                }
                break;
            case State::Command:
                if (value == kIac) {
                    data.push_back(kIac);  // a doubled 0xFF
                    state_ = State::Data;
                } else {
                    startCommand(value, commands);
                }
                break;
            case State::Option:
                current_.option = value;
                if (current_.verb == kSb) {
                    state_ = State::Sub;
                } else {
                    commands.push_back(current_);
                    state_ = State::Data;
                }
                break;
            case State::Sub:
                if (value == kIac) {
                    state_ = State::SubIac;
                } else if (current_.payload.size() < kMaxPayload) {
                    current_.payload.push_back(value);
                }
                break;
            case State::SubIac:
                if (value == kIac) {
                    if (current_.payload.size() < kMaxPayload) {
                        current_.payload.push_back(kIac);
                    }
                    state_ = State::Sub;
                } else if (value == kSe) {
                    commands.push_back(current_);
                    state_ = State::Data;
                } else {
                    // IAC and a command inside a subnegotiation: the server
                    // broke it off. Drop it and take the command as it comes.
                    startCommand(value, commands);
                }
                break;
        }
    }
}

void appendData(Byte value, std::vector<Byte>& wire) {
    wire.push_back(value);
    if (value == kIac) {
        wire.push_back(kIac);
    }
}

void appendNegotiation(Byte verb, Byte option, std::vector<Byte>& wire) {
    wire.insert(wire.end(), {kIac, verb, option});
}

void appendSubnegotiation(Byte option, const std::vector<Byte>& payload, std::vector<Byte>& wire) {
    wire.insert(wire.end(), {kIac, kSb, option});
    for (Byte value : payload) {
        appendData(value, wire);
    }
    wire.insert(wire.end(), {kIac, kSe});
}

}  // namespace halvex::telnet
