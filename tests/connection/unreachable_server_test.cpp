// What the window shows of a device server that refuses: why a server is
// lost is told by the port's tests, the looking by the session's.

#include <gtest/gtest.h>

#include <QAction>
#include <QPushButton>
#include <QStatusBar>
#include <QTest>

#include "tests/connection/pty_console.h"
#include "tests/support/scripted_server.h"

using namespace halvex;
using namespace halvex::testing;

TEST(NetworkFaults, ARefusedServerIsToldInTheStatusBarAndLookedForQuietly) {
    const QString device = QStringLiteral("socket://127.0.0.1:%1").arg(closedPort());
    PtyConsole console(device);
    console.window->findChild<QPushButton*>(QStringLiteral("StartBut"))->click();
    ASSERT_TRUE(QTest::qWaitFor([&] { return !console.faults.isEmpty(); }, 10000));
    const QString told = QStringLiteral(
                             "COM1 (%1) lost: the device server refused the connection. Looking "
                             "for it again.")
                             .arg(device);
    EXPECT_EQ(QStringList({console.faults.value(0), console.window->statusBar()->currentMessage()}),
              QStringList(2, told));
    EXPECT_TRUE(console.titleEnds(" Offline"));
    EXPECT_TRUE(console.shown.empty());
    // Responsive while it looks: a menu click takes at once. That a reason
    // is told once is the session's (tests/session/slow_connection_test.cpp).
    console.window->findChild<QAction*>(QStringLiteral("MenuBPS_2"))->trigger();
    EXPECT_TRUE(console.titleEnds(" Using COM1 At 19200"));
    // Stop ends the looking.
    console.window->findChild<QPushButton*>(QStringLiteral("StopBut"))->click();
    EXPECT_EQ(console.faults.last(),
              QStringLiteral("No longer looking for COM1 (%1).").arg(device));
    EXPECT_FALSE(console.window->SerPort1().isOpen());
}
