#include <gtest/gtest.h>

#include "tests/support/link_rig.h"
#include "tests/support/messages.h"

using namespace halvex;
using namespace halvex::testing;
using recording::Verdict;
namespace v = halvex::vocab;

namespace {
// A frame as the Line Log sees it.
struct Read {
    std::vector<Byte> wire;
    Verdict verdict;
};

// A receive rig with decoders that record what they saw, and the frames
// read as the Line Log is told of them.
struct ReceiveRig : LinkRig {
    std::vector<std::vector<Byte>> decoded;
    std::vector<std::vector<Byte>> watched;  // as a reply watcher is given them
    std::vector<Read> reads;
    int refreshes = 0;
    QString caption;

    explicit ReceiveRig(Byte unitId = 0) : LinkRig(false) {
        state.UnitId = unitId;
        for (Byte code : {v::Ramps::kCode, v::CommTimeout::kCode, v::UnitAddress::kCode}) {
            receiver.registerDecoder(code, [this] {
                std::vector<Byte> seen;
                for (int i = 0; i < 8; ++i) {
                    seen.push_back(state.RxBuffer[i]);
                }
                decoded.push_back(seen);
            });
        }
        receiver.addRefreshHook([this] { ++refreshes; });
        receiver.addReplyWatcher(
            [this](const std::vector<Byte>& reply) { watched.push_back(reply); });
        QObject::connect(&receiver, &Receiver::frameRead,
                         [this](const std::vector<Byte>& wire, Verdict verdict) {
                             reads.push_back({wire, verdict});
                         });
        QObject::connect(&receiver, &Receiver::receivingIdChanged,
                         [this](const QString& s) { caption = s; });
    }

    // Puts bytes in the port and runs exactly one data event.
    void arrive(const std::vector<Byte>& bytes) {
        port.injectIncoming(bytes);
        QCoreApplication::processEvents();
    }
};

std::vector<Byte> concat(std::vector<Byte> a, const std::vector<Byte>& b) {
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

// A reply of three bytes the decoders here take: only its bytes matter.
std::vector<Byte> ramps(int pan, int tilt) {
    return test::message<v::Ramps>({{v::ramps::kPan, pan}, {v::ramps::kTilt, tilt}});
}
}  // namespace

TEST(ReceiveFrame, DecodesAGoodReplyAfterNoiseAndTakesACodeWithoutADecoder) {
    ReceiveRig rig(1);
    rig.arrive(concat({0x55, 0xAA, kEtx}, ScriptedUnit::replyWire(1, ramps(16, 32))));
    ASSERT_EQ(rig.decoded.size(), 1u);
    const std::vector<Byte> ramp = ramps(16, 32);
    EXPECT_TRUE(std::equal(ramp.begin(), ramp.end(), rig.decoded[0].begin()));
    EXPECT_EQ(rig.watched, std::vector<std::vector<Byte>>{ramp});  // code and payload only
    EXPECT_EQ(rig.state.LastResponseCode, v::Ramps::kCode);
    EXPECT_EQ(rig.caption, QStringLiteral("Currently Receiving ID Of 1"));
    // The noise is in no capture.
    EXPECT_EQ(rig.lastReceived, QStringLiteral("06 01 86 10 20 B7 03"));
    // Noise read on its own just before a reply does not spoil the reply.
    rig.arrive({0x11});
    rig.arrive(ScriptedUnit::replyWire(1, ramps(16, 32)));
    // A code with no decoder is taken and refreshes the pages all the same;
    // both replies before it were decoded, each once.
    rig.arrive(ScriptedUnit::replyWire(1, v::blank<v::Diagnostics>()));
    EXPECT_EQ(rig.decoded.size(), 2u);
    EXPECT_EQ(rig.state.LastResponseCode, v::Diagnostics::kCode);
    EXPECT_EQ(rig.refreshes, 3);
}

TEST(ReceiveFrame, AddressesFromAHundredUpShowNoCaptionButAreDecodedWhenLrcMatchesOurId) {
    const std::pair<Byte, const char*> cases[] = {{99, "Currently Receiving ID Of 99"}, {100, ""}};
    for (const auto& [address, caption] : cases) {
        SCOPED_TRACE(address);
        ReceiveRig rig(2);
        // Sent from another address but with an LRC that starts from our id.
        rig.arrive(encodeFrame(kAck, address, test::sample(1), 2));
        EXPECT_EQ(rig.decoded.size(), 1u);
        EXPECT_EQ(rig.caption, QLatin1String(caption));
        // Made by that unit for itself: fails the check here.
        rig.arrive(encodeFrame(kAck, address, test::sample(1), address));
        EXPECT_EQ(rig.decoded.size(), 1u);
        EXPECT_TRUE(rig.state.LinkFault);
    }
}

TEST(ReceiveFrame, FailuresLightTheLampAndDispatchNothing) {
    ReceiveRig rig(1);
    rig.state.setLamp(LinkLamp::Good);

    // Bad LRC: fault flag and lamp.
    const auto good = ScriptedUnit::replyWire(1, test::sample(16));
    auto bad = good;
    bad[bad.size() - 2] ^= 0x40;
    rig.arrive(bad);
    EXPECT_TRUE(rig.state.LinkFault);
    EXPECT_EQ(rig.state.lamp(), LinkLamp::Fault);

    // A good reply clears the fault.
    rig.arrive(good);
    EXPECT_FALSE(rig.state.LinkFault);
    EXPECT_EQ(rig.decoded.size(), 1u);

    // Truncated: the frame is lost, LinkFault stays as it was.
    rig.arrive({good.begin(), good.end() - 2});
    EXPECT_TRUE(waitFor([&] { return rig.port.bytesWaiting() == 0; }));
    EXPECT_EQ(rig.state.lamp(), LinkLamp::Fault);
    EXPECT_FALSE(rig.state.LinkFault);

    // Noise with no start byte, and a start byte that is the last byte.
    rig.arrive({0x11, 0x22, 0x33});
    EXPECT_EQ(rig.port.bytesWaiting(), 0);
    rig.arrive({0x11, kAck});
    EXPECT_TRUE(waitFor([&] { return rig.port.bytesWaiting() == 0; }));
    EXPECT_EQ(rig.decoded.size(), 1u);
    EXPECT_EQ(rig.refreshes, 1);

    // A data event that finds nothing (an earlier one took the bytes).
    rig.state.setLamp(LinkLamp::Good);
    rig.receiver.ReceiveFrame();
    EXPECT_EQ(rig.state.lamp(), LinkLamp::Fault);
}

TEST(ReceiveFrame, SecondFrameOfOneReadWaitsForTheNextEvent) {
    ReceiveRig rig;
    const auto first = ScriptedUnit::replyWire(0, ramps(1, 1));
    const auto two = concat(first, ScriptedUnit::replyWire(0, test::sample(2)));
    // One data event with both frames waiting.
    rig.port.injectIncoming(two);
    ASSERT_EQ(rig.decoded.size(), 1u);
    EXPECT_EQ(rig.decoded[0][0], v::Ramps::kCode);
    EXPECT_EQ(rig.port.bytesWaiting(), static_cast<int>(two.size() - first.size()));
    // The port's next event picks the second one up.
    ASSERT_TRUE(waitFor([&] { return rig.decoded.size() == 2; }));
    EXPECT_EQ(rig.decoded[1][0], v::CommTimeout::kCode);
}

TEST(ReceiveFrame, RunawayFrameIsARangeFaultAndShowsAsCutNotACrash) {
    ReceiveRig rig;
    QString shown;
    QObject::connect(&rig.state, &FormState::faultReported,
                     [&](const QString& message) { shown = message; });
    std::vector<Byte> runaway{kAck, 0};
    runaway.insert(runaway.end(), 1200, v::JogMessage::kCode);
    runaway.push_back(kEtx);
    rig.arrive(runaway);
    EXPECT_TRUE(shown.contains(QStringLiteral("Subscript out of range")));
    ASSERT_EQ(rig.reads.size(), 2u);
    EXPECT_EQ(rig.reads[0].verdict, Verdict::Cut);
    // ACK, address, 1001 bytes stored and the one that did not fit.
    EXPECT_EQ(rig.reads[0].wire.size(), 1004u);
    // What was left of it in the port is read as noise.
    EXPECT_EQ(rig.reads[1].verdict, Verdict::Noise);
    EXPECT_EQ(rig.reads[1].wire.size(), runaway.size() - 1004);
    // Still alive and decoding.
    rig.arrive(ScriptedUnit::replyWire(0, test::sample(1)));
    ASSERT_TRUE(waitFor([&] { return !rig.decoded.empty(); }));
}

// A reply in pieces stays in the port until its end comes; a tail that
// comes after the line settled is noise.
TEST(ReceiveFrame, AReplyInPiecesStaysInThePortUntilItsEndComesButNotForever) {
    ReceiveRig rig(1);
    const auto wire = ScriptedUnit::replyWire(1, ramps(16, kEtx));
    for (std::size_t i = 0; i + 1 < wire.size(); ++i) {
        rig.arrive({wire[i]});
        // Nothing taken, nothing decoded, nobody released yet.
        EXPECT_EQ(rig.port.bytesWaiting(), static_cast<int>(i + 1));
        EXPECT_TRUE(rig.decoded.empty());
        EXPECT_FALSE(rig.state.ReplyReceived);
        QTest::qWait(rig.receiver.settleMs() / 2);
    }
    rig.arrive({wire.back()});
    ASSERT_EQ(rig.decoded.size(), 1u);
    EXPECT_EQ(rig.decoded[0][2], kEtx);
    EXPECT_EQ(rig.port.bytesWaiting(), 0);
    EXPECT_TRUE(rig.state.ReplyReceived);
    EXPECT_EQ(rig.state.lamp(), LinkLamp::Good);
    EXPECT_EQ(rig.lastReceived, QStringLiteral("06 01 86 10 1B 03 94 03"));
    // Nothing is decoded twice once the settle time has passed.
    QTest::qWait(rig.receiver.settleMs() * 2);
    EXPECT_EQ(rig.decoded.size(), 1u);

    const auto tail = ScriptedUnit::replyWire(1, test::sample(16));
    rig.arrive({tail.begin(), tail.begin() + 3});
    ASSERT_TRUE(waitFor([&] { return rig.port.bytesWaiting() == 0; }));
    EXPECT_EQ(rig.lastReceived, QStringLiteral("06 01 96"));
    EXPECT_EQ(rig.state.lamp(), LinkLamp::Fault);
    rig.arrive({tail.begin() + 3, tail.end()});
    EXPECT_EQ(rig.port.bytesWaiting(), 0);
    EXPECT_EQ(rig.decoded.size(), 1u);
    // The next whole reply is read as usual.
    rig.arrive(tail);
    EXPECT_EQ(rig.decoded.size(), 2u);
}
