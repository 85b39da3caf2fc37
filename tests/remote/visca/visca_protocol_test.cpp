// The stream reader and the ends of the scale between VISCA's numbers and
// the unit's.
// The packets and replies themselves are checked on the bridge's sockets.

#include <gtest/gtest.h>

#include "remote/visca/visca_protocol.h"

namespace halvex::visca {
namespace {

TEST(ViscaPacketReader, CutsTheStreamAtEachTerminatorHoweverTheReadsBreakIt) {
    const Packet home{0x81, 0x01, 0x06, 0x04, 0xFF};
    const Packet inquiry{0x81, 0x09, 0x06, 0x12, 0xFF};
    Packet stream = home;
    // Twenty bytes with no terminator: the first seventeen come out for a
    // syntax error, the rest up to the terminator is dropped.
    const Packet runOn(20, 0x01);
    stream.insert(stream.end(), runOn.begin(), runOn.end());
    stream.push_back(0xFF);
    stream.insert(stream.end(), inquiry.begin(), inquiry.end());
    stream.push_back(0x81);  // the start of the next packet

    const std::vector<Packet> expected{home, Packet(17, 0x01), inquiry};
    for (std::size_t piece = 1; piece <= stream.size(); ++piece) {
        SCOPED_TRACE(::testing::Message() << "pieces of " << piece);
        PacketReader reader;
        std::vector<Packet> packets;
        for (std::size_t at = 0; at < stream.size(); at += piece) {
            reader.feed(stream.data() + at, std::min(piece, stream.size() - at), packets);
        }
        EXPECT_EQ(packets, expected);
        EXPECT_TRUE(std::holds_alternative<SyntaxError>(parse(packets.at(1))));
        reader.feed(home.data() + 1, home.size() - 1, packets);
        EXPECT_EQ(packets.back(), home) << "the held byte starts the next packet";
    }
}

// The speeds, the zoom and the positions in between are checked on the
// bridge's sockets; here the ends of the sixteen bits and the slowest lens.
TEST(ViscaScale, PositionsEndAtSixteenBitsAndTheSlowestLensSpeedStillMoves) {
    EXPECT_EQ(positionOf(327.67), std::int16_t{32767});
    EXPECT_EQ(positionOf(-327.68), std::int16_t{-32768});
    EXPECT_EQ(positionOf(327.68), std::nullopt);
    EXPECT_EQ(lensJogSpeed({LensDrive::Lens::Zoom, -1, 0}), -16);
}

}  // namespace
}  // namespace halvex::visca
