// Something else happening while an operation holds the line across many
// requests: Exit, a unit that falls silent, a burst of odd replies. Each operation still ends, and
// the line is free afterwards.

#include <QElapsedTimer>
#include <QTimer>
#include <functional>
#include <optional>
#include <random>

#include "protocol/frame.h"
#include "tests/session/session_rig.h"

namespace halvex::testing {
namespace {

namespace v = vocab;

// Clearing the presets holds the line across 33 request/reply pairs, and is
// done only when every request was answered.
class SendRaces : public SessionTest {
  protected:
    // Runs the operation and, once three of its requests are out,
    // `meanwhile`. Returns whether the operation said it succeeded, and in
    // `tookMs` how long it ran.
    bool runWith(const std::function<void()>& meanwhile, qint64& tookMs) {
        int requests = 0;
        line.onFrame = [&](const RecordingPeer::Frame& frame) {
            if (frame.message.front() != v::JogMessage::kCode && ++requests == 3) {
                QTimer::singleShot(0, &session, meanwhile);
            }
        };
        QElapsedTimer clock;
        clock.start();
        session.open(QStringLiteral("COM1"), 9600);
        const bool succeededAnyway =
            finish(session.clearAllPresets(Requester::Operator), 20000).isDone();
        tookMs = clock.elapsed();
        line.onFrame = nullptr;
        EXPECT_GE(requests, 3) << "the operation was over before anything happened meanwhile";
        return succeededAnyway;
    }

    bool jogsFlowAgain() {
        const std::size_t mark = line.frames().size();
        return runUntil([&] { return line.frames().size() >= mark + 3; }, 1000);
    }
    // Home, as the operator's button sends it, and the proof it went out.
    bool homeGoesOut() {
        const std::size_t mark = line.frames().size();
        const bool done = finish(session.moveHome(Requester::Operator)).isDone();
        const auto commands = commandsSince(mark);
        return done && std::find(commands.begin(), commands.end(),
                                 test::message<v::MoveToHome>()) != commands.end();
    }
};

TEST_F(SendRaces, ExitMeanwhileClosesTheLinePromptly) {
    std::optional<QCoro::Task<>> exiting;
    qint64 took = 0;
    const bool done = runWith([&] { exiting = connection.exit(); }, took);
    EXPECT_FALSE(done) << "cut short, and said to be done";
    ASSERT_TRUE(exiting.has_value());
    finish(std::move(*exiting));
    EXPECT_LT(took, 3000);
    EXPECT_FALSE(session.port().isOpen());
    const std::size_t atExit = line.frames().size();
    runUntil([] { return false; }, 50);
    EXPECT_EQ(line.frames().size(), atExit) << "frames after the line closed";
}

TEST_F(SendRaces, AUnitThatFallsSilentEndsTheOperationAndTheLineCarriesOn) {
    qint64 took = 0;
    // Once the unit is silent, its watchdog need not wait as long.
    const bool done = runWith(
        [&] {
            line.setConnected(false);
            session.link().Timer4().setInterval(80);
        },
        took);
    EXPECT_FALSE(done) << "cut short, and said to be done";
    EXPECT_LT(took, 4000);
    EXPECT_FALSE(session.state().SendInProgress);
    session.link().Timer4().setInterval(Link::kWatchdogMs);
    line.setConnected(true);
    EXPECT_TRUE(homeGoesOut());
}

TEST_F(SendRaces, ABurstOfOddRepliesLeavesTheLineWorking) {
    for (int step = 0; step < 6; ++step) {
        unit.state().tours.append(1, {static_cast<Byte>(step), 2});
    }
    ASSERT_TRUE(session.open(QStringLiteral("COM1"), 9600));
    // Well-formed replies of codes that start reloads and waits, with random
    // payloads, a fifth of them cut short, every millisecond on top of the unit's
    // own answers.
    // clang-format off
    const Byte codes[] = {
        v::JogMessage::kCode, v::TourStarted::kCode, v::PresetRecord::kCode,
        v::TourCleared::kCode, v::TourStep::kCode, v::AppendTourStep::kCode,
        v::TourStepCount::kCode, v::SetAngleOffsets::kCode, v::SoftLimitReply::kCode,
        v::AngleOffsets::kCode, v::ClearAllPresets::kCode, v::EncoderAlignmentFinished::kCode,
        v::HomingCycleFinished::kCode, v::CameraLines::kCode, v::LensConfiguration::kCode,
        v::UnitAddress::kCode};
    // clang-format on
    std::mt19937 random(8);
    QTimer noise;
    int sent = 0;
    QObject::connect(&noise, &QTimer::timeout, [&] {
        std::vector<Byte> message{codes[random() % std::size(codes)]};
        for (int n = static_cast<int>(random() % 20); n > 0; --n) {
            message.push_back(static_cast<Byte>(random()));
        }
        std::vector<Byte> wire = encodeFrame(kAck, 0, message, 0);
        if (++sent % 5 == 0) {
            wire.resize(wire.size() / 2);
        }
        port->injectIncoming(wire);
    });
    noise.start(1);
    QTimer::singleShot(150, &noise, &QTimer::stop);  // some 150 of them
    finish(session.loadTour(1, Requester::Operator), 5000);
    runUntil([&] { return !noise.isActive(); }, 5000);
    EXPECT_TRUE(jogsFlowAgain()) << "no jog messages after the burst";
    EXPECT_TRUE(homeGoesOut());
}

TEST_F(SessionTest, StopAndResetRideOnTheNextJogMessageOnce) {
    ASSERT_TRUE(connect());
    line.clear();
    EXPECT_TRUE(session.reset().isDone());
    EXPECT_TRUE(session.reset().isDone());
    EXPECT_TRUE(session.stop().isDone());
    ASSERT_TRUE(runUntil([&] { return line.frames().size() >= 2; }, 2000));
    const auto flags = [&](std::size_t i) {
        const Byte byte = line.frames().at(i).message.at(1);
        return std::pair(v::isSet(byte, v::jog::kReset), v::isSet(byte, v::jog::kStop));
    };
    EXPECT_EQ(flags(0), std::pair(true, true));  // both requests, in one frame
    EXPECT_EQ(flags(1), std::pair(false, false));
}

TEST_F(SessionTest, ExitOnADeadLineStillClosesIt) {
    ASSERT_TRUE(connect());
    line.setConnected(false);
    session.link().Timer4().setInterval(80);
    finish(connection.exit());
    EXPECT_FALSE(session.port().isOpen());
}

}  // namespace
}  // namespace halvex::testing
