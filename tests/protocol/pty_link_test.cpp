#include <gtest/gtest.h>

#include <QTimer>
#include <thread>

#include "protocol/qt_serial_port.h"
#include "tests/support/empty_wakeup.h"
#include "tests/support/link_rig.h"
#include "tests/support/messages.h"
#include "tests/support/pty_pair.h"

using namespace halvex;
using namespace halvex::testing;
namespace v = halvex::vocab;

namespace {
// The link on a real QSerialPort over a pseudo-terminal; the test is the unit.
struct PtyRig {
    PtyPair pty;
    FormState state;
    QtSerialPort port;
    Link link{state};
    QString lastSent;

    PtyRig() {
        link.setPort(&port);
        QObject::connect(&link, &Link::frameSent, [this](const QString& s) { lastSent = s; });
    }

    std::vector<Byte> readFromConsole(std::size_t count) {
        std::vector<Byte> got;
        waitFor([&] {
            const auto more = pty.readAvailable();
            got.insert(got.end(), more.begin(), more.end());
            return got.size() >= count;
        });
        return got;
    }
};
}  // namespace

TEST(PtyLink, FrameReachesTheLineByteForByte) {
    PtyRig rig;
    ASSERT_TRUE(rig.pty.ok());
    ASSERT_TRUE(rig.port.open(rig.pty.slavePath(), 9600));
    rig.link.Timer2().start();
    rig.state.UnitId = 1;
    guarded(rig.state, "test", [&] {
        SendInProgressScope sending(rig.state);
        rig.state.TxBuffer[0] = v::AbsoluteMove::kCode;
        for (int i = 1; i <= 6; ++i) {
            rig.state.TxBuffer[i] = static_cast<Byte>(i);  // 2, 3 and 6 need escapes
        }
        rig.link.SendFrame(7);
    });
    const auto escaped = [](Byte value) { return static_cast<Byte>(value | 0x80); };
    const auto lrc = static_cast<Byte>(1 ^ v::AbsoluteMove::kCode ^ 1 ^ 2 ^ 3 ^ 4 ^ 5 ^ 6);
    const std::vector<Byte> expected{kStx, 1,          v::AbsoluteMove::kCode,
                                     1,    kEsc,       escaped(2),
                                     kEsc, escaped(3), 4,
                                     5,    kEsc,       escaped(6),
                                     lrc,  kEtx};
    EXPECT_EQ(rig.readFromConsole(expected.size()), expected);
    EXPECT_EQ(rig.lastSent, QStringLiteral("02 01 33 01 1B 02 1B 03 04 05 1B 06 35 03"));
}

TEST(PtyLink, MissingDeviceDoesNotOpen) {
    QtSerialPort port;
    EXPECT_FALSE(port.open(QStringLiteral("/dev/halvex-no-such-port"), 9600));
    EXPECT_FALSE(port.isOpen());
}

TEST(PtyLink, ANoiseByteJustBeforeAReplyDoesNotSpoilTheReply) {
    PtyRig rig;
    Receiver receiver(rig.state, rig.link);
    receiver.attachPort(&rig.port);
    int decoded = 0;
    receiver.registerDecoder(v::CommTimeout::kCode, [&] { ++decoded; });
    ASSERT_TRUE(rig.port.open(rig.pty.slavePath(), 9600));
    rig.state.UnitId = 1;
    rig.pty.write({0x11});
    // The reply follows a moment later, as on a real line.
    std::thread unit([&] {
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
        rig.pty.write(ScriptedUnit::replyWire(1, test::sample(1)));
    });
    EXPECT_TRUE(waitFor([&] { return decoded == 1; }));
    unit.join();
}

namespace {
// A real QtSerialPort on a pseudo-terminal with what it says about itself.
struct WatchedPort {
    PtyPair pty;
    QtSerialPort port;
    QStringList reopened;
    QStringList lost;
    int arrivals = 0;

    WatchedPort() {
        QObject::connect(&port, &SerialPort::reopened,
                         [this](const QString& why) { reopened << why; });
        QObject::connect(&port, &SerialPort::lost, [this](const QString& why) { lost << why; });
        QObject::connect(&port, &SerialPort::dataArrived, [this] { ++arrivals; });
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

TEST(PtyLink, AWakeupWithNothingToReadIsNotALostDevice) {
    WatchedPort rig;
    ASSERT_TRUE(rig.port.open(rig.pty.slavePath(), 9600));
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
        WatchedPort rig;
        ASSERT_TRUE(rig.port.open(rig.pty.slavePath(), 9600));
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
        WatchedPort rig;
        ASSERT_TRUE(rig.port.open(rig.pty.slavePath(), 9600));
        rig.pty.closeUnitSide();
        ASSERT_TRUE(waitFor([&] { return !rig.lost.isEmpty(); }));
        EXPECT_EQ(rig.lost.front(), QStringLiteral("the device is no longer there"))
            << rig.lost.front().toStdString();
        EXPECT_TRUE(rig.reopened.isEmpty());
        EXPECT_FALSE(rig.port.isOpen());
    }
}

TEST(PtyLink, TwoRepliesInOneReadAreBothDecodedWithoutAnotherEvent) {
    PtyRig rig;
    Receiver receiver(rig.state, rig.link);
    receiver.attachPort(&rig.port);
    std::vector<Byte> codes;
    for (const Byte code : {v::CommTimeout::kCode, v::UnitAddress::kCode}) {
        receiver.registerDecoder(code, [&rig, &codes] { codes.push_back(rig.state.RxBuffer[0]); });
    }
    ASSERT_TRUE(rig.port.open(rig.pty.slavePath(), 9600));
    auto both = ScriptedUnit::replyWire(0, test::sample(1));
    const auto second =
        ScriptedUnit::replyWire(0, test::message<v::UnitAddress>({{v::unit_address::kId, 2}}));
    both.insert(both.end(), second.begin(), second.end());
    rig.pty.write(both);
    EXPECT_TRUE(waitFor([&] { return codes.size() == 2; }, 1000));
    EXPECT_EQ(codes, (std::vector<Byte>{v::CommTimeout::kCode, v::UnitAddress::kCode}));
}
