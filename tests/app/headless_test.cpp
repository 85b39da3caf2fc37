// halvex --headless as a tracking PC runs it: no display at all, the virtual
// unit on its own pseudo-terminal, Hamlib's rotctl pointing the unit through
// network control, and SIGTERM in the middle of a move.

#include <gtest/gtest.h>

#include <QProcess>
#include <QProcessEnvironment>
#include <QStandardPaths>
#include <QTcpServer>
#include <QTest>
#include <cmath>

#include "protocol/vocabulary.h"
#include "sim/frame_assembler.h"
#include "tests/support/sim_process.h"

namespace halvex::testing {
namespace {

// A port nobody listens on now.
quint16 freePort() {
    QTcpServer probe;
    probe.listen(QHostAddress::LocalHost, 0);
    return probe.serverPort();
}

// The messages (code first) of the frames the unit received, from its -v log.
std::vector<std::vector<Byte>> receivedMessages(const QString& log) {
    std::vector<std::vector<Byte>> messages;
    sim::FrameAssembler frames(
        [&messages](const sim::ConsoleFrame& frame) { messages.push_back(frame.message); });
    for (const QString& line : log.split('\n')) {
        if (line.startsWith(QStringLiteral("in "))) {
            const QByteArray wire = QByteArray::fromHex(line.mid(3).toLatin1());
            frames.feed(reinterpret_cast<const Byte*>(wire.constData()),
                        static_cast<std::size_t>(wire.size()));
        }
    }
    return messages;
}

TEST(Headless, GoesOnlineWithoutADisplayRotctlPointsTheUnitAndSigtermStopsIt) {
    const QString rotctlProgram = QStandardPaths::findExecutable(QStringLiteral("rotctl"));
    if (rotctlProgram.isEmpty()) {
        GTEST_SKIP() << "rotctl is not installed (Debian package libhamlib-utils)";
    }
    SimProcess sim{{QStringLiteral("-v")}};
    ASSERT_FALSE(sim.device().isEmpty());
    const quint16 port = freePort();
    QProcess console;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    for (const char* name : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"}) {
        environment.remove(QString::fromLatin1(name));
    }
    console.setProcessEnvironment(environment);
    console.start(QStringLiteral(HALVEX_PATH),
                  {QStringLiteral("--headless"), QStringLiteral("--port"), sim.device(),
                   QStringLiteral("--rotctld"), QString::number(port)});
    ASSERT_TRUE(console.waitForStarted(5000));
    QString said_;
    const auto said = [&]() -> const QString& {
        return said_ += QString::fromLocal8Bit(console.readAllStandardError());
    };
    // rotctl's exit status and what it printed.
    const auto rotctl = [&](const QStringList& commands) {
        QProcess process;
        process.start(
            rotctlProgram,
            QStringList{"-m", "2", "-r", QStringLiteral("127.0.0.1:%1").arg(port)} + commands);
        process.waitForFinished(8000);
        const QString out = QString::fromUtf8(process.readAllStandardOutput());
        return std::pair(process.exitCode(), out.split('\n', Qt::SkipEmptyParts));
    };
    const auto pointsAt = [&](double azimuth, double elevation) {
        const auto [status, lines] = rotctl({"p"});
        return status == 0 && lines.size() == 2 && std::abs(lines[0].toDouble() - azimuth) < 0.01 &&
               std::abs(lines[1].toDouble() - elevation) < 0.01;
    };

    ASSERT_TRUE(QTest::qWaitFor([&] { return said().contains(QStringLiteral(" Online")); }, 15000))
        << said().toStdString();
    EXPECT_TRUE(said().contains(QStringLiteral("network control on 127.0.0.1 port %1").arg(port)));

    ASSERT_EQ(rotctl({"P", "5", "2"}).first, 0);
    EXPECT_TRUE(QTest::qWaitFor([&] { return pointsAt(5.0, 2.0); }, 15000));

    // A long move, and the service is stopped in the middle of it.
    ASSERT_EQ(rotctl({"P", "-160", "40"}).first, 0);
    QTest::qWait(300);
    console.terminate();
    ASSERT_TRUE(console.waitForFinished(8000));
    EXPECT_EQ(console.exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(console.exitCode(), 0) << said().toStdString();
    EXPECT_TRUE(said().contains(QStringLiteral("stopping the platform")));

    // The unit heard the move and then a stop, the last frames before the
    // line closed.
    sim.stop();
    const auto messages = receivedMessages(sim.errorOutput());
    const auto isMove = [](const std::vector<Byte>& m) {
        return m.at(0) == vocab::AbsoluteMove::kCode;
    };
    const auto isStop = [](const std::vector<Byte>& m) {
        return m.at(0) == vocab::JogMessage::kCode && m.size() > 1 &&
               vocab::isSet(m[1], vocab::jog::kStop);
    };
    const auto lastMove = std::find_if(messages.rbegin(), messages.rend(), isMove);
    ASSERT_NE(lastMove, messages.rend());
    EXPECT_EQ(vocab::getSigned(*lastMove, vocab::absolute_move::kPan), -16000);
    EXPECT_TRUE(std::any_of(messages.rbegin(), lastMove, isStop)) << "no stop after the last move";
}

}  // namespace
}  // namespace halvex::testing
