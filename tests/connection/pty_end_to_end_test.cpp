#include <gtest/gtest.h>

#include <QFileInfo>
#include <QTabWidget>
#include <QTemporaryDir>
#include <QTest>
#include <cmath>
#include <memory>

#include "tests/connection/pty_console.h"
#include "tests/support/empty_wakeup.h"
#include "tests/support/finish.h"
#include "tests/support/sim_process.h"
#include "views/pages/pan_tilt_page.h"
#include "views/widgets/led_display.h"
#include "window/vornixu.h"

using namespace halvex;
using namespace halvex::testing;

namespace {
// Replies keep coming: the jog messages are answered.
bool repliesFlow(PtyConsole& console) {
    FormState& state = console.window->state();
    state.LastResponseCode = 0;
    return QTest::qWaitFor([&] { return state.LastResponseCode == 0x31; }, 10000);
}
}  // namespace

// What the window adds to a connection: the page's displays, the pages
// closed to a lost unit and no message box for it (the lamp and the target
// display are the same on every port: connection_sequence_test.cpp,
// position_report_test.cpp). The line itself, on every kind of port, is
// tested on the session (line_kinds_test.cpp). Neither a wakeup with nothing
// to read nor a burst of chatter is a lost device; a pulled cable is.
TEST(EndToEnd, TheWindowFollowsAUnitOnAPseudoTerminalThroughHiccupsAnUnplugAndBack) {
    QTemporaryDir unitFolder;
    const QString link = unitFolder.filePath(QStringLiteral("unit"));
    const QStringList arguments{QStringLiteral("--link"), link, QStringLiteral("--control")};
    auto sim = std::make_unique<SimProcess>(arguments);
    PtyConsole console(link);
    // The pages' reads are the window's own, in process
    // (connection_sequence_test.cpp), and over this line the session's
    // (line_kinds_test.cpp).
    console.window->connection().unitConnection().setLaterSteps({});
    ASSERT_TRUE(console.start());

    const quint64 sentBefore = console.window->link().framesSent();
    bool stayedOnline = true;
    const auto watch = QObject::connect(
        console.window.get(), &QWidget::windowTitleChanged, [&](const QString& title) {
            stayedOnline = stayedOnline && title.endsWith(QStringLiteral(" Online"));
        });
    ASSERT_TRUE(raiseEmptyWakeup(console.window->SerPort1()));
    ASSERT_TRUE(QTest::qWaitFor(
        [&] { return console.faults.join(' ').contains(QStringLiteral("in place")); }, 2000));
    EXPECT_TRUE(repliesFlow(console));
    // No connection sequence ran again: only jog messages went out.
    EXPECT_LT(console.window->link().framesSent() - sentBefore, 200u);
    // Random replies every 2 ms, one in five cut short: some 400 of them.
    sim->say(QStringLiteral("chatter 2"));
    QTest::qWait(800);
    sim->say(QStringLiteral("clean"));
    EXPECT_TRUE(repliesFlow(console));
    QObject::disconnect(watch);
    EXPECT_TRUE(stayedOnline);
    EXPECT_TRUE(console.titleEnds(" Online"));
    EXPECT_FALSE(console.faults.join('\n').contains(QStringLiteral(" lost: ")))
        << console.faults.join('\n').toStdString();
    EXPECT_TRUE(console.window->SSTab1().isEnabled());

    PanTiltPage& page = console.window->panTiltPage();
    page.PanDesLED->setValue(2.34);
    page.TiltDesLED->setValue(-1.5);
    page.AbsoBut->click();
    EXPECT_TRUE(QTest::qWaitFor(
        [&] {
            return std::abs(page.PanPosLED->value() - 2.34) < 0.005 &&
                   std::abs(page.TiltPosLED->value() + 1.5) < 0.005;
        },
        20000));

    sim->stop();  // the cable is pulled
    EXPECT_TRUE(sim->endedCleanly()) << "halvex-sim did not end on its signal";
    EXPECT_FALSE(QFileInfo(link).isSymLink()) << "halvex-sim left its link behind";
    EXPECT_TRUE(QTest::qWaitFor([&] { return console.titleEnds(" Offline"); }, 5000));
    EXPECT_TRUE(console.faults.join(QLatin1Char('\n')).contains(QStringLiteral("COM1 (") + link));
    auto* pages = console.window->findChild<QTabWidget*>(QStringLiteral("SSTab1"));
    EXPECT_FALSE(pages->isEnabled()) << "the pages stay open to a lost unit";

    sim = std::make_unique<SimProcess>(arguments);  // plugged in again
    EXPECT_TRUE(QTest::qWaitFor([&] { return console.titleEnds(" Online"); }, 10000));
    EXPECT_TRUE(console.shown.empty()) << "a message box for a lost port";
    EXPECT_TRUE(pages->isEnabled());
    console.window->close();
    halvex::testing::settle();
    EXPECT_FALSE(console.window->SerPort1().isOpen());
}

TEST(EndToEnd, TheVirtualUnitRestsWhenNobodyFeedsItLineCommandsAnyMore) {
    SimProcess sim({QStringLiteral("--control")});
    ASSERT_FALSE(sim.device().isEmpty());
    sim.endInput();
    QTest::qWait(300);
    const long before = sim.cpuTicks();
    ASSERT_GE(before, 0);
    QTest::qWait(500);
    // Ticks are hundredths of a second: 5 in half a second is 10 % of a core.
    EXPECT_LT(sim.cpuTicks() - before, 5) << "halvex-sim spins on its ended input";
}
