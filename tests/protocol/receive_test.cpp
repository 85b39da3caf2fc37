#include <gtest/gtest.h>

#include "tests/support/link_rig.h"

using namespace halvex;
using namespace halvex::testing;

namespace {
// A receive rig with a decoder that records what it saw.
struct ReceiveRig : LinkRig {
    std::vector<std::vector<Byte>> decoded;
    int refreshes = 0;
    QString caption;

    ReceiveRig() : LinkRig(false) {
        for (Byte code : {Byte{0x31}, Byte{0x33}, Byte{0x81}}) {
            receiver.registerDecoder(code, [this] {
                std::vector<Byte> seen;
                for (int i = 0; i < 8; ++i) {
                    seen.push_back(state.RxBuffer[i]);
                }
                decoded.push_back(seen);
            });
        }
        receiver.addRefreshHook([this] { ++refreshes; });
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
}  // namespace

TEST(ReceiveFrame, DecodesGoodReplyAfterLeadingNoise) {
    ReceiveRig rig;
    rig.state.UnitId = 1;
    rig.state.ReplyReceived = false;
    rig.arrive(concat({0x55, 0xAA, 0x03}, ScriptedUnit::replyWire(1, {0x31, 0x10, 0x20})));
    ASSERT_EQ(rig.decoded.size(), 1u);
    EXPECT_EQ(rig.decoded[0][0], 0x31);
    EXPECT_EQ(rig.decoded[0][1], 0x10);
    EXPECT_EQ(rig.decoded[0][2], 0x20);
    EXPECT_TRUE(rig.state.ReplyReceived);
    EXPECT_EQ(rig.state.LastResponseCode, 0x31);
    EXPECT_EQ(rig.state.lamp(), LinkLamp::Good);
    EXPECT_EQ(rig.caption, QStringLiteral("Currently Receiving ID Of 1"));
    // The noise is in no capture.
    EXPECT_EQ(rig.lastReceived, QStringLiteral("06 01 31 10 20 00 03"));
    EXPECT_EQ(rig.refreshes, 1);
}

TEST(ReceiveFrame, EscapedEtxInPayloadIsDataNotTheEnd) {
    ReceiveRig rig;
    // Payload 0x03 0x06 travels as 1B 83 1B 86.
    const auto wire = ScriptedUnit::replyWire(0, {0x33, 0x03, 0x06, 0x44});
    ASSERT_NE(std::find(wire.begin(), wire.end(), Byte{0x83}), wire.end());
    rig.arrive(wire);
    ASSERT_EQ(rig.decoded.size(), 1u);
    EXPECT_EQ(rig.decoded[0][1], 0x03);
    EXPECT_EQ(rig.decoded[0][2], 0x06);
    EXPECT_EQ(rig.decoded[0][3], 0x44);
}

TEST(ReceiveFrame, AddressesFromAHundredUpShowNoCaptionButAreDecodedWhenLrcMatchesOurId) {
    const std::pair<Byte, const char*> cases[] = {
        {99, "Currently Receiving ID Of 99"}, {100, ""}, {120, ""}};
    for (const auto& [address, caption] : cases) {
        SCOPED_TRACE(address);
        ReceiveRig rig;
        rig.state.UnitId = 2;
        // Sent from another address but with an LRC that starts from our id.
        rig.arrive(encodeFrame(kAck, address, {0x31, 0x01}, 2));
        EXPECT_EQ(rig.decoded.size(), 1u);
        EXPECT_EQ(rig.caption, QLatin1String(caption));
        // Made by that unit for itself: fails the check here.
        rig.arrive(encodeFrame(kAck, address, {0x31, 0x01}, address));
        EXPECT_EQ(rig.decoded.size(), 1u);
        EXPECT_TRUE(rig.state.LinkFault);
    }
}

TEST(ReceiveFrame, FailuresLightTheLampAndDispatchNothing) {
    ReceiveRig rig;
    rig.state.UnitId = 1;
    rig.state.setLamp(LinkLamp::Good);

    // Bad LRC: fault flag and lamp.
    auto bad = ScriptedUnit::replyWire(1, {0x31, 0x10});
    bad[bad.size() - 2] ^= 0x40;
    rig.arrive(bad);
    EXPECT_TRUE(rig.state.LinkFault);
    EXPECT_EQ(rig.state.lamp(), LinkLamp::Fault);

    // A good reply clears the fault.
    rig.arrive(ScriptedUnit::replyWire(1, {0x31, 0x10}));
    EXPECT_FALSE(rig.state.LinkFault);
    EXPECT_EQ(rig.decoded.size(), 1u);

    // Truncated: the frame is lost, LinkFault stays as it was.
    rig.arrive({0x06, 0x01, 0x31, 0x10});
    QTest::qWait(60);
    EXPECT_EQ(rig.state.lamp(), LinkLamp::Fault);
    EXPECT_FALSE(rig.state.LinkFault);
    EXPECT_EQ(rig.port.bytesWaiting(), 0);

    // Noise with no start byte, and a start byte that is the last byte.
    rig.arrive({0x11, 0x22, 0x33});
    EXPECT_EQ(rig.port.bytesWaiting(), 0);
    rig.arrive({0x11, 0x06});
    QTest::qWait(60);
    EXPECT_EQ(rig.port.bytesWaiting(), 0);
    EXPECT_EQ(rig.decoded.size(), 1u);
    EXPECT_EQ(rig.refreshes, 1);

    // A data event that finds nothing (an earlier one took the bytes).
    rig.state.setLamp(LinkLamp::Good);
    rig.receiver.ReceiveFrame();
    EXPECT_EQ(rig.state.lamp(), LinkLamp::Fault);
}

TEST(ReceiveFrame, UnknownCodeIsAcceptedAndRefreshesWithoutDecoding) {
    ReceiveRig rig;
    rig.arrive(ScriptedUnit::replyWire(0, {0xA3, 0x80}));
    EXPECT_TRUE(rig.decoded.empty());
    EXPECT_EQ(rig.state.LastResponseCode, 0xA3);
    EXPECT_EQ(rig.refreshes, 1);
}

TEST(ReceiveFrame, SecondFrameOfOneReadWaitsForTheNextEvent) {
    ReceiveRig rig;
    const auto first = ScriptedUnit::replyWire(0, {0x31, 0x01});
    const auto two = concat(first, ScriptedUnit::replyWire(0, {0x33, 0x02}));
    // One data event with both frames waiting.
    rig.port.injectIncoming(two);
    ASSERT_EQ(rig.decoded.size(), 1u);
    EXPECT_EQ(rig.decoded[0][0], 0x31);
    EXPECT_EQ(rig.port.bytesWaiting(), static_cast<int>(two.size() - first.size()));
    // The port's next event picks the second one up.
    ASSERT_TRUE(waitFor([&] { return rig.decoded.size() == 2; }));
    EXPECT_EQ(rig.decoded[1][0], 0x33);
}

TEST(ReceiveFrame, RunawayFrameIsARangeFaultNotACrash) {
    ReceiveRig rig;
    QString shown;
    QObject::connect(&rig.state, &FormState::faultReported,
                     [&](const QString& message) { shown = message; });
    std::vector<Byte> endless{0x06, 0x00};
    endless.insert(endless.end(), 1200, 0x41);
    rig.arrive(endless);
    EXPECT_TRUE(shown.contains(QStringLiteral("Subscript out of range")));
    // Still alive and decoding.
    rig.arrive(ScriptedUnit::replyWire(0, {0x31, 0x01}));
    ASSERT_TRUE(waitFor([&] { return !rig.decoded.empty(); }));
}

TEST(ReceiveFrame, GoodReplyStopsTheWatchdog) {
    LinkRig rig;
    rig.unit.answerEverything({0x00});
    rig.send({0x31, 0, 0, 0, 0, 0});
    ASSERT_TRUE(waitFor([&] { return rig.state.LastResponseCode == 0x31; }));
    EXPECT_FALSE(rig.link.Timer4().isActive());
}

TEST(ReceiveFrame, CaptureShowsEveryEscapeTheAddresssTooAndNoTrailingBlank) {
    struct Case {
        const char* what;
        Byte unitId;
        std::vector<Byte> wire;
        const char* capture;
    };
    const Case cases[] = {
        {"plain", 1, ScriptedUnit::replyWire(1, {0x31, 0x10}), "06 01 31 10 20 03"},
        {"escaped address", 3, ScriptedUnit::replyWire(3, {0x31, 0x10}), "06 1B 03 31 10 22 03"},
        {"escaped payload", 1, ScriptedUnit::replyWire(1, {0x33, 0x1B}), "06 01 33 1B 1B 29 03"},
        {"cut short", 1, {0x06, 0x01, 0x31, 0x10}, "06 01 31 10"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        ReceiveRig rig;
        rig.state.UnitId = c.unitId;
        rig.arrive(c.wire);
        QTest::qWait(40);  // a cut frame is given up after a few character times
        EXPECT_EQ(rig.lastReceived, QLatin1String(c.capture));
    }
}

TEST(ReceiveFrame, AReplyInPiecesStaysInThePortUntilItsEndComes) {
    ReceiveRig rig;
    rig.state.UnitId = 1;
    const auto wire = ScriptedUnit::replyWire(1, {0x33, 0x10, 0x03, 0x20});
    rig.state.ReplyReceived = false;
    int waiting = 0;
    for (std::size_t i = 0; i + 1 < wire.size(); ++i) {
        rig.arrive({wire[i]});
        waiting += 1;
        // Nothing taken, nothing decoded, nobody released yet.
        EXPECT_EQ(rig.port.bytesWaiting(), waiting);
        EXPECT_TRUE(rig.decoded.empty());
        EXPECT_FALSE(rig.state.ReplyReceived);
        QTest::qWait(rig.receiver.settleMs() / 2);
    }
    rig.arrive({wire.back()});
    ASSERT_EQ(rig.decoded.size(), 1u);
    EXPECT_EQ(rig.decoded[0][2], 0x03);
    EXPECT_EQ(rig.port.bytesWaiting(), 0);
    EXPECT_TRUE(rig.state.ReplyReceived);
    EXPECT_EQ(rig.state.lamp(), LinkLamp::Good);
    EXPECT_EQ(rig.lastReceived, QStringLiteral("06 01 33 10 1B 03 20 01 03"));
    // Nothing is decoded twice once the settle time has passed.
    QTest::qWait(rig.receiver.settleMs() * 2);
    EXPECT_EQ(rig.decoded.size(), 1u);
}

TEST(ReceiveFrame, ATailThatComesAfterTheLineSettledIsNoise) {
    ReceiveRig rig;
    rig.state.UnitId = 1;
    const auto wire = ScriptedUnit::replyWire(1, {0x31, 0x10});
    rig.arrive({wire.begin(), wire.begin() + 3});
    ASSERT_TRUE(waitFor([&] { return rig.port.bytesWaiting() == 0; }));
    EXPECT_EQ(rig.lastReceived, QStringLiteral("06 01 31"));
    EXPECT_EQ(rig.state.lamp(), LinkLamp::Fault);
    rig.arrive({wire.begin() + 3, wire.end()});
    EXPECT_EQ(rig.port.bytesWaiting(), 0);
    EXPECT_TRUE(rig.decoded.empty());
    // The next whole reply is read as usual.
    rig.arrive(wire);
    EXPECT_EQ(rig.decoded.size(), 1u);
}
