#include <gtest/gtest.h>

#include "protocol/reply_scan.h"
#include "tests/support/messages.h"

using namespace halvex;
using Outcome = ReplyScan::Outcome;
using Bytes = std::vector<Byte>;
namespace v = halvex::vocab;

namespace {
Bytes join(Bytes a, const Bytes& b) {
    a.insert(a.end(), b.begin(), b.end());
    return a;
}
}  // namespace

TEST(ReplyScan, AReplyCutAnywhereWaitsWholeAndIsGivenUpOnlyOnceTheLineSettles) {
    // Escapes in the address and the payload, so some cuts fall between an
    // escape and its partner.
    const Bytes message = test::message<v::CameraLines>(
        {{v::camera_lines::kCamera1Byte, kEtx}, {v::camera_lines::kCamera2Byte, kEsc}});
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
              (Bytes{kAck, kEsc, 3, v::CameraLines::kCode, kEsc, kEtx, kEsc, kEsc, lrc, kEtx}));

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
    constexpr Byte code = v::CommTimeout::kCode;
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
