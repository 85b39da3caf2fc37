// The programs as an operator or a script starts them, with no display of
// any kind: mistakes on the command line, --help and --version, and halvex
// --headless as a tracking PC runs it, the virtual unit on its own
// pseudo-terminal, Hamlib's rotctl pointing the unit through network
// control, and SIGTERM in the middle of a move.

#include <gtest/gtest.h>

#include <QProcess>
#include <QProcessEnvironment>
#include <QStandardPaths>
#include <QTest>
#include <memory>

#include "protocol/vocabulary.h"
#include "sim/frame_assembler.h"
#include "tests/support/scripted_server.h"
#include "tests/support/sim_process.h"

namespace halvex::testing {
namespace {

QProcessEnvironment withoutDisplay() {
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    for (const char* name : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"}) {
        environment.remove(QString::fromLatin1(name));
    }
    return environment;
}

struct Outcome {
    int status = -1;
    bool crashed = false;
    QString out;
    QString err;
};

// Each program run with its arguments, split at spaces, all at once; one
// still running after ten seconds has no outcome.
std::vector<Outcome> runWithoutDisplay(const std::vector<const char*>& runs,
                                       const QString& program = QStringLiteral(HALVEX_PATH)) {
    std::vector<std::unique_ptr<QProcess>> processes;
    for (const char* arguments : runs) {
        processes.push_back(std::make_unique<QProcess>());
        processes.back()->setProcessEnvironment(withoutDisplay());
        processes.back()->start(program,
                                QString::fromLatin1(arguments).split(' ', Qt::SkipEmptyParts));
    }
    std::vector<Outcome> outcomes;
    for (const auto& process : processes) {
        outcomes.push_back(!process->waitForFinished(10000)
                               ? Outcome{}
                               : Outcome{process->exitCode(),
                                         process->exitStatus() == QProcess::CrashExit,
                                         QString::fromLocal8Bit(process->readAllStandardOutput()),
                                         QString::fromLocal8Bit(process->readAllStandardError())});
    }
    return outcomes;
}

TEST(CommandLine, MistakesAreToldAndExitTwoWithoutADisplay) {
    // The arguments, and what the mistake told must say besides.
    std::vector<std::pair<const char*, const char*>> mistakes = {
        {"--no-such-option", "no-such-option"},
        {"--onvif 80",
         "--onvif needs --onvif-user NAME and the password in $HALVEX_ONVIF_PASSWORD."},
        // Values at the ends of their ranges are good ones: what is wrong is
        // what the message names.
        {"--baud 4000000 --video1 rtsp://camera/out1 --video2 ftp://camera",
         "--video2: not a video source: ftp://camera"},
        {"--rotctld-port 65535 --rotctld-listen nowhere", "Bad address 'nowhere'"},
        {"--rotctld 0", "Bad port '0' for --rotctld."},  // the port last of all
        {"--baud 300 --visca 65535 --pelco tcp:65535 --pelco-baud 1200 --visca-refresh 0 "
         "--pelco-refresh 600000 --remote-listen nowhere",
         "Bad value 'nowhere' for --remote-listen."},
        // A toolkit option with its value joined on is left for the toolkit
        // whole: the mistake told is the console's own.
        {"-style=fusion --baud fast", "Bad speed 'fast' for --baud."}};
    // clang-format off
    for (const char* arguments : {
             "-platform offscreen --bogus", "--rotctld-port", "--rotctld-port 65536",
             "--rotctld=0", "--headless --baud fast", "--baud 299", "--baud 4000001",
             "stray", "--visca 0", "--visca 65536", "--onvif 80 --onvif-user admin",
             "--pelco tcp:port", "--pelco-address 256", "--pelco-baud 1199",
             "--visca-refresh -1", "--pelco-refresh 600001", "--video1 ftp://camera"}) {
        mistakes.emplace_back(arguments, "");
    }
    // clang-format on
    std::vector<const char*> arguments;
    for (const auto& mistake : mistakes) {
        arguments.push_back(mistake.first);
    }
    const std::vector<Outcome> runs = runWithoutDisplay(arguments);
    for (std::size_t i = 0; i < mistakes.size(); ++i) {
        SCOPED_TRACE(mistakes[i].first);
        const Outcome& run = runs[i];
        EXPECT_FALSE(run.crashed) << run.err.toStdString();
        EXPECT_EQ(run.status, 2) << run.err.toStdString();
        EXPECT_TRUE(run.err.startsWith(QStringLiteral("halvex: "))) << run.err.toStdString();
        EXPECT_TRUE(run.err.contains(QLatin1String(mistakes[i].second))) << run.err.toStdString();
    }
}

TEST(CommandLine, HelpAndVersionNeedNoDisplayEvenAfterToolkitOptions) {
    const auto sim =
        runWithoutDisplay({"--version", "--help", "--bogus"}, QStringLiteral(HALVEX_SIM_PATH));
    EXPECT_EQ(sim[0].status, 0) << sim[0].err.toStdString();
    EXPECT_EQ(sim[0].out.trimmed(), QStringLiteral("halvex-sim " HALVEX_VERSION));
    EXPECT_EQ(sim[1].status, 0);
    EXPECT_EQ(sim[2].status, 2);

    // --rotctld last, with no port after it.
    const auto console =
        runWithoutDisplay({"-style=fusion --version --rotctld", "-platform xcb --help"});
    EXPECT_EQ(console[0].status, 0) << console[0].err.toStdString();
    EXPECT_EQ(console[0].out.trimmed(), QStringLiteral("halvex " HALVEX_VERSION));
    EXPECT_EQ(console[1].status, 0) << console[1].err.toStdString();
    EXPECT_TRUE(console[1].out.contains(QStringLiteral("--simulate")));
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
    const quint16 port = closedPort();
    const quint16 viscaPort = closedPort();
    const quint16 pelcoPort = closedPort();
    const quint16 onvifPort = closedPort();
    QProcess console;
    QProcessEnvironment environment = withoutDisplay();
    environment.insert(QStringLiteral("HALVEX_ONVIF_PASSWORD"), QStringLiteral("secret"));
    environment.insert(QStringLiteral("HALVEX_TICK_MS"), QStringLiteral("10"));
    console.setProcessEnvironment(environment);
    console.start(
        QStringLiteral(HALVEX_PATH),
        {QStringLiteral("--headless"), QStringLiteral("--port"), sim.device(),
         QStringLiteral("--rotctld"), QString::number(port), QStringLiteral("--visca"),
         QString::number(viscaPort), QStringLiteral("--pelco"),
         QStringLiteral("tcp:%1").arg(pelcoPort), QStringLiteral("--onvif"),
         QString::number(onvifPort), QStringLiteral("--onvif-user"), QStringLiteral("admin"),
         QStringLiteral("--video2"), QStringLiteral("rtsp://camera/out2")});
    ASSERT_TRUE(console.waitForStarted(5000));
    QString said_;
    const auto said = [&]() -> const QString& {
        return said_ += QString::fromLocal8Bit(console.readAllStandardError());
    };

    ASSERT_TRUE(QTest::qWaitFor([&] { return said().contains(QStringLiteral(" Online")); }, 15000))
        << said().toStdString();
    for (const QString& line : {QStringLiteral("network control on 127.0.0.1 port %1").arg(port),
                                QStringLiteral("VISCA on 127.0.0.1:%1").arg(viscaPort),
                                QStringLiteral("Pelco-D on 127.0.0.1:%1").arg(pelcoPort),
                                QStringLiteral("ONVIF on 127.0.0.1:%1").arg(onvifPort)}) {
        EXPECT_TRUE(said().contains(line)) << line.toStdString();
    }
    // A long move, and the service is stopped in the middle of it.
    QProcess rotctl;
    rotctl.start(rotctlProgram,
                 {"-m", "2", "-r", QStringLiteral("127.0.0.1:%1").arg(port), "P", "-160", "40"});
    ASSERT_TRUE(rotctl.waitForFinished(8000));
    ASSERT_EQ(rotctl.exitCode(), 0);
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
