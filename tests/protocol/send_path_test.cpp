#include <gtest/gtest.h>

#include <QElapsedTimer>
#include <QTimer>
#include <memory>
#include <optional>

#include "protocol/senders.h"
#include "tests/support/link_rig.h"
#include "tests/support/messages.h"

using namespace halvex;
using namespace halvex::testing;

using Wire = std::vector<Byte>;
namespace v = halvex::vocab;

namespace {
const Wire kHome = v::blank<v::MoveToHome>();
const Wire kCentre = v::blank<v::MoveToCentre>();
const Wire kFirmwareRequest = v::blank<v::FirmwareRequest>();

// A 10 ms tick, where only the order of the frames counts; what the console
// showed and what the port said of itself.
struct FastRig : LinkRig {
    QStringList faults;
    QStringList reopened;
    QStringList lost;

    explicit FastRig(bool startTicking = true) : LinkRig(startTicking) {
        link.Timer2().setInterval(10);
        QObject::connect(&state, &FormState::faultReported,
                         [this](const QString& message) { faults << message; });
        QObject::connect(&port, &SerialPort::reopened,
                         [this](const QString& why) { reopened << why; });
        QObject::connect(&port, &SerialPort::lost, [this](const QString& why) { lost << why; });
    }
};

// How many frames the unit had heard when the jog sender first ran.
std::shared_ptr<std::optional<std::size_t>> framesBeforeTheJogMessage(FastRig& rig) {
    auto frames = std::make_shared<std::optional<std::size_t>>();
    rig.link.setJogSender([&rig, frames] {
        if (!*frames) {
            *frames = rig.unit.frames().size();
        }
    });
    return frames;
}
}  // namespace

// A click during a reload's wait keeps the reload's hold on the line; that
// its command goes out whole is tested on the session, in each long
// operation (tests/session/send_races_test.cpp).
TEST(SendPath, IdleTicksJogACommandsTickDoesNotAndANestedSendKeepsTheOuterSendersHold) {
    FastRig rig;
    int jogs = 0;
    rig.link.setJogSender([&] { ++jogs; });
    ASSERT_TRUE(waitFor([&] { return jogs >= 2; }));
    const int before = jogs;
    rig.send(kFirmwareRequest);
    // The tick that carried the command did not also run the jog sender.
    EXPECT_LE(jogs - before, 1);
    {
        SendInProgressScope reload(rig.state);
        rig.send(kHome);  // a click during a reload's wait
        jogs = 0;
        QTest::qWait(50);  // five ticks
        EXPECT_EQ(jogs, 0) << "the jog message went out while the reload held the line";
    }
    EXPECT_TRUE(waitFor([&] { return jogs > 0; }));
}

// The watchdog ends a silent wait, a quarter second after the frame, with
// the fault lit; nothing may wait out the full reply time-out.
TEST(SendPath, ASilentUnitsReplyWaitEndsAtTheWatchdogWithTheFaultLit) {
    FastRig rig;
    QElapsedTimer clock;
    clock.start();
    EXPECT_FALSE(finish(sendAndAwaitReply(rig.state, rig.link, kFirmwareRequest)));
    EXPECT_GE(clock.elapsed(), Link::kWatchdogMs - 50);
    EXPECT_LT(clock.elapsed(), Link::kWatchdogMs + 400);
    EXPECT_TRUE(rig.state.LinkFault);
}

// What the Line Log is told of each frame that does not go out, and why
// (a write that fails is in line_log_test.cpp).
TEST(SendPath, FramesStillWaitingWhenThePortClosesAreReportedNotLost) {
    FastRig rig;
    QStringList dropped;
    QObject::connect(&rig.link, &Link::frameDropped,
                     [&](const FrameTicket& frame, const QString& why) {
                         dropped << QStringLiteral("%1 %2").arg(frame->message[0]).arg(why);
                     });
    QCoro::Task<FrameTicket> second;
    QTimer::singleShot(0, [&] {
        QTimer::singleShot(0, [&] { rig.port.close(); });
        second = sendMessage(rig.state, rig.link, kCentre);
    });
    EXPECT_FALSE(wentOut(finish(sendMessage(rig.state, rig.link, kHome))));
    EXPECT_FALSE(wentOut(finish(std::move(second))));
    EXPECT_EQ(rig.faults, QStringList{QStringLiteral("Port closed: 2 command(s) not sent")});
    EXPECT_TRUE(rig.unit.frames().empty());
    // Once closed, a send returns at once.
    EXPECT_FALSE(wentOut(finish(sendMessage(rig.state, rig.link, kHome))));
    const auto home = QString::number(v::MoveToHome::kCode);
    EXPECT_EQ(dropped, QStringList({home + QStringLiteral(" Port closed"),
                                    QString::number(v::MoveToCentre::kCode) + " Port closed",
                                    home + QStringLiteral(" port closed")}));
}

TEST(SendPath, AStoppedTickDropsTheFrameWithAMessageInsteadOfStrandingTheSender) {
    FastRig rig(false);
    constexpr int graceMs = 200;
    rig.link.setSendGraceMs(graceMs);
    // Should the sender wait on regardless, the tick comes back and shows it.
    QTimer::singleShot(graceMs + 500, &rig.link, [&rig] { rig.link.Timer2().start(); });
    QElapsedTimer clock;
    clock.start();
    const FrameTicket dropped = finish(sendMessage(rig.state, rig.link, kFirmwareRequest));
    EXPECT_FALSE(wentOut(dropped));
    EXPECT_GE(clock.elapsed(), graceMs * 19 / 20);  // a coarse timer may be 5 % early
    EXPECT_LT(clock.elapsed(), graceMs + 500);
    EXPECT_FALSE(finish(rig.link.awaitReply(dropped), 100));  // nothing to wait for
    EXPECT_EQ(rig.faults, QStringList{QStringLiteral("Command 9A not sent: no transmit tick")});
    EXPECT_FALSE(rig.state.SendInProgress);
}

// A stop asked for behind a queued command goes on the tick after it, even
// while a sender holds the line; one asked for just before the port was
// lost goes first when it is back, not after a frame that was dropped.
TEST(SendPath, AStopRequestedBehindAQueuedFrameGoesRightAfterItOrFirstOnceThePortIsBack) {
    FastRig rig;
    SendInProgressScope reload(rig.state);  // a sender holds the line throughout
    auto framesBeforeStop = framesBeforeTheJogMessage(rig);
    QTimer::singleShot(0, [&] { rig.link.requestJogMessage(); });
    EXPECT_TRUE(wentOut(finish(sendMessage(rig.state, rig.link, kHome))));
    ASSERT_TRUE(waitFor([&] { return framesBeforeStop->has_value(); }));
    EXPECT_EQ(**framesBeforeStop, 1u);

    QTimer::singleShot(0, [&] {
        rig.link.requestJogMessage();
        rig.port.close();
    });
    EXPECT_FALSE(wentOut(finish(sendMessage(rig.state, rig.link, kHome))));
    ASSERT_TRUE(rig.port.open(QStringLiteral("COM1"), 9600));
    framesBeforeStop = framesBeforeTheJogMessage(rig);
    EXPECT_TRUE(wentOut(finish(sendMessage(rig.state, rig.link, kCentre))));
    ASSERT_TRUE(waitFor([&] { return framesBeforeStop->has_value(); }));
    EXPECT_EQ(**framesBeforeStop, 1u) << "the stop request waited for a frame that was dropped";
}

TEST(SendPath, AReplyLostWithAPortReopenedInPlaceIsReportedAsUnanswered) {
    FastRig rig;
    rig.unit.setScript([](const ScriptedUnit::Frame&) { return std::nullopt; });
    const FrameTicket frame = finish(sendMessage(rig.state, rig.link, kFirmwareRequest));
    ASSERT_TRUE(wentOut(frame));
    // The first bytes of the reply hold the watchdog off...
    rig.port.injectIncoming({kAck, 0, v::FirmwareRequest::kCode});
    EXPECT_FALSE(rig.link.Timer4().isActive());
    // ...and go with the reopen.
    rig.port.raiseFalseAlarm();
    EXPECT_FALSE(finish(rig.link.awaitReply(frame)));
    EXPECT_TRUE(frame->unanswered);
    EXPECT_TRUE(rig.state.LinkFault);
    EXPECT_EQ(rig.state.lamp(), LinkLamp::Fault);
    // The line goes on: the next reply is read whole.
    rig.unit.answerEverything({1});
    const FrameTicket next = finish(sendMessage(rig.state, rig.link, kFirmwareRequest));
    EXPECT_TRUE(finish(rig.link.awaitReply(next)));
    EXPECT_FALSE(rig.state.LinkFault);
}

// A unit that stopped answering keeps only the last eight frames awaited: a
// wait on an older one ends as the ninth goes out, not at the watchdog.
TEST(SendPath, OnlyTheLastEightFramesAreAwaited) {
    FastRig rig;
    rig.link.Timer4().setInterval(60000);
    rig.unit.setScript([](const ScriptedUnit::Frame&) { return std::nullopt; });
    std::vector<FrameTicket> frames;
    for (int i = 0; i < 9; ++i) {
        frames.push_back(finish(sendMessage(rig.state, rig.link, kHome)));
        ASSERT_TRUE(wentOut(frames.back()));
    }
    EXPECT_FALSE(finish(rig.link.awaitReply(frames[0]), 1000));
    EXPECT_FALSE(frames[1]->unanswered);
    EXPECT_TRUE(rig.link.Timer4().isActive());
}

// A serial library may report one wakeup as several errors in a row; they
// are one failure, looked at once. Until it is looked at, a tick writes
// nothing: the write would fail too and tell of a jog message lost on a
// port that is about to be reopened or reported lost anyway.
TEST(SendPath, ErrorsRaisedTogetherAreOneFailureReopenedOnceAndNothingIsWrittenMeanwhile) {
    FastRig rig(false);
    int jogs = 0;
    rig.link.setJogSender([&] { ++jogs; });
    const auto tick = [&] { QMetaObject::invokeMethod(&rig.link.Timer2(), "timeout"); };
    rig.port.raiseFalseAlarm();
    rig.port.raiseFalseAlarm();
    ASSERT_TRUE(rig.port.failing());
    tick();
    EXPECT_EQ(jogs, 0);
    ASSERT_TRUE(waitFor([&] { return !rig.port.failing(); }));
    QTest::qWait(50);
    EXPECT_EQ(rig.reopened.size(), 1);
    EXPECT_TRUE(rig.lost.isEmpty()) << rig.lost.join('\n').toStdString();
    EXPECT_TRUE(rig.port.isOpen());  // still there: opened again in place
    tick();
    EXPECT_EQ(jogs, 1);
}

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
    FastRig rig;
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
