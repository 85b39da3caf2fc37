// The link on a real QSerialPort over a pseudo-terminal: how often the port
// is reopened in place before it is given up, and a hang-up.

#include <gtest/gtest.h>

#include "protocol/qt_serial_port.h"
#include "tests/support/empty_wakeup.h"
#include "tests/support/link_rig.h"
#include "tests/support/pty_pair.h"

using namespace halvex;
using namespace halvex::testing;

namespace {
// The port on the console's side, the test at the unit's; what the port
// says about itself.
struct PtyRig {
    PtyPair pty;
    QtSerialPort port;
    QStringList reopened;
    QStringList lost;

    PtyRig() {
        QObject::connect(&port, &SerialPort::reopened,
                         [this](const QString& why) { reopened << why; });
        QObject::connect(&port, &SerialPort::lost, [this](const QString& why) { lost << why; });
        EXPECT_TRUE(pty.ok());
        EXPECT_TRUE(port.open(pty.slavePath(), 9600));
    }
};
}  // namespace

TEST(PtyLink, APortThatKeepsFailingOrHangsUpIsLost) {
    {
        PtyRig rig;
        // False alarms with bytes between them may come without end...
        for (int alarm = 1; alarm <= 3 * SerialPort::kMostReopens; ++alarm) {
            ASSERT_TRUE(raiseEmptyWakeup(rig.port));
            ASSERT_TRUE(waitFor([&] { return rig.reopened.size() == alarm; }));
            // A byte from the unit, peeked on the console's side and taken.
            rig.pty.write({0x11});
            ASSERT_TRUE(waitFor([&] { return rig.port.bytesWaiting() == 1; }));
            rig.port.consume(1);
        }
        // ...a few at a time without a byte between them too...
        const int before = static_cast<int>(rig.reopened.size());
        for (int alarm = 1; alarm <= SerialPort::kMostReopens; ++alarm) {
            ASSERT_TRUE(raiseEmptyWakeup(rig.port));
            ASSERT_TRUE(waitFor([&] { return rig.reopened.size() == before + alarm; }));
        }
        EXPECT_TRUE(rig.lost.isEmpty());
        // ...but a port that delivers nothing between them is lost.
        ASSERT_TRUE(raiseEmptyWakeup(rig.port));
        ASSERT_TRUE(waitFor([&] { return !rig.lost.isEmpty(); }));
        EXPECT_TRUE(rig.lost.front().startsWith(QStringLiteral("it keeps failing")))
            << rig.lost.front().toStdString();
        EXPECT_FALSE(rig.port.isOpen());
    }
    {
        PtyRig rig;
        rig.pty.closeUnitSide();
        ASSERT_TRUE(waitFor([&] { return !rig.lost.isEmpty(); }));
        EXPECT_EQ(rig.lost.front(), QStringLiteral("the device is no longer there"));
        EXPECT_TRUE(rig.reopened.isEmpty());
        EXPECT_FALSE(rig.port.isOpen());
    }
}
