// The console through the network: Debian's ser2net in front of halvex-sim's
// pseudo-terminal (raw and RFC 2217), halvex-sim --tcp, and servers that
// refuse, do not resolve or go away mid-reply.

#include <fcntl.h>
#include <termios.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <QAction>
#include <QPushButton>
#include <QStatusBar>
#include <QTemporaryDir>
#include <QTest>
#include <cmath>
#include <memory>

#include "tests/connection/pty_console.h"
#include "tests/support/cpu_share.h"
#include "tests/support/scripted_server.h"
#include "tests/support/ser2net_process.h"
#include "tests/support/sim_process.h"
#include "views/pages/pan_tilt_page.h"
#include "views/widgets/led_display.h"

using namespace halvex;
using namespace halvex::testing;

namespace {

// The virtual unit with a stable device path for ser2net to open.
struct LinkedUnit {
    QTemporaryDir folder;
    QString link = folder.filePath(QStringLiteral("unit"));
    SimProcess sim{{QStringLiteral("--link"), link}};
};

// Moves the platform with Move To Absolute Coord and waits for it to arrive.
bool movesThePlatform(PtyConsole& console, double pan, double tilt) {
    PanTiltPage& page = console.window->panTiltPage();
    page.PanDesLED->setValue(pan);
    page.TiltDesLED->setValue(tilt);
    page.AbsoBut->click();
    return QTest::qWaitFor(
        [&] {
            return std::abs(page.PanPosLED->value() - pan) < 0.005 &&
                   std::abs(page.TiltPosLED->value() - tilt) < 0.005;
        },
        20000);
}

QString statusBar(PtyConsole& console) {
    return console.window->statusBar()->currentMessage();
}

// The speed the line's terminal is set to now, as the kernel holds it.
speed_t lineSpeed(const QString& device) {
    const int fd = ::open(device.toLocal8Bit().constData(), O_RDWR | O_NOCTTY | O_NONBLOCK);
    termios settings{};
    const bool read = fd >= 0 && ::tcgetattr(fd, &settings) == 0;
    if (fd >= 0) {
        ::close(fd);
    }
    return read ? ::cfgetospeed(&settings) : B0;
}

#define REQUIRE_SER2NET()                                                    \
    if (Ser2netProcess::program().isEmpty()) {                               \
        GTEST_SKIP() << "ser2net is not installed (Debian package ser2net)"; \
    }

TEST(DeviceServer, ConsoleGoesOnlineThroughSer2netsRawPortAndMovesThePlatform) {
    REQUIRE_SER2NET();
    LinkedUnit unit;
    Ser2netProcess server(unit.link, Ser2netProcess::Accepter::Raw);
    ASSERT_TRUE(server.listening()) << server.output().toStdString();
    PtyConsole console(server.device());
    ASSERT_TRUE(console.start());
    EXPECT_TRUE(console.shown.empty());
    EXPECT_TRUE(movesThePlatform(console, 12.34, -4.5));
    EXPECT_FALSE(console.window->state().LinkFault);
}

TEST(DeviceServer, Rfc2217CarriesTheChosenSpeedToTheLineAndTheConsoleMovesThePlatform) {
    REQUIRE_SER2NET();
    LinkedUnit unit;
    Ser2netProcess server(unit.link, Ser2netProcess::Accepter::Rfc2217);
    ASSERT_TRUE(server.listening()) << server.output().toStdString();
    {
        PtyConsole console(server.device());
        // ser2net's own setting is 9600; the Baud Rate menu says 57600.
        console.window->findChild<QAction*>(QStringLiteral("MenuBPS_5"))->trigger();
        ASSERT_TRUE(console.start());
        EXPECT_TRUE(console.titleEnds(" Using COM1 At 57600 Online"));
        EXPECT_EQ(lineSpeed(unit.link), speed_t{B57600});
        EXPECT_TRUE(movesThePlatform(console, -33.25, 7.5));
        EXPECT_TRUE(console.faults.isEmpty()) << console.faults.join('\n').toStdString();
    }
    // Another speed chosen: the next connection sets it.
    PtyConsole console(server.device());
    console.window->findChild<QAction*>(QStringLiteral("MenuBPS_2"))->trigger();
    ASSERT_TRUE(console.start());
    EXPECT_EQ(lineSpeed(unit.link), speed_t{B19200});
}

TEST(DeviceServer, ConsoleComesBackOnlineByItselfWhenSer2netIsRestarted) {
    REQUIRE_SER2NET();
    LinkedUnit unit;
    Ser2netProcess server(unit.link, Ser2netProcess::Accepter::Rfc2217);
    ASSERT_TRUE(server.listening());
    PtyConsole console(server.device());
    ASSERT_TRUE(console.start());

    server.stop();
    ASSERT_TRUE(QTest::qWaitFor([&] { return console.titleEnds(" Offline"); }, 5000));
    EXPECT_EQ(console.faults.value(0),
              QStringLiteral("COM1 (%1) lost: the device server closed the connection. Looking "
                             "for it again.")
                  .arg(server.device()));
    // Looked for once a second, quietly: the refusals while it is away are
    // told once, and the console does not spin.
    EXPECT_LT(cpuShareWhileWaiting(2200), kSpinningCpuShare);
    EXPECT_EQ(console.faults.size(), 2) << console.faults.join('\n').toStdString();
    EXPECT_TRUE(console.faults.value(1).contains("refused the connection"));

    ASSERT_TRUE(server.start());
    EXPECT_TRUE(QTest::qWaitFor([&] { return console.titleEnds(" Online"); }, 10000));
    EXPECT_TRUE(console.shown.empty()) << "a message box for a server that was away";
    EXPECT_TRUE(movesThePlatform(console, 20.0, 0.0));
}

TEST(NetworkUnit, ConsoleRunsThroughSocketToHalvexSimTcpOneConsoleAtATime) {
    SimProcess sim({QStringLiteral("--tcp"), QStringLiteral("0")});
    ASSERT_TRUE(sim.device().startsWith(QStringLiteral("socket://127.0.0.1:")))
        << sim.device().toStdString();
    PtyConsole first(sim.device());
    ASSERT_TRUE(first.start());
    EXPECT_TRUE(movesThePlatform(first, 45.0, -10.0));

    // A second console is turned away and keeps looking...
    PtyConsole second(sim.device());
    second.window->findChild<QPushButton*>(QStringLiteral("StartBut"))->click();
    ASSERT_TRUE(QTest::qWaitFor([&] { return second.titleEnds(" Offline"); }, 5000));
    EXPECT_TRUE(second.faults.value(0).contains("closed the connection"));
    EXPECT_TRUE(second.shown.empty());
    // ...until the first one leaves; the unit is where the first left it.
    first.window->close();
    ASSERT_TRUE(QTest::qWaitFor([&] { return second.titleEnds(" Online"); }, 10000));
    EXPECT_TRUE(QTest::qWaitFor(
        [&] { return std::abs(second.window->panTiltPage().PanPosLED->value() - 45.0) < 0.005; },
        5000));
}

TEST(NetworkFaults, ARefusedOrUnresolvableServerIsToldInTheStatusBarAndLookedForQuietly) {
    for (const QString& device : {QStringLiteral("socket://127.0.0.1:%1").arg(closedPort()),
                                  QStringLiteral("rfc2217://no-such-unit.invalid:2001")}) {
        PtyConsole console(device);
        console.window->findChild<QPushButton*>(QStringLiteral("StartBut"))->click();
        ASSERT_TRUE(QTest::qWaitFor([&] { return !console.faults.isEmpty(); }, 10000));
        const QString why = device.startsWith(QLatin1String("socket"))
                                ? QStringLiteral("the device server refused the connection")
                                : QStringLiteral(
                                      "the name no-such-unit.invalid does not resolve "
                                      "to an address");
        const QString told =
            QStringLiteral("COM1 (%1) lost: %2. Looking for it again.").arg(device, why);
        EXPECT_EQ(console.faults.value(0), told);
        EXPECT_EQ(statusBar(console), told);
        EXPECT_TRUE(console.titleEnds(" Offline"));
        EXPECT_TRUE(console.shown.empty());
        // Responsive while it looks: a menu click takes at once, and the
        // attempts every second are not told again.
        console.window->findChild<QAction*>(QStringLiteral("MenuBPS_2"))->trigger();
        EXPECT_TRUE(console.titleEnds(" Using COM1 At 19200"));
        QTest::qWait(2500);
        EXPECT_EQ(console.faults.size(), 1) << console.faults.join('\n').toStdString();
        // Stop ends the looking.
        console.window->findChild<QPushButton*>(QStringLiteral("StopBut"))->click();
        EXPECT_EQ(console.faults.last(),
                  QStringLiteral("No longer looking for COM1 (%1).").arg(device));
        EXPECT_FALSE(console.window->SerPort1().isOpen());
    }
}

int framesIn(const QString& log, const char* start) {
    return static_cast<int>(log.count(QStringLiteral("in  ") + QLatin1String(start)));
}

TEST(NetworkFaults, AConnectionCutMidReplyIsToldAndNothingIsSentTwice) {
    const QStringList arguments = {QStringLiteral("--tcp"), QStringLiteral("0"),
                                   QStringLiteral("--control"), QStringLiteral("-v")};
    auto sim = std::make_unique<SimProcess>(arguments);
    const QString device = sim->device();
    ASSERT_TRUE(device.startsWith(QStringLiteral("socket://")));
    PtyConsole console(device);
    ASSERT_TRUE(console.start());

    // Replies crawl out at 300 baud, so the line is always in the middle of
    // one; the move goes out, and the unit goes away under its reply.
    sim->say(QStringLiteral("pace 300"));
    PanTiltPage& page = console.window->panTiltPage();
    page.PanDesLED->setValue(30.0);
    page.TiltDesLED->setValue(5.0);
    page.AbsoBut->click();
    ASSERT_TRUE(
        QTest::qWaitFor([&] { return framesIn(sim->errorOutput(), "02 00 33") == 1; }, 5000));
    ASSERT_TRUE(
        QTest::qWaitFor([&] { return console.window->SerPort1().bytesWaiting() > 0; }, 5000))
        << "no reply on its way";
    sim->stop();
    const QString firstLog = sim->errorOutput();
    ASSERT_TRUE(QTest::qWaitFor([&] { return console.titleEnds(" Offline"); }, 5000));
    EXPECT_TRUE(console.faults.join('\n').contains(
        QStringLiteral("COM1 (%1) lost: the device server closed the connection.").arg(device)));
    EXPECT_TRUE(console.shown.empty());

    // The unit back on the same port: the console reconnects by itself and
    // asks nothing of it but the connection sequence.
    sim = std::make_unique<SimProcess>(
        QStringList{QStringLiteral("--tcp"), device.section(':', -1), QStringLiteral("-v")});
    ASSERT_EQ(sim->device(), device);
    ASSERT_TRUE(QTest::qWaitFor([&] { return console.titleEnds(" Online"); }, 10000));
    QTest::qWait(300);
    EXPECT_EQ(framesIn(firstLog, "02 00 33"), 1);
    EXPECT_EQ(framesIn(sim->errorOutput(), "02 00 33"), 0) << "the move was sent again";
    EXPECT_GT(framesIn(sim->errorOutput(), "02 00 85"), 0) << "no connection sequence";
}

}  // namespace
