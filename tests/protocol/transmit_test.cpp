#include <gtest/gtest.h>

#include "tests/support/link_rig.h"
#include "tests/support/messages.h"

using namespace halvex;
using namespace halvex::testing;
namespace v = halvex::vocab;

namespace {
// The message these tests send: one byte, answered by the firmware.
const std::vector<Byte> kFirmwareRequest = v::blank<v::FirmwareRequest>();
}  // namespace

// The wire by the frame encoding (checked by hand in codec_test.cpp), the
// echo by hand.
TEST(SendFrame, WritesTheStuffedFrameWithItsLrcAndEchoesItPlain) {
    const struct {
        const char* what;
        Byte unitId;
        Byte addressOverride;
        std::vector<Byte> message;
        const char* echo;
    } cases[] = {
        {"plain", 1, kNoOverride, kFirmwareRequest, "02 01 9A 9B 03"},
        {"escaped code and payload", 1, kNoOverride, {kStx, kEsc}, "02 01 1B 02 1B 1B 18 03"},
        {"escaped address", 3, kNoOverride, kFirmwareRequest, "02 1B 03 9A 99 03"},
        // Address 0 and an LRC that starts from 0; the echo names the unit.
        {"broadcast", 5, kBroadcast, v::readRequest<v::UnitAddress>(), "02 05 9F 80 1F 03"},
    };
    LinkRig rig;
    rig.link.Timer2().setInterval(10);
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        rig.state.UnitId = c.unitId;
        rig.state.AddressOverride = c.addressOverride;
        const std::size_t before = rig.unit.frames().size();
        rig.send(c.message);
        ASSERT_EQ(rig.unit.frames().size(), before + 1);
        const Byte address = c.addressOverride == kBroadcast ? 0 : c.unitId;
        EXPECT_EQ(rig.unit.frames().back().wire, encodeFrame(kStx, address, c.message, address));
        EXPECT_EQ(rig.lastSent, QLatin1String(c.echo));
        // An override serves one frame; the next goes to the configured unit.
        EXPECT_EQ(rig.state.AddressOverride, kNoOverride);
        rig.send(c.message);
        EXPECT_EQ(rig.unit.frames().back().address, c.unitId);
    }
}

TEST(SendFrame, CommandsGoOutOnePerTickAndLeaveTheStopRequestToTheJogMessage) {
    LinkRig rig;
    QElapsedTimer clock;
    clock.start();
    std::vector<qint64> sentAt;
    QObject::connect(&rig.link, &Link::frameSent, [&] { sentAt.push_back(clock.elapsed()); });
    namespace jog = v::jog;
    // Both directions and both requests.
    const Byte flags = v::maskOf(jog::kPanCw) | v::maskOf(jog::kTiltUp) | v::maskOf(jog::kReset) |
                       v::maskOf(jog::kStop);
    rig.state.JogFlags = flags;
    rig.send(test::message<v::AbsoluteMove>({{v::absolute_move::kPan, 100}}));
    // The move does not carry the flags byte, so it must not use up the
    // requests.
    EXPECT_EQ(rig.state.JogFlags, flags);
    rig.send(test::message<v::DeltaMove>({{v::delta_move::kTilt, -100}}));
    ASSERT_EQ(rig.unit.frames().size(), 2u);
    ASSERT_EQ(sentAt.size(), 2u);
    // Timers may fire a little early or late; one tick apart is what counts.
    EXPECT_GE(sentAt[1] - sentAt[0], 70);
    EXPECT_LE(sentAt[1] - sentAt[0], 250);
    EXPECT_FALSE(rig.state.SendInProgress);
}

TEST(Timer2, IdleTickRunsTheJogSenderAndBusyTickReleasesTheWaitingFrame) {
    LinkRig rig;
    rig.link.Timer2().setInterval(10);
    int jogs = 0;
    rig.link.setJogSender([&] { ++jogs; });
    ASSERT_TRUE(waitFor([&] { return jogs >= 2; }));
    const int before = jogs;
    rig.send(kFirmwareRequest);
    // The tick that carried the command did not also run the jog sender.
    EXPECT_LE(jogs - before, 1);
    EXPECT_EQ(rig.unit.frames().size(), 1u);
}

TEST(RangeFault, StopsTheHandlerSendsNothingAndPutsTheFlagBack) {
    LinkRig rig;
    rig.link.Timer2().setInterval(10);
    QString shown;
    QObject::connect(&rig.state, &FormState::faultReported,
                     [&](const QString& message) { shown = message; });
    guarded(rig.state, "AbsoBut_Click", [&] {
        SendInProgressScope sending(rig.state);
        rig.state.TxBuffer[0] = v::AbsoluteMove::kCode;
        rig.state.TxBuffer[1] = checkedByte(300);  // overflows a byte
        rig.link.SendFrame(7);
    });
    EXPECT_EQ(shown, QStringLiteral("Run-time error 6: Overflow in AbsoBut_Click"));
    EXPECT_FALSE(rig.state.SendInProgress);

    guarded(rig.state, "PresetList_Click", [&] {
        SendInProgressScope sending(rig.state);
        rig.state.TxBuffer[1001] = 1;
    });
    EXPECT_EQ(shown,
              QStringLiteral("Run-time error 9: Subscript out of range in PresetList_Click"));
    EXPECT_FALSE(rig.state.SendInProgress);

    QTest::qWait(50);  // five ticks
    EXPECT_TRUE(rig.unit.frames().empty());
    // The link still works afterwards.
    rig.send(kFirmwareRequest);
    EXPECT_EQ(rig.unit.frames().size(), 1u);
}

// A write that fails, as the Line Log tells it, is in line_log_test.cpp.
// What the Line Log is told of a frame that does not go out: one waiting
// for its tick when the port closes, and one sent to a closed port. Frames
// written and their tickets are read as the Line Log's rows and times
// (tests/recorder).
TEST(SendFrame, ReportsEachFrameDroppedWithWhy) {
    LinkRig rig;
    std::vector<QString> dropped;
    QObject::connect(&rig.link, &Link::frameDropped,
                     [&](const FrameTicket& frame, const QString& why) {
                         dropped.push_back(QStringLiteral("%1 %2").arg(frame->message[0]).arg(why));
                     });
    rig.link.Timer2().stop();
    bool firstDone = false;
    QTimer::singleShot(0, [&] {
        rig.send(test::message<v::PresetRequest>({{v::preset_request::kPreset, 1}}));
        firstDone = true;
    });
    QTimer::singleShot(20, [&] { rig.port.close(); });
    ASSERT_TRUE(waitFor([&] { return firstDone; }));
    rig.send({v::StorePreset::kCode});
    EXPECT_EQ(dropped, (std::vector<QString>{QStringLiteral("64 Port closed"),
                                             QStringLiteral("65 port closed")}));
    EXPECT_TRUE(rig.unit.frames().empty());
}
