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

#include "protocol/frame.h"
#include "tests/network/line_client.h"
#include "tests/support/console_rig.h"
#include "window/network_control.h"

namespace halvex::testing {
namespace {

using network::LineClient;

class NetworkControlTest : public ::testing::Test {
  protected:
    NetworkControl& control() { return rig.window->networkControl(); }
    quint16 port() { return control().server().serverPort(); }
    QString label() { return rig.find<QLabel>(QStringLiteral("RotctldLabel"))->text(); }

    // rotctl's exit code; the console answers from this thread, so the event
    // loop runs while it waits.
    int rotctl(const QStringList& commands) {
        QProcess process;
        process.start(
            QStandardPaths::findExecutable(QStringLiteral("rotctl")),
            QStringList{"-m", "2", "-r", QStringLiteral("127.0.0.1:%1").arg(port())} + commands);
        EXPECT_TRUE(
            ConsoleRig::waitFor([&] { return process.state() == QProcess::NotRunning; }, 8000));
        process.kill();
        process.waitForFinished(1000);
        return process.exitCode();
    }

    // Pan and tilt of each absolute-move frame sent since `from`, in hundredths.
    std::vector<std::pair<int, int>> movesSince(std::size_t from) {
        std::vector<std::pair<int, int>> moves;
        const auto& frames = rig.line.frames();
        for (std::size_t i = from; i < frames.size(); ++i) {
            const auto& m = frames[i].message;
            if (m.size() == 7 && m[0] == 0x33) {
                moves.emplace_back(Build24(m[3], m[2], m[1]), Build24(m[6], m[5], m[4]));
            }
        }
        return moves;
    }

    ConsoleRig rig;
};

TEST_F(NetworkControlTest, StartsFromTheMenuAndTellsWhenThePortIsTaken) {
    QAction* menu = rig.find<QAction>(QStringLiteral("MenuRotctld"));
    ASSERT_NE(menu, nullptr);
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
    EXPECT_TRUE(ConsoleRig::waitFor([&] { return label().endsWith(", 1 client"); }));
    client.exchange("P 10 10\n", "RPRT -6\n");  // offline: nothing is moved
    menu->trigger();
    EXPECT_FALSE(control().server().isListening());
    EXPECT_TRUE(label().isEmpty());
    EXPECT_TRUE(client.waitClosedByServer());
}

// Online, with network control listening, for Hamlib's own rotctl client.
class RotctlTest : public NetworkControlTest {
  protected:
    void SetUp() override {
        if (QStandardPaths::findExecutable(QStringLiteral("rotctl")).isEmpty()) {
            GTEST_SKIP() << "rotctl is not installed (Debian package libhamlib-utils)";
        }
        control().setEndpoint(QHostAddress::LocalHost, 0);
        ASSERT_TRUE(control().start());
        ASSERT_TRUE(rig.connect());
    }
};

TEST_F(RotctlTest, TrackerSteersTheUnitLikeTheMoveButtons) {
    rig.click(QStringLiteral("MoveMonBut"));
    auto* log = rig.find<QListWidget>(QStringLiteral("MoveList"));
    ASSERT_NE(log, nullptr);

    // A move: exactly the absolute-move frame, and the log shows it.
    std::size_t mark = rig.line.frames().size();
    ASSERT_EQ(rotctl({"P", "45", "10"}), 0);
    ASSERT_TRUE(ConsoleRig::waitFor([&] { return !movesSince(mark).empty(); }));
    EXPECT_EQ(movesSince(mark), (std::vector<std::pair<int, int>>{{4500, 1000}}));
    EXPECT_TRUE(ConsoleRig::waitFor([&] { return log->count() > 0; }, 15000));
    EXPECT_TRUE(log->item(log->count() - 1)->text().contains(QStringLiteral("45.00")));

    // A west azimuth is a negative pan; a held axis still takes the network
    // target, and the hold box stays as the operator left it.
    auto* holdPan = rig.find<QCheckBox>(QStringLiteral("HoldPanCheck"));
    holdPan->setChecked(true);
    mark = rig.line.frames().size();
    ASSERT_EQ(rotctl({"P", "-60", "20"}), 0);
    ASSERT_TRUE(ConsoleRig::waitFor([&] { return !movesSince(mark).empty(); }));
    EXPECT_EQ(movesSince(mark)[0], std::pair(-6000, 2000));
    EXPECT_TRUE(holdPan->isChecked());

    // Stop during that move: the stop bit rides on the next jog frame.
    mark = rig.line.frames().size();
    ASSERT_EQ(rotctl({"S"}), 0);
    EXPECT_TRUE(ConsoleRig::waitFor([&] {
        const auto& frames = rig.line.frames();
        return std::any_of(frames.begin() + mark, frames.end(), [](const auto& f) {
            return f.message.size() > 1 && f.message[0] == 0x31 && (f.message[1] & 0x02) != 0;
        });
    }));
    holdPan->setChecked(false);
}

}  // namespace
}  // namespace halvex::testing
