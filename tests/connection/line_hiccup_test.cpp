#include <gtest/gtest.h>

#include <QTest>

#include "tests/connection/pty_console.h"
#include "tests/support/empty_wakeup.h"
#include "tests/support/sim_process.h"

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

// Neither a wakeup with nothing to read nor a burst of chatter is a lost
// device: the console stays online, jogging, with its pages open.
TEST(LineHiccup, AnEmptyWakeupOrABurstOfChatterIsNoLostDevice) {
    SimProcess sim({QStringLiteral("--control")});
    PtyConsole console(sim.device());
    ASSERT_TRUE(console.start());
    const quint64 sentBefore = console.window->link().framesSent();
    bool stayedOnline = true;
    QObject::connect(console.window.get(), &QWidget::windowTitleChanged, [&](const QString& title) {
        stayedOnline = stayedOnline && title.endsWith(QStringLiteral(" Online"));
    });

    ASSERT_TRUE(raiseEmptyWakeup(console.window->SerPort1()));
    ASSERT_TRUE(QTest::qWaitFor(
        [&] { return console.faults.join(' ').contains(QStringLiteral("in place")); }, 2000));
    EXPECT_TRUE(repliesFlow(console));
    // No connection sequence ran again: only jog messages went out.
    EXPECT_LT(console.window->link().framesSent() - sentBefore, 200u);

    // Random replies every 2 ms, one in five cut short, for a second and a
    // half: some 750 of them.
    sim.say(QStringLiteral("chatter 2"));
    QTest::qWait(1500);
    sim.say(QStringLiteral("clean"));
    EXPECT_TRUE(console.window->SerPort1().isOpen());
    EXPECT_TRUE(repliesFlow(console));

    EXPECT_TRUE(stayedOnline);
    EXPECT_TRUE(console.titleEnds(" Online"));
    const QString told = console.faults.join(QLatin1Char('\n'));
    EXPECT_FALSE(told.contains(QStringLiteral(" lost: "))) << told.toStdString();
    EXPECT_TRUE(console.window->SSTab1().isEnabled());
}
