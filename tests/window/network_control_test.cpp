// Network control end to end: the whole console against the virtual unit,
// steered by Hamlib's own rotctl client (model 2, the rotctld backend) and by
// a bare TCP client where rotctl would refuse a request before sending it.

#include <gtest/gtest.h>

#include <QAction>
#include <QCheckBox>
#include <QLabel>
#include <QListWidget>
#include <QProcess>
#include <QStandardPaths>
#include <QStatusBar>
#include <QTcpServer>
#include <cmath>

#include "console/position_encoding.h"
#include "tests/network/line_client.h"
#include "tests/support/console_rig.h"
#include "views/pages/pan_tilt_page.h"
#include "window/network_control.h"

namespace halvex::testing {
namespace {

using network::LineClient;

struct RotctlRun {
    bool finished = false;
    int exitCode = -1;
    QString out;
    QString err;
    std::string describe() const {
        return ("exit " + QString::number(exitCode) + "\nstdout:\n" + out + "\nstderr:\n" + err)
            .toStdString();
    }
};

// The pan and tilt of a 0x33 frame, in hundredths.
std::pair<std::int32_t, std::int32_t> absoluteTarget(const RecordingPeer::Frame& frame) {
    ByteTable message;
    for (std::size_t i = 0; i < frame.message.size(); ++i) {
        message[static_cast<int>(i)] = frame.message[i];
    }
    return {getPosition(message, 1), getPosition(message, 4)};
}

class NetworkControlTest : public ::testing::Test {
  protected:
    void SetUp() override {
        rotctl_ = QStandardPaths::findExecutable(QStringLiteral("rotctl"));
        if (rotctl_.isEmpty()) {
            GTEST_SKIP() << "rotctl is not installed (Debian package libhamlib-utils)";
        }
    }

    NetworkControl& control() { return rig.window->networkControl(); }
    quint16 port() { return control().server().serverPort(); }
    QString label() { return rig.find<QLabel>(QStringLiteral("RotctldLabel"))->text(); }

    // rotctl blocks until its commands are done; the console answers from
    // this thread, so the event loop runs while it waits.
    RotctlRun rotctl(const QStringList& commands) {
        QProcess process;
        process.start(
            rotctl_,
            QStringList{"-m", "2", "-r", QStringLiteral("127.0.0.1:%1").arg(port())} + commands);
        RotctlRun run;
        run.finished =
            ConsoleRig::waitFor([&] { return process.state() == QProcess::NotRunning; }, 8000);
        if (!run.finished) {
            process.kill();
            process.waitForFinished(1000);
        }
        run.exitCode = process.exitCode();
        run.out = QString::fromUtf8(process.readAllStandardOutput());
        run.err = QString::fromUtf8(process.readAllStandardError());
        return run;
    }

    // Azimuth and elevation as `p` reads them.
    std::optional<std::pair<double, double>> readPosition() {
        const RotctlRun run = rotctl({"p"});
        const QStringList lines = run.out.split('\n', Qt::SkipEmptyParts);
        if (run.exitCode != 0 || lines.size() != 2) {
            return std::nullopt;
        }
        return std::pair{lines[0].toDouble(), lines[1].toDouble()};
    }

    // The 0x33 frames sent since `from`.
    std::vector<RecordingPeer::Frame> absoluteMovesSince(std::size_t from) {
        std::vector<RecordingPeer::Frame> moves;
        const auto& frames = rig.line.frames();
        for (std::size_t i = from; i < frames.size(); ++i) {
            if (!frames[i].message.empty() && frames[i].message[0] == 0x33) {
                moves.push_back(frames[i]);
            }
        }
        return moves;
    }

    QString rotctl_;
    ConsoleRig rig;
};

TEST_F(NetworkControlTest, StartsFromTheMenuAndTellsWhenThePortIsTaken) {
    QAction* menu = rig.find<QAction>(QStringLiteral("MenuRotctld"));
    ASSERT_NE(menu, nullptr);
    EXPECT_TRUE(label().isEmpty());

    QTcpServer squatter;
    ASSERT_TRUE(squatter.listen(QHostAddress::LocalHost, 0));
    control().setEndpoint(QHostAddress::LocalHost, squatter.serverPort());
    menu->trigger();
    EXPECT_FALSE(control().server().isListening());
    EXPECT_FALSE(menu->isChecked());
    EXPECT_TRUE(label().isEmpty());
    EXPECT_TRUE(
        rig.window->statusBar()->currentMessage().contains(QString::number(squatter.serverPort())));

    control().setEndpoint(QHostAddress::LocalHost, 0);
    menu->trigger();
    ASSERT_TRUE(control().server().isListening());
    EXPECT_TRUE(menu->isChecked());
    EXPECT_EQ(label(), QStringLiteral("Network control on 127.0.0.1:%1, 0 clients").arg(port()));

    LineClient client;
    ASSERT_TRUE(client.connectTo(port()));
    EXPECT_TRUE(
        ConsoleRig::waitFor([&] { return label().endsWith(QStringLiteral(", 1 client")); }));
    // Offline, nothing moves and nothing is read.
    client.exchange("p\n", "RPRT -6\n");
    client.exchange("P 10 10\n", "RPRT -6\n");

    menu->trigger();
    EXPECT_FALSE(control().server().isListening());
    EXPECT_TRUE(label().isEmpty());
    EXPECT_TRUE(client.waitClosedByServer());
}

TEST_F(NetworkControlTest, TrackerSteersTheUnitLikeTheMoveButtons) {
    control().setEndpoint(QHostAddress::LocalHost, 0);
    ASSERT_TRUE(control().start());
    const RotctlRun offline = rotctl({"P", "10", "10"});
    EXPECT_NE(offline.exitCode, 0) << offline.describe();

    ASSERT_TRUE(rig.connect());
    auto* monitor = rig.find<QPushButton>(QStringLiteral("MoveMonBut"));
    ASSERT_NE(monitor, nullptr);
    monitor->click();
    auto* log = rig.find<QListWidget>(QStringLiteral("MoveList"));
    ASSERT_NE(log, nullptr);

    // A move: exactly the absolute-move frame, and the unit gets there.
    std::size_t mark = rig.line.frames().size();
    const RotctlRun move = rotctl({"P", "45", "10"});
    ASSERT_EQ(move.exitCode, 0) << move.describe();
    ASSERT_TRUE(ConsoleRig::waitFor([&] { return !absoluteMovesSince(mark).empty(); }));
    const auto moves = absoluteMovesSince(mark);
    ASSERT_EQ(moves.size(), 1u);
    EXPECT_EQ(moves[0].message.size(), 7u);
    EXPECT_EQ(absoluteTarget(moves[0]), std::pair(4500, 1000));
    std::optional<std::pair<double, double>> at;
    EXPECT_TRUE(ConsoleRig::waitFor(
        [&] {
            at = readPosition();
            return at && std::abs(at->first - 45.0) < 0.01 && std::abs(at->second - 10.0) < 0.01;
        },
        15000))
        << (at ? at->first : -1.0) << " " << (at ? at->second : -1.0);
    EXPECT_TRUE(ConsoleRig::waitFor([&] { return log->count() > 0; }));
    EXPECT_TRUE(log->item(log->count() - 1)->text().contains(QStringLiteral("45.00")))
        << log->item(log->count() - 1)->text().toStdString();

    // A west azimuth is a negative pan (rotctl's own range is -180..180
    // azimuth, 0..90 elevation); a held axis still takes the
    // network target, and the hold box stays as the operator left it.
    auto* holdPan = rig.find<QCheckBox>(QStringLiteral("HoldPanCheck"));
    ASSERT_NE(holdPan, nullptr);
    holdPan->setChecked(true);
    mark = rig.line.frames().size();
    const RotctlRun west = rotctl({"P", "-60", "20"});
    ASSERT_EQ(west.exitCode, 0) << west.describe();
    ASSERT_TRUE(ConsoleRig::waitFor([&] { return !absoluteMovesSince(mark).empty(); }));
    EXPECT_EQ(absoluteTarget(absoluteMovesSince(mark)[0]), std::pair(-6000, 2000));
    EXPECT_TRUE(holdPan->isChecked());

    // Stop during that move: the stop bit rides on the next jog frame.
    const std::size_t stopMark = rig.line.frames().size();
    const RotctlRun stop = rotctl({"S"});
    ASSERT_EQ(stop.exitCode, 0) << stop.describe();
    EXPECT_TRUE(ConsoleRig::waitFor([&] {
        const auto& frames = rig.line.frames();
        for (std::size_t i = stopMark; i < frames.size(); ++i) {
            const auto& message = frames[i].message;
            if (message.size() > 1 && message[0] == 0x31 && (message[1] & 0x02) != 0) {
                return true;
            }
        }
        return false;
    }));
    holdPan->setChecked(false);

    // Outside the soft limits (the virtual unit's are +-170 pan, +-85 tilt):
    // refused, nothing sent. rotctl keeps to -180..180 azimuth and 0..90
    // elevation itself, so the rest is asked over a bare connection.
    mark = rig.line.frames().size();
    LineClient client;
    ASSERT_TRUE(client.connectTo(port()));
    client.exchange("P 175 10\n", "RPRT -1\n");  // pan 175
    client.exchange("P 45 88\n", "RPRT -1\n");
    client.exchange("P 45 -86\n", "RPRT -1\n");
    const RotctlRun beyond = rotctl({"P", "45", "88"});
    EXPECT_NE(beyond.exitCode, 0) << beyond.describe();
    QTest::qWait(300);
    EXPECT_TRUE(absoluteMovesSince(mark).empty());

    client.exchange("_\n", "Halvex pan & tilt unit on COM1\n");
}

}  // namespace
}  // namespace halvex::testing
