#include <gtest/gtest.h>

#include <QTimer>
#include <chrono>
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
    Receiver receiver{state, link};
    std::vector<std::vector<Byte>> decoded;
    QString lastSent;

    PtyRig() {
        link.setPort(&port);
        receiver.attachPort(&port);
        receiver.registerDecoder(0x31, [this] {
            std::vector<Byte> seen;
            for (int i = 0; i < 16; ++i) {
                seen.push_back(state.RxBuffer[i]);
            }
            decoded.push_back(seen);
        });
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

TEST(PtyLink, ReplyTricklingInAtNineThousandSixHundredBaudIsAssembled) {
    PtyRig rig;
    ASSERT_TRUE(rig.pty.ok());
    ASSERT_TRUE(rig.port.open(rig.pty.slavePath(), 9600));
    // A position report with camera bytes, including escaped values.
    const auto wire =
        ScriptedUnit::replyWire(0, {0x31, 0x10, 0x27, 0x00, 0xF0, 0xD8, 0xFF, 0x00, 0x00, 0x00,
                                    0x80, 0x03, 0x40, 0x06, 0x1B, 0x00, 0x00});
    // The unit is another process in real life: write from another thread,
    // one character time (about 1.04 ms at 9600 baud) apart.
    std::thread unit([&] {
        for (Byte b : wire) {
            rig.pty.write({b});
            std::this_thread::sleep_for(std::chrono::microseconds(1042));
        }
    });
    const bool decoded = waitFor([&] { return !rig.decoded.empty(); }, 3000);
    unit.join();
    ASSERT_TRUE(decoded);
    ASSERT_EQ(rig.decoded.size(), 1u);
    const auto& r = rig.decoded[0];
    EXPECT_EQ(r[0], 0x31);
    EXPECT_EQ(r[1], 0x10);
    EXPECT_EQ(r[2], 0x27);
    EXPECT_EQ(r[11], 0x03);
    EXPECT_EQ(r[13], 0x06);
    EXPECT_EQ(r[14], 0x1B);
    EXPECT_FALSE(rig.state.LinkFault);
    EXPECT_EQ(rig.state.lamp(), LinkLamp::Good);
}

TEST(PtyLink, MissingDeviceDoesNotOpen) {
    QtSerialPort port;
    EXPECT_FALSE(port.open(QStringLiteral("/dev/halvex-no-such-port"), 9600));
    EXPECT_FALSE(port.isOpen());
}
