// The link on a real QSerialPort over a pseudo-terminal: what the serial
// library adds to the in-process port (real writes, wakeups, hang-ups).

#include <gtest/gtest.h>

#include "protocol/qt_serial_port.h"
#include "tests/support/empty_wakeup.h"
#include "tests/support/link_rig.h"
#include "tests/support/messages.h"
#include "tests/support/pty_pair.h"

using namespace halvex;
using namespace halvex::testing;
namespace v = halvex::vocab;

namespace {
// The port on the console's side, the test at the unit's; what the port
// says about itself.
struct PtyRig {
    PtyPair pty;
    QtSerialPort port;
    QStringList reopened;
    QStringList lost;
    int arrivals = 0;

    PtyRig() {
        QObject::connect(&port, &SerialPort::reopened,
                         [this](const QString& why) { reopened << why; });
        QObject::connect(&port, &SerialPort::lost, [this](const QString& why) { lost << why; });
        QObject::connect(&port, &SerialPort::dataArrived, [this] { ++arrivals; });
        EXPECT_TRUE(pty.ok());
        EXPECT_TRUE(port.open(pty.slavePath(), 9600));
    }
    // Bytes from the unit reach the console's side and are peeked there.
    bool hears(const std::vector<Byte>& bytes) {
        const int before = port.bytesWaiting();
        pty.write(bytes);
        return waitFor(
            [&] { return port.bytesWaiting() >= before + static_cast<int>(bytes.size()); });
    }
};
}  // namespace

TEST(PtyLink, FrameReachesTheLineByteForByte) {
    PtyRig rig;
    FormState state;
    Link link{state};
    link.setPort(&rig.port);
    link.Timer2().start();
    state.UnitId = 1;
    // Bytes 2, 3 and 6 of the payload need escapes.
    const std::vector<Byte> message = {v::AbsoluteMove::kCode, 1, 2, 3, 4, 5, 6};
    guarded(state, "test", [&] {
        SendInProgressScope sending(state);
        for (std::size_t i = 0; i < message.size(); ++i) {
            state.TxBuffer[static_cast<int>(i)] = message[i];
        }
        link.SendFrame(static_cast<int>(message.size()));
    });
    const std::vector<Byte> expected = encodeFrame(kStx, 1, message, 1);
    std::vector<Byte> got;
    waitFor([&] {
        const auto more = rig.pty.readAvailable();
        got.insert(got.end(), more.begin(), more.end());
        return got.size() >= expected.size();
    });
    EXPECT_EQ(got, expected);
}

TEST(PtyLink, AWakeupWithNothingToReadIsNotALostDevice) {
    PtyRig rig;
    ASSERT_TRUE(rig.hears({0x11, 0x22}));
    // Looking ahead takes nothing out of the port.
    EXPECT_EQ(rig.port.peekWaiting(), (std::vector<Byte>{0x11, 0x22}));
    rig.port.consume(1);
    EXPECT_EQ(rig.port.peekWaiting(), (std::vector<Byte>{0x22}));
    rig.port.consume(1);

    ASSERT_TRUE(raiseEmptyWakeup(rig.port));
    ASSERT_TRUE(waitFor([&] { return !rig.reopened.isEmpty(); }));
    EXPECT_TRUE(rig.lost.isEmpty());
    EXPECT_TRUE(rig.port.isOpen());
    // The port listens to the device again.
    const int arrivals = rig.arrivals;
    EXPECT_TRUE(rig.hears({kAck, 0}));
    EXPECT_GT(rig.arrivals, arrivals);
}

TEST(PtyLink, APortThatKeepsFailingOrHangsUpIsLost) {
    {
        PtyRig rig;
        // False alarms with bytes between them may come without end...
        for (int alarm = 1; alarm <= 3 * SerialPort::kMostReopens; ++alarm) {
            ASSERT_TRUE(raiseEmptyWakeup(rig.port));
            ASSERT_TRUE(waitFor([&] { return rig.reopened.size() == alarm; }));
            ASSERT_TRUE(rig.hears({0x11}));
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
