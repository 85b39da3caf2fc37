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

TEST(ReplyScan, NoiseAndTheRepliesAfterTheFirst) {
    const Bytes first = encodeFrame(kAck, 0, test::sample(16), 0);
    const Bytes second = encodeFrame(kAck, 0, test::sample(2), 0);

    // Bytes after the first reply's end stay for the next look.
    const ReplyScan scan = scanReply(join(first, second), false);
    EXPECT_EQ(scan.outcome, Outcome::Ended);
    EXPECT_EQ(scan.used, first.size());

    // Noise alone is taken at once, whether or not the line has settled.
    for (const bool settled : {false, true}) {
        const ReplyScan noise = scanReply({0x11, kEtx, kEsc}, settled);
        EXPECT_EQ(noise.outcome, Outcome::NoStart);
        EXPECT_EQ(noise.used, 3u);
        EXPECT_TRUE(noise.capture.empty());
    }
    // An ACK as the last byte may be a reply beginning.
    EXPECT_EQ(scanReply({0x11, kAck}, false).outcome, Outcome::Unfinished);
    EXPECT_EQ(scanReply({0x11, kAck}, true).used, 2u);
    EXPECT_EQ(scanReply({0x11, kAck}, true).outcome, Outcome::NoStart);

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
}

TEST(ReplyScan, ARunawayReplyStopsOneBytePastTheBufferEvenUnfinished) {
    Bytes wire{kAck, 0};
    wire.insert(wire.end(), 1200, 0x41);
    const ReplyScan scan = scanReply(wire, false);
    EXPECT_EQ(scan.outcome, Outcome::Overlong);
    EXPECT_EQ(scan.body.size(), static_cast<std::size_t>(ByteTable::kLastIndex + 2));
    EXPECT_EQ(scan.used, 2u + ByteTable::kLastIndex + 2);
    // One that ends on the last place that fits is a reply.
    Bytes fits{kAck, 0};
    fits.insert(fits.end(), ByteTable::kLastIndex, 0x41);
    fits.push_back(kEtx);
    EXPECT_EQ(scanReply(fits, false).outcome, Outcome::Ended);
}
