#include <gtest/gtest.h>

#include <QStatusBar>
#include <random>

#include "tests/support/console_rig.h"
#include "tests/support/scripted_unit.h"
#include "views/pages/pan_tilt_page.h"
#include "views/widgets/led_display.h"

using namespace halvex;
using namespace halvex::testing;

namespace {
// Frames with good LRCs, any code, any length, any payload: every decoder the
// window has registered gets odd input, not just the receive path.
std::vector<Byte> randomReply(std::mt19937& random) {
    static const Byte kKnownCodes[] = {0x31, 0x32, 0x33, 0x34, 0x35, 0x36, 0x3A, 0x37, 0x40,
                                       0x41, 0x42, 0x43, 0x50, 0x51, 0x52, 0x54, 0x55, 0x56,
                                       0x80, 0x81, 0x82, 0x83, 0x84, 0x85, 0x90, 0x91, 0x9D,
                                       0x9E, 0x60, 0x61, 0x64, 0x92, 0x9C, 0x9F};
    std::uniform_int_distribution<int> byte(0, 255);
    std::uniform_int_distribution<int> pick(0, static_cast<int>(std::size(kKnownCodes)) - 1);
    std::uniform_int_distribution<int> length(0, 40);
    std::vector<Byte> message{random() % 4 == 0 ? static_cast<Byte>(byte(random))
                                                : kKnownCodes[pick(random)]};
    const int n = length(random);
    for (int i = 0; i < n; ++i) {
        message.push_back(static_cast<Byte>(byte(random)));
    }
    return ScriptedUnit::replyWire(0, message);
}
}  // namespace

TEST(LineNoise, OddRepliesAndGarbageNeverTakeTheConsoleDown) {
    ConsoleRig rig;
    rig.port->open(QStringLiteral("COM1"), 9600);
    // Ticking, so that a decoder that sends (a tour reload after a clear
    // reply, say) gets its frame out and its answer back.
    rig.window->link().Timer2().start();
    rig.window->SSTab1().setEnabled(true);
    std::mt19937 random(20261123);
    std::uniform_int_distribution<int> byte(0, 255);
    for (int round = 0; round < 3000; ++round) {
        std::vector<Byte> bytes;
        if (round % 3 == 0) {
            for (int i = byte(random) % 64; i > 0; --i) {
                bytes.push_back(static_cast<Byte>(byte(random)));
            }
        }
        const auto reply = randomReply(random);
        bytes.insert(bytes.end(), reply.begin(), reply.end());
        if (round % 7 == 0) {
            bytes.resize(bytes.size() / 2);  // cut short
        }
        rig.port->injectIncoming(bytes);
        QCoreApplication::processEvents();
    }
    ASSERT_TRUE(ConsoleRig::waitFor([&] { return !rig.window->state().SendInProgress; }));
    // A message box may have been asked for (an empty tour, say); none may
    // be a crash. The console still decodes a plain report afterwards.
    rig.window->jogState().PanJogSpeed = 200;
    rig.window->jogState().JogPanOn = true;
    const double before = rig.window->panTiltPage().PanPosLED->value();
    EXPECT_TRUE(ConsoleRig::waitFor(
        [&] { return rig.window->panTiltPage().PanPosLED->value() != before; }));
    EXPECT_FALSE(rig.window->state().LinkFault);
}
