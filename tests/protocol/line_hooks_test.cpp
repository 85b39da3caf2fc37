#include <gtest/gtest.h>

#include "tests/support/link_rig.h"
#include "tests/support/messages.h"

using namespace halvex;
using namespace halvex::testing;
using recording::Verdict;
namespace v = halvex::vocab;

namespace {
struct Read {
    std::vector<Byte> wire;
    Verdict verdict;
};

struct HookRig : LinkRig {
    std::vector<Read> reads;
    std::vector<std::vector<Byte>> written;
    std::vector<FrameTicket> queued;
    std::vector<FrameTicket> writtenTickets;
    std::vector<QString> dropped;

    explicit HookRig(bool ticking) : LinkRig(ticking) {
        QObject::connect(&receiver, &Receiver::frameRead,
                         [this](const std::vector<Byte>& wire, Verdict verdict) {
                             reads.push_back({wire, verdict});
                         });
        QObject::connect(&link, &Link::frameWritten,
                         [this](const FrameTicket& frame, const std::vector<Byte>& wire) {
                             written.push_back(wire);
                             writtenTickets.push_back(frame);
                         });
        QObject::connect(&link, &Link::frameQueued,
                         [this](const FrameTicket& frame) { queued.push_back(frame); });
        QObject::connect(
            &link, &Link::frameDropped, [this](const FrameTicket& frame, const QString& why) {
                dropped.push_back(QStringLiteral("%1 %2").arg(frame->message[0]).arg(why));
            });
    }
    void arrive(const std::vector<Byte>& bytes) {
        port.injectIncoming(bytes);
        QCoreApplication::processEvents();
    }
};
}  // namespace

// The Line Log sees the bytes exactly as they came, escapes and noise
// included, and what the receive path made of them.
TEST(LineHooks, ReceiverReportsEachFrameAsItCameWithItsVerdict) {
    HookRig rig(false);
    rig.state.UnitId = 3;
    const auto good = ScriptedUnit::replyWire(3, test::sample(kEtx));
    ASSERT_EQ(good[1], kEsc);
    const std::vector<Byte> noise{0x55, 0xAA};
    const std::vector<Byte> lone{0x11, 0x22};  // no reply at all
    const std::vector<Byte> cut{kAck, kEtx | 0x80};
    std::vector<Byte> noisy = good;
    noisy.insert(noisy.begin(), noise.begin(), noise.end());
    rig.arrive(noisy);

    auto badLrc = good;
    badLrc[badLrc.size() - 2] ^= 0x01;
    rig.arrive(badLrc);
    rig.arrive(lone);
    rig.arrive(cut);
    const std::vector<Read> expected = {{noise, Verdict::Noise},
                                        {good, Verdict::Good},
                                        {badLrc, Verdict::BadLrc},
                                        {lone, Verdict::Noise},
                                        {cut, Verdict::Cut}};
    ASSERT_TRUE(waitFor([&] { return rig.reads.size() >= expected.size(); }));
    ASSERT_EQ(rig.reads.size(), expected.size());
    for (std::size_t i = 0; i < expected.size(); ++i) {
        EXPECT_EQ(rig.reads[i].wire, expected[i].wire) << i;
        EXPECT_EQ(rig.reads[i].verdict, expected[i].verdict) << i;
    }
}

TEST(LineHooks, AFrameThatRunsPastTheReceiveBufferStillShowsAsCut) {
    HookRig rig(false);
    std::vector<Byte> runaway = {kAck, 0};
    runaway.insert(runaway.end(), 1200, v::JogMessage::kCode);
    runaway.push_back(kEtx);
    rig.arrive(runaway);
    ASSERT_EQ(rig.reads.size(), 2u);
    EXPECT_EQ(rig.reads[0].verdict, Verdict::Cut);
    // ACK, address, 1001 bytes stored and the one that did not fit.
    EXPECT_EQ(rig.reads[0].wire.size(), 1004u);
    // What was left of it in the port is read as noise.
    EXPECT_EQ(rig.reads[1].verdict, Verdict::Noise);
    EXPECT_EQ(rig.reads[1].wire.size(), runaway.size() - 1004);
}

TEST(LineHooks, LinkReportsEachFrameQueuedWrittenOrDropped) {
    HookRig rig(true);
    rig.state.UnitId = 3;
    const auto address = test::message<v::UnitAddress>({{v::unit_address::kId, 2}});
    rig.send(address);
    ASSERT_EQ(rig.written.size(), 1u);
    EXPECT_EQ(rig.written[0], encodeFrame(kStx, 3, address, 3));
    ASSERT_EQ(rig.queued.size(), 1u);
    EXPECT_EQ(rig.queued[0], rig.writtenTickets[0]);
    EXPECT_TRUE(rig.dropped.empty());

    // Frames waiting for their tick when the port closes, and a frame sent
    // to a closed port.
    rig.link.Timer2().stop();
    bool firstDone = false;
    QTimer::singleShot(0, [&] {
        rig.send(test::message<v::PresetRequest>({{v::preset_request::kPreset, 1}}));
        firstDone = true;
    });
    QTimer::singleShot(20, [&] { rig.port.close(); });
    ASSERT_TRUE(waitFor([&] { return firstDone; }));
    rig.send({v::StorePreset::kCode});
    EXPECT_EQ(rig.dropped, (std::vector<QString>{QStringLiteral("64 Port closed"),
                                                 QStringLiteral("65 port closed")}));
    EXPECT_EQ(rig.written.size(), 1u);
}
