// The real Hamlib client, rotctl with the NET rotctl backend (model 2),
// against the server: it opens with \dump_state and then sends plain
// commands, so this is what every Hamlib-based tracker does.

#include <gtest/gtest.h>

#include <QProcess>
#include <QStandardPaths>
#include <QStringList>

#include "network/rotctld_server.h"
#include "tests/network/fake_rotator.h"
#include "tests/network/line_client.h"

namespace halvex::network {
namespace {

struct RotctlRun {
    bool finished = false;
    int exitCode = -1;
    QString out;
    QString err;
};

class RotctlClientTest : public testing::Test {
  protected:
    void SetUp() override {
        rotctl_ = QStandardPaths::findExecutable(QStringLiteral("rotctl"));
        if (rotctl_.isEmpty()) {
            GTEST_SKIP() << "rotctl is not installed (Debian package libhamlib-utils)";
        }
        ASSERT_TRUE(server.listen(QHostAddress::LocalHost, 0));
    }

    // rotctl runs its commands one after the other and exits 2 if Hamlib
    // reported an error for any of them.
    RotctlRun run(const QStringList& commands) {
        QProcess process;
        const QString address = QStringLiteral("127.0.0.1:%1").arg(server.serverPort());
        process.start(rotctl_, QStringList{"-m", "2", "-r", address} + commands);
        RotctlRun result;
        // The server answers from this thread's event loop, so wait by running it.
        result.finished =
            LineClient::waitFor([&] { return process.state() == QProcess::NotRunning; }, 15000);
        if (!result.finished) {
            process.kill();
            process.waitForFinished(1000);
        }
        result.exitCode = process.exitCode();
        result.out = QString::fromUtf8(process.readAllStandardOutput());
        result.err = QString::fromUtf8(process.readAllStandardError());
        return result;
    }

    QString rotctl_;
    FakeRotator rotator;
    RotctldServer server{rotator};
};

std::string describe(const RotctlRun& run) {
    return ("stdout:\n" + run.out + "\nstderr:\n" + run.err).toStdString();
}

TEST_F(RotctlClientTest, SetsReadsBackStopsParksAndReadsInfo) {
    const RotctlRun result = run({"P", "45", "10", "p", "S", "K", "_"});
    ASSERT_TRUE(result.finished) << describe(result);
    EXPECT_EQ(result.exitCode, 0) << describe(result);

    ASSERT_EQ(rotator.moves.size(), 1u) << describe(result);
    EXPECT_DOUBLE_EQ(rotator.moves[0].azimuth, 45.0);
    EXPECT_DOUBLE_EQ(rotator.moves[0].elevation, 10.0);
    EXPECT_EQ(rotator.stops, 1);
    EXPECT_EQ(rotator.parks, 1);
    const QStringList lines = result.out.split('\n', Qt::SkipEmptyParts);
    ASSERT_EQ(lines.size(), 3) << describe(result);
    EXPECT_DOUBLE_EQ(lines[0].toDouble(), 45.0);
    EXPECT_DOUBLE_EQ(lines[1].toDouble(), 10.0);
    EXPECT_EQ(lines[2], "Halvex test unit");
}

TEST_F(RotctlClientTest, RefusalsComeBackAsErrors) {
    struct Refusal {
        QStringList commands;
        bool online;
        int reachesRotator;
    };
    const Refusal refusals[] = {
        // Past this rotator's elevation limit of 80: the rotator says no.
        {{"P", "45", "85"}, true, 1},
        // Past any elevation: refused before the rotator, by rotctl or us.
        {{"P", "45", "95"}, true, 0},
        {{"P", "45", "10"}, false, 0},
        {{"p"}, false, 0},
    };
    for (const Refusal& refusal : refusals) {
        SCOPED_TRACE(refusal.commands.join(' ').toStdString());
        rotator.online = refusal.online;
        rotator.positionRequests = 0;
        const RotctlRun result = run(refusal.commands);
        ASSERT_TRUE(result.finished) << describe(result);
        EXPECT_EQ(result.exitCode, 2) << describe(result);
        EXPECT_EQ(rotator.positionRequests, refusal.reachesRotator);
        EXPECT_TRUE(rotator.moves.empty());
    }
}

}  // namespace
}  // namespace halvex::network
