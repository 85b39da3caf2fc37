// Something else happening while an operation holds the line across many
// requests: another command, Exit, a unit that falls silent, a burst of odd
// replies. Each operation still ends, and the line is free afterwards.

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

    bool sentSince(std::size_t from, const std::vector<Byte>& message) const {
        const auto commands = commandsSince(from);
        return std::find(commands.begin(), commands.end(), message) != commands.end();
    }
    bool jogsFlowAgain() {
        const std::size_t mark = line.frames().size();
        return runUntil([&] { return line.frames().size() >= mark + 3; }, 1000);
    }
    // Home, as the operator's button sends it, and the proof it went out.
    bool homeGoesOut() {
        const std::size_t mark = line.frames().size();
        return finish(session.moveHome(Requester::Operator)).isDone() &&
               sentSince(mark, test::message<v::MoveToHome>());
    }
};

TEST_F(SendRaces, ACommandMeanwhileGoesOutAndTheOperationFinishes) {
    const std::size_t start = line.frames().size();
    std::optional<QCoro::Task<Outcome>> home;
    qint64 took = 0;
    EXPECT_TRUE(runWith([&] { home = session.moveHome(Requester::Operator); }, took));
    ASSERT_TRUE(home.has_value());
    EXPECT_TRUE(finish(std::move(*home)).isDone());
    EXPECT_TRUE(sentSince(start, test::message<v::MoveToHome>()));
    EXPECT_TRUE(jogsFlowAgain());
}

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
    EXPECT_TRUE(jogsFlowAgain());
}

TEST_F(SessionTest, ABurstOfOddRepliesLeavesTheLineWorking) {
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

    const std::size_t quiet = line.frames().size();
    EXPECT_TRUE(runUntil([&] { return line.frames().size() >= quiet + 3; }, 1000))
        << "no jog messages after the burst";
    const std::size_t after = line.frames().size();
    EXPECT_TRUE(finish(session.moveHome(Requester::Operator)).isDone());
    const auto commands = commandsSince(after);
    EXPECT_NE(std::find(commands.begin(), commands.end(), test::message<v::MoveToHome>()),
              commands.end());
}

// A jog message that carries the stop request.
bool carriesStop(const std::vector<Byte>& message) {
    return message.at(0) == v::JogMessage::kCode && v::isSet(message.at(1), v::jog::kStop);
}

TEST_F(SessionTest, StopAndResetRideOnTheNextJogMessageOnce) {
    ASSERT_TRUE(connect());
    line.clear();
    EXPECT_TRUE(session.reset().isDone());
    EXPECT_TRUE(session.reset().isDone());
    EXPECT_TRUE(session.stop().isDone());
    ASSERT_TRUE(runUntil([&] { return line.frames().size() >= 3; }, 2000));
    const auto flags = [&](std::size_t i) {
        const Byte byte = line.frames().at(i).message.at(1);
        return std::pair(v::isSet(byte, v::jog::kReset), v::isSet(byte, v::jog::kStop));
    };
    EXPECT_EQ(flags(0), std::pair(true, true));  // both requests, in one frame
    EXPECT_EQ(flags(1), std::pair(false, false));
    EXPECT_EQ(flags(2), std::pair(false, false));
}

TEST_F(SessionTest, StopDuringTheConnectionsPresetReloadGoesOutBeforeTheReloadEnds) {
    connection.setLaterSteps(connection.unitReads());
    line.onFrame = [&](const RecordingPeer::Frame& frame) {
        if (frame.message == test::message<v::PresetRequest>({{v::preset_request::kPreset, 1}})) {
            QTimer::singleShot(0, &session, [&] { session.stop(); });
        }
    };
    ASSERT_TRUE(connect());
    line.onFrame = nullptr;
    const auto sent = line.messages(true);
    const auto stop = std::find_if(sent.begin(), sent.end(), carriesStop);
    ASSERT_NE(stop, sent.end());
    const auto lastPreset = std::find_if(sent.rbegin(), sent.rend(), [](const auto& m) {
        return m.at(0) == v::PresetRequest::kCode;
    });
    EXPECT_LT(stop, lastPreset.base()) << "the stop waited for the reload to end";
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
