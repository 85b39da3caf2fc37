// How the unit treats what arrives on the line: addressing, stuffing, bad
// checks, short and unknown commands.

#include <gtest/gtest.h>

#include "tests/sim/unit_test_support.h"

namespace halvex::sim::testing {
namespace {

TEST(UnitLink, AnswersItsOwnAddressAndBroadcastOnlyWithItsOwnId) {
    UnitOptions options;
    options.id = 7;
    UnitHarness unit(options);
    unit.id = 7;

    EXPECT_TRUE(unit.send({0x85}, 3).empty()) << "another unit's frame must go unanswered";

    for (Byte address : {Byte{7}, Byte{0}}) {
        const auto frames = unit.send({0x85}, address);
        ASSERT_EQ(frames.size(), 1u);
        EXPECT_EQ(frames[0].start, kAck);
        EXPECT_EQ(frames[0].address, 7);
        EXPECT_TRUE(frames[0].lrcGood) << "reply LRC must start from the unit's own id";
        EXPECT_EQ(frames[0].message, (std::vector<Byte>{0x85, 0, 0, 0, 0, 0, 0}));
    }
}

TEST(UnitLink, ReplyIsStuffedAndCommandBytesArriveUnstuffed) {
    UnitHarness unit;
    // Offsets of 0x02 and 0x1B travel escaped in both directions.
    const auto reply = unit.exchange({0x80, 0x02, 0x00, 0x00, 0x1B, 0x00, 0x00});
    EXPECT_EQ(reply, (std::vector<Byte>{0x80, 0x02, 0, 0, 0x1B, 0, 0}));

    const auto wire = encodeFrame(kStx, 0, {0x85}, 0);
    unit.unit.receiveFromConsole(wire.data(), wire.size());
    // LRC = 0 ^ 0x85 ^ 0x02 ^ 0x1B = 0x9C.
    const std::vector<Byte> expected{kAck, 0x00, 0x85, 0x1B, 0x82, 0x00, 0x00,
                                     0x1B, 0x9B, 0x00, 0x00, 0x9C, kEtx};
    EXPECT_EQ(unit.unit.takeOutput(), expected);
}

TEST(UnitLink, BadCheckShortPayloadAndUnknownCodeAreRefusedWithoutAction) {
    UnitHarness unit;
    // Bad LRC on an absolute move: NAK, and the unit does not move.
    auto wire = encodeFrame(kStx, 0, {0x33, 0x10, 0x27, 0, 0, 0, 0}, 0x55);
    unit.unit.receiveFromConsole(wire.data(), wire.size());
    auto frames = decodeFrames(unit.unit.takeOutput());
    ASSERT_EQ(frames.size(), 1u);
    EXPECT_EQ(frames[0].start, kNak);
    EXPECT_EQ(frames[0].message, std::vector<Byte>{0x33});
    EXPECT_TRUE(frames[0].lrcGood);

    // The same move cut short by one byte.
    frames = unit.send({0x33, 0x10, 0x27, 0, 0, 0});
    ASSERT_EQ(frames.size(), 1u);
    EXPECT_EQ(frames[0].start, kNak);

    frames = unit.send({0xEE, 1, 2, 3});
    ASSERT_EQ(frames.size(), 1u);
    EXPECT_EQ(frames[0].start, kNak);
    EXPECT_EQ(frames[0].message, std::vector<Byte>{0xEE});

    unit.advance(2000);
    const auto report = unit.jog();
    EXPECT_EQ(angleAt(report, 1), 0) << "no refused frame may move the unit";
    EXPECT_EQ(report[9] & 0x0F, 0);
}

TEST(UnitLink, NoiseAndBrokenFramesBeforeAGoodOneAreSkipped) {
    UnitHarness unit;
    std::vector<Byte> stream{0x55, 0x03, 0xFF, kStx, 0x00, 0x85};  // a frame cut off by STX
    stream.push_back(kEsc);  // and an escape right before the next start
    const auto good = encodeFrame(kStx, 0, {0x85}, 0);
    stream.insert(stream.end(), good.begin(), good.end());
    unit.unit.receiveFromConsole(stream.data(), stream.size());
    const auto frames = decodeFrames(unit.unit.takeOutput());
    ASSERT_EQ(frames.size(), 1u);
    EXPECT_EQ(frames[0].start, kAck);
    EXPECT_EQ(frames[0].message.at(0), 0x85);
}

TEST(UnitLink, FrameSplitAcrossWritesIsAnsweredOnceComplete) {
    UnitHarness unit;
    const auto wire = encodeFrame(kStx, 0, {0x96, 0x80}, 0);
    for (std::size_t i = 0; i + 1 < wire.size(); ++i) {
        unit.unit.receiveFromConsole(&wire[i], 1);
        EXPECT_TRUE(unit.unit.takeOutput().empty());
    }
    unit.unit.receiveFromConsole(&wire.back(), 1);
    const auto frames = decodeFrames(unit.unit.takeOutput());
    ASSERT_EQ(frames.size(), 1u);
    EXPECT_EQ(frames[0].message, (std::vector<Byte>{0x96, 0}));
}

TEST(UnitLink, AddressChangeTakesEffectAfterTheReply) {
    UnitHarness unit;
    // Set address 12: the reply still comes from address 0, its LRC starting from 0.
    EXPECT_EQ(unit.exchange({0x9F, 12}), (std::vector<Byte>{0x9F, 12}));
    unit.id = 12;
    EXPECT_EQ(unit.exchange({0x9F, 0x80}, 12), (std::vector<Byte>{0x9F, 12}));
    EXPECT_TRUE(unit.send({0x9F, 0x80}, 5).empty());
    // Broadcast get finds it; an address above 99 is not taken.
    EXPECT_EQ(unit.exchange({0x9F, 0x80}, 0), (std::vector<Byte>{0x9F, 12}));
    EXPECT_EQ(unit.exchange({0x9F, 120}, 12), (std::vector<Byte>{0x9F, 12}));
}

}  // namespace
}  // namespace halvex::sim::testing
