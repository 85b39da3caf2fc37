// Bytes on the line and in messages: stuffing, the number helpers, the
// scan of a reply as it comes.

#include <gtest/gtest.h>

#include "protocol/frame.h"
#include "protocol/reply_scan.h"
#include "protocol/vocabulary.h"
#include "tests/support/messages.h"

using namespace halvex;
using namespace halvex::vocab;
using Outcome = ReplyScan::Outcome;
using Bytes = std::vector<Byte>;

namespace {
Bytes join(Bytes a, const Bytes& b) {
    a.insert(a.end(), b.begin(), b.end());
    return a;
}
}  // namespace

TEST(Stuffing, EscapesExactlyTheFiveFramingValues) {
    for (int v = 0; v < 256; ++v) {
        const auto value = static_cast<Byte>(v);
        Bytes wire;
        appendStuffed(wire, value);
        const bool special = v == kStx || v == kEtx || v == kAck || v == kNak || v == kEsc;
        ASSERT_EQ(wire, (special ? Bytes{kEsc, static_cast<Byte>(v | 0x80)} : Bytes{value})) << v;
    }
}

// Frames with escapes and their LRC are checked by hand as they are sent
// and read, in send_path_test.cpp and receive_test.cpp.
TEST(Build16, FoldsStrictlyAboveHalfRangeFaultsOnExactly32768AndRoundTripsThroughSplit16) {
    EXPECT_EQ(Build16(0x80, 0x01), -32767);
    EXPECT_EQ(Build16(0x7F, 0xFF), 32767);
    EXPECT_THROW(Build16(0x80, 0x00), RangeFault);

    Byte hi = 0, lo = 0;
    Split16(-2, hi, lo);
    EXPECT_EQ(std::pair(hi, lo), std::pair(Byte{0xFF}, Byte{0xFE}));
    Split16(32767, hi, lo);
    EXPECT_EQ(Build16(hi, lo), 32767);
    EXPECT_THROW(Split16(-32768, hi, lo), RangeFault);
    EXPECT_THROW(Split16(40000, hi, lo), RangeFault);
}

TEST(ReplyScan, AReplyCutAnywhereWaitsWholeAndIsGivenUpOnlyOnceTheLineSettles) {
    // Escapes in the address and the payload, so some cuts fall between an
    // escape and its partner.
    const Bytes message = test::message<CameraLines>(
        {{camera_lines::kCamera1Byte, kEtx}, {camera_lines::kCamera2Byte, kEsc}});
    const Bytes reply = encodeFrame(kAck, 3, message, 3);
    const Byte lrc = reply[reply.size() - 2];
    const Bytes noise{0x55, kEtx};
    const Bytes wire = join(noise, reply);
    const ReplyScan whole = scanReply(wire, false);
    ASSERT_EQ(whole.outcome, Outcome::Ended);
    EXPECT_EQ(whole.used, wire.size());
    EXPECT_EQ(whole.address, 3);
    EXPECT_EQ(whole.body, join(message, {lrc, kEtx}));
    EXPECT_EQ(whole.capture,
              (Bytes{kAck, kEsc, 3, CameraLines::kCode, kEsc, kEtx, kEsc, kEsc, lrc, kEtx}));

    for (std::size_t cut = noise.size() + 1; cut < wire.size(); ++cut) {
        SCOPED_TRACE(cut);
        const Bytes part(wire.begin(), wire.begin() + static_cast<std::ptrdiff_t>(cut));
        const ReplyScan waiting = scanReply(part, false);
        EXPECT_EQ(waiting.outcome, Outcome::Unfinished);
        EXPECT_EQ(waiting.used, 0u);
        // Given up: everything seen is taken, and no reply comes of it.
        const ReplyScan settled = scanReply(part, true);
        EXPECT_EQ(settled.used, cut);
        EXPECT_TRUE(settled.outcome == Outcome::RanDry || settled.outcome == Outcome::NoStart);
        EXPECT_EQ(settled.outcome == Outcome::NoStart, cut == noise.size() + 1);
    }
}

// Noise, a second reply in one read and a runaway reply are read through
// the receive path in receive_test.cpp; here what only the scan shows.
TEST(ReplyScan, ALoneEscapeAndAnEscapedEndAndTheLongestReplyThatFits) {
    // An escape whose partner never came is the byte itself, and an escaped
    // ETX never ends a reply.
    constexpr Byte code = CommTimeout::kCode;
    const ReplyScan lone = scanReply({kAck, 0, code, kEsc}, true);
    EXPECT_EQ(lone.outcome, Outcome::RanDry);
    EXPECT_EQ(lone.body, (Bytes{code, kEsc}));
    EXPECT_EQ(lone.capture, (Bytes{kAck, 0, code, kEsc}));
    const ReplyScan escapedEnd = scanReply({kAck, 0, kEsc, kEtx | 0x80}, true);
    EXPECT_EQ(escapedEnd.outcome, Outcome::RanDry);
    EXPECT_EQ(escapedEnd.body, (Bytes{kEtx}));  // the last two bytes are one value
    EXPECT_EQ(escapedEnd.capture, (Bytes{kAck, 0, kEsc, kEtx}));

    Bytes fits{kAck, 0};
    fits.insert(fits.end(), ByteTable::kLastIndex, 0x41);
    fits.push_back(kEtx);
    EXPECT_EQ(scanReply(fits, false).outcome, Outcome::Ended);
    fits.insert(fits.end() - 1, 0x41);
    EXPECT_EQ(scanReply(fits, false).outcome, Outcome::Overlong);
}
