#include <gtest/gtest.h>

#include "protocol/frame.h"

using namespace halvex;

TEST(Stuffing, EscapesExactlyTheFiveFramingValues) {
    for (int v = 0; v < 256; ++v) {
        const auto value = static_cast<Byte>(v);
        std::vector<Byte> wire;
        appendStuffed(wire, value);
        const bool special = v == kStx || v == kEtx || v == kAck || v == kNak || v == kEsc;
        const std::vector<Byte> expected =
            special ? std::vector<Byte>{kEsc, static_cast<Byte>(v | 0x80)}
                    : std::vector<Byte>{value};
        ASSERT_EQ(wire, expected) << v;
    }
}

// Frames with escapes and their LRC are checked by hand as they are sent
// and read, in transmit_test.cpp and receive_test.cpp.
TEST(Build16, FoldsStrictlyAboveHalfRangeAndFaultsOnExactly32768) {
    EXPECT_EQ(Build16(0x80, 0x01), -32767);
    EXPECT_EQ(Build16(0xFF, 0xFF), -1);
    EXPECT_EQ(Build16(0x7F, 0xFF), 32767);
    EXPECT_EQ(Build16(0x00, 0x00), 0);
    EXPECT_THROW(Build16(0x80, 0x00), RangeFault);
}

TEST(Split16, WritesTwosComplementAndRoundTripsThroughBuild16) {
    Byte hi = 0, lo = 0;
    Split16(-2, hi, lo);
    EXPECT_EQ(std::pair(hi, lo), std::pair(Byte{0xFF}, Byte{0xFE}));
    for (int v = -32767; v <= 32767; v += 97) {
        Split16(v, hi, lo);
        ASSERT_EQ(Build16(hi, lo), v);
    }
    EXPECT_THROW(Split16(-32768, hi, lo), RangeFault);
    EXPECT_THROW(Split16(40000, hi, lo), RangeFault);
}

TEST(Split24, ConsumesItsArgumentAndRoundTripsNegativeValues) {
    std::int32_t value = -2;
    Byte b2 = 0, b1 = 0, b0 = 0;
    Split24(value, b2, b1, b0);
    EXPECT_EQ(b2, 0xFF);
    EXPECT_EQ(b1, 0xFF);
    EXPECT_EQ(b0, 0xFE);
    EXPECT_EQ(value, -1);  // what is left of the caller's variable
    EXPECT_EQ(Build24(0xFF, 0xFF, 0xFE), -2);

    for (std::int32_t v : {0, 1, -1, 18000, -18000, 9000, 99999, -8388608, 8388607}) {
        std::int32_t copy = v;
        Split24(copy, b2, b1, b0);
        EXPECT_EQ(Build24(b2, b1, b0), v);
        EXPECT_EQ(copy, v >> 16) << v;
    }
}

TEST(Bits, SetClearTestAndRefuseBitNumbersAboveSeven) {
    EXPECT_EQ(SetBit(0x00, 7), 0x80);
    EXPECT_EQ(ClearBit(0xFF, 0), 0xFE);
    EXPECT_TRUE(BitIsSet(0x20, 5));
    EXPECT_FALSE(BitIsSet(0x20, 4));
    EXPECT_THROW(SetBit(0, 8), RangeFault);
    EXPECT_THROW(ClearBit(0, 8), RangeFault);
    EXPECT_THROW(BitIsSet(0, 9), RangeFault);
}

// Index 1000 is the last legal one: a runaway frame fills the table up to it
// in receive_test.cpp and transmit_test.cpp.
TEST(ByteTable, RefusesANegativeIndexAndAByteOver255) {
    ByteTable table;
    EXPECT_THROW((void)table[-1], RangeFault);
    EXPECT_THROW(checkedByte(256), RangeFault);
    EXPECT_EQ(checkedByte(255), 255);
}
