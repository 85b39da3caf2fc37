#include <gtest/gtest.h>

#include <vector>

#include "protocol/com_port_session.h"
#include "protocol/telnet.h"

namespace halvex {
namespace {

using namespace telnet;
using Bytes = std::vector<Byte>;

struct Decoded {
    Bytes data;
    std::vector<Command> commands;
};

Decoded decodeInPieces(const Bytes& wire, std::size_t piece) {
    Decoder decoder;
    Decoded out;
    for (std::size_t at = 0; at < wire.size(); at += piece) {
        decoder.feed(wire.data() + at, std::min(piece, wire.size() - at), out.data, out.commands);
    }
    return out;
}

// What a device server sends: data with a doubled 0xFF, negotiation, a com
// port answer whose speed holds 0xFF, and commands without an option.
const Bytes kServerStream = {0x06, kIac, kIac, 0x31, kIac, kWill, kBinary, kIac, kSb,  kComPort,
                             101,  0x00, 0x00, kIac, kIac, 0x10,  kIac,    kSe,  0x03, kIac,
                             241,  kIac, 249,  0x0D, 0x00, kIac,  kDont,   kEcho};

TEST(TelnetDecoder, SplitsDataFromCommandsWhereverTheReadsBreak) {
    const Decoded whole = decodeInPieces(kServerStream, kServerStream.size());
    EXPECT_EQ(whole.data, (Bytes{0x06, 0xFF, 0x31, 0x03, 0x0D, 0x00}));
    const std::vector<Command> expected = {{kWill, kBinary, {}},
                                           {kSb, kComPort, {101, 0x00, 0x00, 0xFF, 0x10}},
                                           {241, 0, {}},
                                           {249, 0, {}},
                                           {kDont, kEcho, {}}};
    EXPECT_EQ(whole.commands, expected);
    for (std::size_t piece = 1; piece < kServerStream.size(); ++piece) {
        const Decoded split = decodeInPieces(kServerStream, piece);
        EXPECT_EQ(split.data, whole.data) << "pieces of " << piece;
        EXPECT_EQ(split.commands, whole.commands) << "pieces of " << piece;
    }
}

TEST(TelnetDecoder, ABrokenOffOrOverlongSubnegotiationDoesNotSwallowTheRest) {
    // IAC WILL inside a subnegotiation ends it: the WILL counts, the
    // unfinished subnegotiation does not.
    Decoded broken = decodeInPieces({kIac, kSb, kComPort, 101, kIac, kWill, kEcho, 0x42}, 3);
    EXPECT_EQ(broken.commands, (std::vector<Command>{{kWill, kEcho, {}}}));
    EXPECT_EQ(broken.data, (Bytes{0x42}));

    Bytes overlong = {kIac, kSb, kComPort};
    overlong.insert(overlong.end(), 1000, 0x55);
    overlong.insert(overlong.end(), {kIac, kSe, 0x06});
    const Decoded kept = decodeInPieces(overlong, 7);
    ASSERT_EQ(kept.commands.size(), 1u);
    EXPECT_EQ(kept.commands[0].payload.size(), Decoder::kMaxPayload);
    EXPECT_EQ(kept.data, (Bytes{0x06}));
}

TEST(TelnetEncoder, Doubles0xFFInDataAndInSubnegotiations) {
    Bytes wire;
    for (Byte value : {0x02, 0xFF, 0x03}) {
        appendData(value, wire);
    }
    appendSubnegotiation(kComPort, {1, 0x00, 0x00, 0xFF, 0xFF}, wire);
    EXPECT_EQ(wire, (Bytes{0x02, 0xFF, 0xFF, 0x03, kIac, kSb, kComPort, 1, 0x00, 0x00, 0xFF, 0xFF,
                           0xFF, 0xFF, kIac, kSe}));
}

Bytes receive(ComPortSession& session, const Bytes& fromServer) {
    Bytes replies;
    Bytes carried;
    session.receive(fromServer.data(), fromServer.size(), carried, replies);
    return replies;
}

Bytes portSettings(std::uint32_t baud) {
    Bytes wire;
    appendSubnegotiation(kComPort,
                         {1, static_cast<Byte>(baud >> 24), static_cast<Byte>(baud >> 16),
                          static_cast<Byte>(baud >> 8), static_cast<Byte>(baud)},
                         wire);
    for (const Bytes& setting : {Bytes{2, 8}, Bytes{3, 1}, Bytes{4, 1}, Bytes{5, 1}}) {
        appendSubnegotiation(kComPort, setting, wire);
    }
    return wire;
}

TEST(ComPortSession, AnswersADeviceServerOpeningAsAClientShouldAndSetsThePort) {
    ComPortSession session(115200);
    EXPECT_EQ(session.opening(),
              (Bytes{kIac, kWill, kComPort, kIac, kWill, kBinary, kIac, kDo, kBinary}));
    EXPECT_FALSE(session.settled());

    // What ser2net sends when a client connects to its RFC 2217 port.
    const Bytes serverOpening = {kIac, kWill, kSuppressGoAhead,
                                 kIac, kDo,   kSuppressGoAhead,
                                 kIac, kWill, kEcho,
                                 kIac, kDont, kEcho,
                                 kIac, kDo,   kBinary,
                                 kIac, kWill, kBinary,
                                 kIac, kDo,   kComPort};
    Bytes expected = {kIac,  kDo,  kSuppressGoAhead, kIac, kWill, kSuppressGoAhead, kIac,
                      kDont, kEcho};
    const Bytes settings = portSettings(115200);
    expected.insert(expected.end(), settings.begin(), settings.end());
    EXPECT_EQ(receive(session, serverOpening), expected);
    EXPECT_TRUE(session.settled());
    EXPECT_FALSE(session.refused());

    // The same again: what is on stays on without an answer, so negotiation
    // cannot loop; asking again for what was refused is refused again.
    EXPECT_EQ(receive(session, serverOpening), (Bytes{kIac, kDont, kEcho}));
    // Options the console has no use for are refused on either side; a
    // server that turns one of ours off is told it is off.
    EXPECT_EQ(receive(session, {kIac, kDo, 24, kIac, kWill, 31, kIac, kDont, kBinary}),
              (Bytes{kIac, kWont, 24, kIac, kDont, 31, kIac, kWont, kBinary}));

    // What the server says of the settings it keeps is told by the port
    // (network_port_test.cpp).
}

}  // namespace
}  // namespace halvex
