#include <gtest/gtest.h>

#include <QTimer>
#include <thread>

#include "protocol/qt_serial_port.h"
#include "tests/support/link_rig.h"
#include "tests/support/pty_pair.h"

using namespace halvex;
using namespace halvex::testing;

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
        rig.state.TxBuffer[0] = 0x33;
        for (int i = 1; i <= 6; ++i) {
            rig.state.TxBuffer[i] = static_cast<Byte>(i);  // 2, 3 and 6 need escapes
        }
        rig.link.SendFrame(7);
    });
    // LRC = 1 ^ 0x33 ^ 1 ^ 2 ^ 3 ^ 4 ^ 5 ^ 6 = 0x35.
    const std::vector<Byte> expected{0x02, 0x01, 0x33, 0x01, 0x1B, 0x82, 0x1B,
                                     0x83, 0x04, 0x05, 0x1B, 0x86, 0x35, 0x03};
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
    receiver.registerDecoder(0x31, [&] { ++decoded; });
    ASSERT_TRUE(rig.port.open(rig.pty.slavePath(), 9600));
    rig.state.UnitId = 1;
    rig.pty.write({0x11});
    // From another thread: the console may be in a blocking wait for more.
    std::thread unit([&] {
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
        rig.pty.write(ScriptedUnit::replyWire(1, {0x31}));
    });
    EXPECT_TRUE(waitFor([&] { return decoded == 1; }));
    unit.join();
}
