#include <gtest/gtest.h>

#include "protocol/reply_scan.h"

using namespace halvex;
using Outcome = ReplyScan::Outcome;
using Bytes = std::vector<Byte>;

namespace {
Bytes join(Bytes a, const Bytes& b) {
    a.insert(a.end(), b.begin(), b.end());
    return a;
}
}  // namespace

TEST(ReplyScan, AReplyCutAnywhereWaitsWholeAndIsGivenUpOnlyOnceTheLineSettles) {
    // Escapes in the address and the payload, so some cuts fall between an
    // escape and its partner.
    const Bytes message{0x33, 0x03, 0x1B, 0x44};
    const Bytes reply = encodeFrame(kAck, 3, message, 3);
    const Bytes noise{0x55, 0x03};
    const Bytes wire = join(noise, reply);
    const ReplyScan whole = scanReply(wire, false);
    ASSERT_EQ(whole.outcome, Outcome::Ended);
    EXPECT_EQ(whole.used, wire.size());
    EXPECT_EQ(whole.address, 3);
    EXPECT_EQ(whole.body, (Bytes{0x33, 0x03, 0x1B, 0x44, reply[reply.size() - 2], 0x03}));
    EXPECT_EQ(whole.capture, (Bytes{0x06, 0x1B, 0x03, 0x33, 0x1B, 0x03, 0x1B, 0x1B, 0x44,
                                    reply[reply.size() - 2], 0x03}));

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

TEST(ReplyScan, NoiseAndTheRepliesAfterTheFirst) {
    const Bytes first = encodeFrame(kAck, 0, {0x31, 0x10}, 0);
    const Bytes second = encodeFrame(kAck, 0, {0x40, 0x02}, 0);

    // Bytes after the first reply's end stay for the next look.
    const ReplyScan scan = scanReply(join(first, second), false);
    EXPECT_EQ(scan.outcome, Outcome::Ended);
    EXPECT_EQ(scan.used, first.size());

    // Noise alone is taken at once, whether or not the line has settled.
    for (const bool settled : {false, true}) {
        const ReplyScan noise = scanReply({0x11, 0x03, 0x1B}, settled);
        EXPECT_EQ(noise.outcome, Outcome::NoStart);
        EXPECT_EQ(noise.used, 3u);
        EXPECT_TRUE(noise.capture.empty());
    }
    // A 0x06 as the last byte may be a reply beginning.
    EXPECT_EQ(scanReply({0x11, 0x06}, false).outcome, Outcome::Unfinished);
    EXPECT_EQ(scanReply({0x11, 0x06}, true).used, 2u);
    EXPECT_EQ(scanReply({0x11, 0x06}, true).outcome, Outcome::NoStart);

    // An escape whose partner never came is the byte itself, and an escaped
    // 0x03 never ends a reply.
    const ReplyScan lone = scanReply({0x06, 0x00, 0x31, 0x1B}, true);
    EXPECT_EQ(lone.outcome, Outcome::RanDry);
    EXPECT_EQ(lone.body, (Bytes{0x31, 0x1B}));
    EXPECT_EQ(lone.capture, (Bytes{0x06, 0x00, 0x31, 0x1B}));
    const ReplyScan escapedEnd = scanReply({0x06, 0x00, 0x1B, 0x83}, true);
    EXPECT_EQ(escapedEnd.outcome, Outcome::RanDry);
    EXPECT_EQ(escapedEnd.body, (Bytes{0x03}));  // the last two bytes are one value
    EXPECT_EQ(escapedEnd.capture, (Bytes{0x06, 0x00, 0x1B, 0x03}));
}

TEST(ReplyScan, ARunawayReplyStopsOneBytePastTheBufferEvenUnfinished) {
    Bytes wire{0x06, 0x00};
    wire.insert(wire.end(), 1200, 0x41);
    const ReplyScan scan = scanReply(wire, false);
    EXPECT_EQ(scan.outcome, Outcome::Overlong);
    EXPECT_EQ(scan.body.size(), static_cast<std::size_t>(ByteTable::kLastIndex + 2));
    EXPECT_EQ(scan.used, 2u + ByteTable::kLastIndex + 2);
    // One that ends on the last place that fits is a reply.
    Bytes fits{0x06, 0x00};
    fits.insert(fits.end(), ByteTable::kLastIndex, 0x41);
    fits.push_back(kEtx);
    EXPECT_EQ(scanReply(fits, false).outcome, Outcome::Ended);
}
