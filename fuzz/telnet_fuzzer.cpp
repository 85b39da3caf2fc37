// libFuzzer target for what a device server's RFC 2217 port sends the
// console: the bytes go through the telnet layer and the com port session
// in pieces, as reads from the network cut them. Besides a crash or a
// sanitizer report, a finding is
//   - an answer that is not well-formed telnet, or one that agrees to an
//     option the console does not take on;
//   - more answered than the server asked (a negotiation loop), or the port
//     settings sent twice;
//   - data or answers that depend on where the reads broke.
//
// Input: the first byte sets the size of the pieces (1..16), the rest is
// what the server sends.

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <vector>

#include "protocol/com_port_session.h"
#include "protocol/telnet.h"

namespace {

using halvex::Byte;
using halvex::ComPortSession;
namespace telnet = halvex::telnet;

[[noreturn]] void finding(const char* what) {
    std::fprintf(stderr, "telnet fuzzer: %s\n", what);
    std::abort();
}

struct Outcome {
    std::vector<Byte> data;
    std::vector<Byte> replies;
};

Outcome run(const Byte* bytes, std::size_t size, std::size_t piece) {
    ComPortSession session(9600);
    Outcome outcome;
    session.opening();
    for (std::size_t at = 0; at < size; at += piece) {
        const std::size_t count = size - at < piece ? size - at : piece;
        session.receive(bytes + at, count, outcome.data, outcome.replies);
    }
    return outcome;
}

bool consoleTakesOn(Byte option) {
    return option == telnet::kBinary || option == telnet::kSuppressGoAhead ||
           option == telnet::kComPort;
}

void checkReplies(const std::vector<Byte>& replies, std::size_t inputSize) {
    telnet::Decoder decoder;
    std::vector<Byte> stray;
    std::vector<telnet::Command> commands;
    decoder.feed(replies.data(), replies.size(), stray, commands);
    if (!stray.empty()) {
        finding("an answer carries bytes outside a telnet command");
    }
    int settings = 0;
    for (const telnet::Command& command : commands) {
        switch (command.verb) {
            case telnet::kWill:
                if (!consoleTakesOn(command.option)) {
                    finding("WILL for an option the console does not take on");
                }
                break;
            case telnet::kDo:
                if (command.option != telnet::kBinary &&
                    command.option != telnet::kSuppressGoAhead) {
                    finding("DO for an option the server may not take on");
                }
                break;
            case telnet::kWont:
            case telnet::kDont:
                break;
            case telnet::kSb:
                if (command.option != telnet::kComPort || command.payload.empty()) {
                    finding("a subnegotiation the console never sends");
                }
                settings += command.payload[0] == ComPortSession::kSetBaudRate ? 1 : 0;
                break;
            default:
                finding("an answer that is no negotiation");
        }
    }
    if (settings > 1) {
        finding("the port settings went out twice");
    }
    // Every answer stands for one request of at least three bytes; the port
    // settings come once on top.
    constexpr std::size_t kSettingsBytes = 64;
    if (replies.size() > inputSize + kSettingsBytes) {
        finding("more answered than asked");
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) {
        return 0;
    }
    const std::size_t piece = data[0] % 16 + 1;
    const Byte* server = data + 1;
    const std::size_t length = size - 1;

    const Outcome pieces = run(server, length, piece);
    const Outcome whole = run(server, length, length == 0 ? 1 : length);
    if (pieces.data != whole.data || pieces.replies != whole.replies) {
        finding("the outcome depends on where the reads broke");
    }
    if (pieces.data.size() > length) {
        finding("more data than bytes received");
    }
    checkReplies(pieces.replies, length);
    return 0;
}
