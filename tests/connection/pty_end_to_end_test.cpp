#include <gtest/gtest.h>

#include <QFileInfo>
#include <QTabWidget>
#include <QTemporaryDir>
#include <QTest>
#include <cmath>
#include <memory>

#include "tests/connection/pty_console.h"
#include "tests/support/finish.h"
#include "tests/support/sim_process.h"
#include "views/pages/pan_tilt_page.h"
#include "views/widgets/led_display.h"
#include "window/vornixu.h"

using namespace halvex;
using namespace halvex::testing;

// What the window adds to a connection: the page's displays, the pages
// closed to a lost unit and no message box for it (the lamp and the target
// display are the same on every port: connection_sequence_test.cpp,
// position_report_test.cpp). The line itself, on
// every kind of port, is tested on the session (line_kinds_test.cpp).
TEST(EndToEnd, TheWindowFollowsAUnitOnAPseudoTerminalThroughAnUnplugAndBack) {
    QTemporaryDir unitFolder;
    const QString link = unitFolder.filePath(QStringLiteral("unit"));
    const QStringList arguments{QStringLiteral("--link"), link};
    auto sim = std::make_unique<SimProcess>(arguments);
    PtyConsole console(link);
    ASSERT_TRUE(console.start());

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
