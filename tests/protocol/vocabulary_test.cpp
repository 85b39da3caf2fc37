// Fields of the vocabulary written into and read from a message: bytes low
// first, only a field's own bits touched, signs kept.

#include <gtest/gtest.h>

#include <vector>

#include "protocol/vocabulary.h"

using namespace halvex;
using namespace halvex::vocab;

TEST(Vocabulary, AFieldTakesOnlyItsOwnBitsOfItsBytes) {
    std::vector<Byte> message(JogMessage::kLength, 0);
    begin<JogMessage>(message);
    put(message, jog::kFlagsByte, 0xC0);  // both directions
    put(message, jog::kFlags, 0x1F);
    EXPECT_EQ(message[1], 0xDF);
    put(message, jog::kPanDirection, 0);
    EXPECT_EQ(message[1], 0x5F);
    EXPECT_EQ(get(message, jog::kTiltDirection), 1u);
    EXPECT_EQ(get(message, jog::kFlags), 0x1Fu);
    // A value wider than the field loses what does not fit, never a neighbour.
    put(message, jog::kTiltDirection, 2);
    EXPECT_EQ(message[1], 0x1F);
    put(message, jog::kLensJog[3], 0x181);
    EXPECT_EQ(message, (std::vector<Byte>{0x31, 0x1F, 0, 0, 0, 0, 0, 0x81}));
}

TEST(Vocabulary, AnglesTravelLowByteFirstAndKeepTheirSign) {
    ByteTable rx;
    put(rx, report::kPan, static_cast<std::uint32_t>(-1234));
    put(rx, report::kTilt, 8388607);
    EXPECT_EQ(rx[1], 0x2E);
    EXPECT_EQ(rx[2], 0xFB);
    EXPECT_EQ(rx[3], 0xFF);
    EXPECT_EQ(rx[4], 0xFF);
    EXPECT_EQ(rx[6], 0x7F);
    EXPECT_EQ(getSigned(rx, report::kPan), -1234);
    EXPECT_EQ(getSigned(rx, report::kTilt), 8388607);
    put(rx, report::kTilt, static_cast<std::uint32_t>(-8388608));
    EXPECT_EQ(getSigned(rx, report::kTilt), -8388608);
    EXPECT_EQ(rx[7], 0) << "the field after it is untouched";
}
