// The connection sequence on a port whose connection takes its time and may
// fail, as a network port's does.

#include <gtest/gtest.h>

#include <QLabel>
#include <QStringList>
#include <QTimer>

#include "connection/connection_sequence.h"
#include "tests/support/console_rig.h"

using namespace halvex;
using namespace halvex::testing;

namespace {

struct NetworkRig : ConsoleRig {
    NetworkRig() {
        QObject::connect(&window->state(), &FormState::faultReported,
                         [this](const QString& message) { faults << message; });
    }
    bool titleEnds(const char* suffix) {
        return window->windowTitle().endsWith(QString::fromLatin1(suffix));
    }
    // Online, then the server goes away; the console is looking for it.
    bool loseTheServer() {
        if (!connect()) {
            return false;
        }
        port->setSlowConnection(true);
        port->setWriteFails(true);
        const bool offline = waitFor([this] { return titleEnds(" Offline"); }, 3000);
        port->setWriteFails(false);
        return offline;
    }
    bool attemptUnderWay() {
        return waitFor([this] { return port->stillConnecting(); }, 3000);
    }

    QStringList faults;
};

TEST(NetworkConnection, TheFirstFrameWaitsForTheConnectionAndNothingPilesUpBehindIt) {
    NetworkRig rig;
    rig.port->setSlowConnection(true);
    std::size_t framesWhileConnecting = 99;
    QTimer::singleShot(300, rig.window.get(), [&] {
        framesWhileConnecting = rig.line.frames().size();
        rig.port->connectionDone(true);
    });
    ASSERT_TRUE(rig.connect());
    EXPECT_EQ(framesWhileConnecting, 0u);
    EXPECT_TRUE(rig.shown.empty());
    // Thirty ticks passed while connecting, yet only the usual jog messages
    // come before the first request of the sequence.
    const auto& frames = rig.line.frames();
    const auto firstRequest = std::find_if(frames.begin(), frames.end(), [](const auto& frame) {
        return frame.message.at(0) != 0x31;
    });
    ASSERT_NE(firstRequest, frames.end());
    EXPECT_EQ(firstRequest->message, (std::vector<Byte>{0x85}));
    EXPECT_LE(firstRequest - frames.begin(), 3);
}

TEST(NetworkConnection, AConnectionNotMadeInTimeEndsLikeASilentUnitAndSendsNothing) {
    NetworkRig rig;
    rig.port->setSlowConnection(true);
    rig.click(QStringLiteral("StartBut"));
    ASSERT_EQ(rig.shown.size(), 1u);
    EXPECT_EQ(rig.shown[0].title, QStringLiteral("Could Not Establish Connection"));
    EXPECT_FALSE(rig.port->isOpen());
    EXPECT_FALSE(rig.window->link().Timer2().isActive());
    EXPECT_TRUE(rig.line.frames().empty());
    EXPECT_FALSE(rig.window->findChild<ConnectionSequence*>()->reconnecting());
}

TEST(NetworkConnection, AnAbsentServerIsLookedForQuietlyAndTakenBackWhenItAnswers) {
    NetworkRig rig;
    ASSERT_TRUE(rig.loseTheServer());
    const int opensBefore = rig.port->opens();
    // An attempt a second, each refused; only a new reason is told.
    for (int attempt = 0; attempt < 2; ++attempt) {
        ASSERT_TRUE(rig.attemptUnderWay());
        EXPECT_TRUE(rig.titleEnds(" Offline")) << "an attempt is no connection sequence";
        rig.port->connectionDone(false);
        ASSERT_TRUE(rig.waitFor([&] { return !rig.port->isOpen(); }));
    }
    EXPECT_EQ(rig.port->opens() - opensBefore, 2);
    const QStringList losses = rig.faults.filter(QStringLiteral(" lost: "));
    ASSERT_EQ(losses.size(), 2) << rig.faults.join('\n').toStdString();
    EXPECT_TRUE(losses[0].endsWith(
        "lost: the device went away (writing to it failed). Looking for it again."));
    EXPECT_TRUE(losses[1].endsWith(
        "lost: the device server refused the connection. Looking for it again."));

    ASSERT_TRUE(rig.attemptUnderWay());
    rig.port->connectionDone(true);
    ASSERT_TRUE(rig.waitFor([&] { return rig.titleEnds(" Online"); }, 10000));
    EXPECT_TRUE(rig.shown.empty());
    EXPECT_TRUE(rig.faults.last().endsWith(" is back: connecting again."));
    // Lost again for the same reason as before: told again, as it is news.
    rig.port->setWriteFails(true);
    ASSERT_TRUE(rig.waitFor([&] { return rig.titleEnds(" Offline"); }, 3000));
    rig.port->setWriteFails(false);
    EXPECT_TRUE(rig.faults.last().endsWith("(writing to it failed). Looking for it again."));
}

TEST(NetworkConnection, StopOrStartWhileAnAttemptIsUnderWayLeavesNoPortHalfOpen) {
    NetworkRig rig;
    ASSERT_TRUE(rig.loseTheServer());
    ASSERT_TRUE(rig.attemptUnderWay());
    rig.click(QStringLiteral("StopBut"));
    EXPECT_FALSE(rig.port->isOpen());
    EXPECT_FALSE(rig.window->findChild<ConnectionSequence*>()->reconnecting());
    EXPECT_TRUE(rig.faults.last().startsWith("No longer looking for COM1"));
    const int opens = rig.port->opens();
    QTest::qWait(1500);
    EXPECT_EQ(rig.port->opens(), opens) << "still looking after Stop";

    // Start while an attempt is under way begins afresh and goes online.
    rig.port->setSlowConnection(false);
    ASSERT_TRUE(rig.loseTheServer());
    ASSERT_TRUE(rig.attemptUnderWay());
    const int beforeStart = rig.port->opens();
    QTimer::singleShot(100, rig.window.get(), [&] { rig.port->connectionDone(true); });
    ASSERT_TRUE(rig.connect());
    EXPECT_EQ(rig.port->opens(), beforeStart + 1);
    EXPECT_TRUE(rig.shown.empty());
}

}  // namespace
