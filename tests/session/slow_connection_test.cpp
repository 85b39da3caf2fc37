// The connection on a port whose connection takes its time and may fail, as
// a network port's does.

#include <QSignalSpy>
#include <QStringList>
#include <QTimer>

#include "tests/session/session_rig.h"

namespace halvex::testing {
namespace {

class SlowConnection : public SessionTest {
  protected:
    SlowConnection() {
        QObject::connect(&session.state(), &FormState::faultReported,
                         [this](const QString& message) { faults << message; });
    }
    // Online, then the server goes away: the connection is looking for it.
    bool loseTheServer() {
        if (!connect()) {
            return false;
        }
        port->setSlowConnection(true);
        port->setWriteFails(true);
        const bool offline = runUntil([this] { return !session.online(); }, 3000);
        port->setWriteFails(false);
        return offline && connection.reconnecting();
    }
    bool attemptUnderWay() {
        return runUntil([this] { return port->stillConnecting(); }, 3000);
    }

    QStringList faults;
};

TEST_F(SlowConnection, TheFirstFrameWaitsForTheConnectionAndNothingPilesUpBehindIt) {
    port->setSlowConnection(true);
    std::size_t framesWhileConnecting = 99;
    QTimer::singleShot(100, &session, [&] {
        framesWhileConnecting = line.frames().size();
        port->connectionDone(true);
    });
    ASSERT_TRUE(connect());
    EXPECT_EQ(framesWhileConnecting, 0u);
    // Thirty ticks passed while connecting, yet only the usual jog messages
    // come before the first request of the sequence.
    const auto& frames = line.frames();
    const auto firstRequest = std::find_if(frames.begin(), frames.end(), [](const auto& frame) {
        return frame.message.at(0) != vocab::JogMessage::kCode;
    });
    ASSERT_NE(firstRequest, frames.end());
    EXPECT_EQ(firstRequest->message, test::message<vocab::OffsetsRequest>());
    EXPECT_LE(firstRequest - frames.begin(), 3);
}

TEST_F(SlowConnection, AConnectionNotMadeInTimeEndsLikeASilentUnitAndSendsNothing) {
    session.link().Timer1().setInterval(Link::kConnectTimeoutMs / 25);
    port->setSlowConnection(true);
    QSignalSpy nobodyAnswered(&connection, &UnitConnection::noUnitAnswered);
    EXPECT_FALSE(finish(connection.start()));
    EXPECT_EQ(nobodyAnswered.size(), 1);
    EXPECT_FALSE(port->isOpen());
    EXPECT_FALSE(session.link().Timer2().isActive());
    EXPECT_TRUE(line.frames().empty());
    EXPECT_FALSE(connection.reconnecting());
}

TEST_F(SlowConnection, AnAbsentServerIsLookedForQuietlyTakenBackAndNoLongerLookedForOnStop) {
    ASSERT_TRUE(loseTheServer());
    const int opensBefore = port->opens();
    // An attempt a second, each refused; only a new reason is told.
    for (int attempt = 0; attempt < 2; ++attempt) {
        ASSERT_TRUE(attemptUnderWay());
        EXPECT_FALSE(session.online()) << "an attempt is no connection sequence";
        port->connectionDone(false);
        ASSERT_TRUE(runUntil([&] { return !port->isOpen(); }, 3000));
    }
    EXPECT_EQ(port->opens() - opensBefore, 2);
    const QStringList losses = faults.filter(QStringLiteral(" lost: "));
    ASSERT_EQ(losses.size(), 2) << faults.join('\n').toStdString();
    EXPECT_TRUE(losses[1].endsWith(
        "lost: the device server refused the connection. Looking for it again."));

    ASSERT_TRUE(attemptUnderWay());
    port->connectionDone(true);
    ASSERT_TRUE(runUntil([&] { return session.online(); }, 10000));
    // Lost again for the same reason as before: told again, as it is news.
    port->setWriteFails(true);
    ASSERT_TRUE(runUntil([&] { return !session.online(); }, 3000));
    port->setWriteFails(false);
    EXPECT_TRUE(faults.last().endsWith("(writing to it failed). Looking for it again."));

    // Stop while an attempt is under way leaves no port half open.
    ASSERT_TRUE(attemptUnderWay());
    EXPECT_TRUE(connection.stopLooking());
    EXPECT_FALSE(port->isOpen());
    EXPECT_FALSE(connection.reconnecting());
    EXPECT_EQ(faults.last(), QStringLiteral("No longer looking for the virtual unit."));
    const int opens = port->opens();
    runUntil([] { return false; }, kReconnectMs * 3);
    EXPECT_EQ(port->opens(), opens) << "still looking after Stop";

    // Start while an attempt is under way begins afresh and goes online.
    port->setSlowConnection(false);
    ASSERT_TRUE(loseTheServer());
    ASSERT_TRUE(attemptUnderWay());
    const int beforeStart = port->opens();
    QTimer::singleShot(100, &session, [&] { port->connectionDone(true); });
    ASSERT_TRUE(connect());
    EXPECT_EQ(port->opens(), beforeStart + 1);
}

}  // namespace
}  // namespace halvex::testing
