// Jogs, moves and limits as the position report shows them.

#include <gtest/gtest.h>

#include "tests/sim/unit_test_support.h"

namespace halvex::sim::testing {
namespace {

std::vector<Byte> moveCommand(Byte code, std::int32_t pan, std::int32_t tilt) {
    std::vector<Byte> message{code};
    for (std::int32_t value : {pan, tilt}) {
        const auto bytes = angleBytes(value);
        message.insert(message.end(), bytes.begin(), bytes.end());
    }
    return message;
}

constexpr Byte kTargetBit = 0x20;
constexpr Byte kMovingBits = 0x0F;

TEST(UnitMotion, AbsoluteMoveRepliesWithTargetThenConverges) {
    UnitHarness unit;
    const auto reply = unit.exchange(moveCommand(0x33, 4500, -1000));
    ASSERT_EQ(reply.size(), 14u);
    EXPECT_EQ(angleAt(reply, 1), 4500);
    EXPECT_EQ(angleAt(reply, 4), -1000);
    EXPECT_EQ(reply[9] & kTargetBit, kTargetBit);

    unit.advance(300);
    auto report = unit.jog();
    ASSERT_EQ(report.size(), 16u) << "jog report carries two camera counts";
    EXPECT_EQ(report[9] & kTargetBit, 0);
    EXPECT_EQ(report[9] & kMovingBits, 0x08 | 0x01) << "moving CW and down";
    EXPECT_GT(angleAt(report, 1), 0);
    EXPECT_LT(angleAt(report, 1), 4500);

    unit.advance(5000, true);
    report = unit.jog();
    EXPECT_EQ(angleAt(report, 1), 4500);
    EXPECT_EQ(angleAt(report, 4), -1000);
    EXPECT_EQ(report[9] & kMovingBits, 0);
}

TEST(UnitMotion, HoldValueKeepsAnAxisAndOutOfRangeTargetIsRefused) {
    UnitHarness unit;
    unit.exchange(moveCommand(0x33, 1000, 2000));
    unit.advance(3000);

    // Pan held: its target is where it is; tilt goes to 5.00.
    auto reply = unit.exchange(moveCommand(0x33, 99999, 500));
    EXPECT_EQ(angleAt(reply, 1), 1000);
    EXPECT_EQ(angleAt(reply, 4), 500);
    unit.advance(3000);
    auto report = unit.jog();
    EXPECT_EQ(angleAt(report, 1), 1000);
    EXPECT_EQ(angleAt(report, 4), 500);

    // Tilt 95.00 is beyond the mechanical end: nothing moves, the reply
    // echoes the current position as the target.
    reply = unit.exchange(moveCommand(0x33, -3000, 9500));
    EXPECT_EQ(angleAt(reply, 1), 1000);
    EXPECT_EQ(angleAt(reply, 4), 500);
    EXPECT_EQ(reply[9] & kTargetBit, kTargetBit);
    unit.advance(1000);
    EXPECT_EQ(angleAt(unit.jog(), 1), 1000);
}

TEST(UnitMotion, DeltaCentreAndHomeMoves) {
    UnitHarness unit;
    unit.exchange(moveCommand(0x33, 1000, 1000));
    unit.advance(3000);
    auto reply = unit.exchange(moveCommand(0x34, -250, 100));
    EXPECT_EQ(reply[0], 0x34);
    EXPECT_EQ(angleAt(reply, 1), 750);
    EXPECT_EQ(angleAt(reply, 4), 1100);
    unit.advance(3000);

    unit.exchange({0x41, 31, 0x10, 0x27, 0x00, 0x18, 0xFC, 0xFF});  // home at 100.00, -10.00
    reply = unit.exchange({0x36});
    EXPECT_EQ(angleAt(reply, 1), 10000);
    EXPECT_EQ(angleAt(reply, 4), -1000);
    unit.advance(8000);
    EXPECT_EQ(angleAt(unit.jog(), 1), 10000);

    reply = unit.exchange({0x35});
    EXPECT_EQ(angleAt(reply, 1), 0);
    EXPECT_EQ(angleAt(reply, 4), 0);
}

TEST(UnitMotion, SoftLimitStopsJogUnlessOverridden) {
    UnitHarness unit;
    const Byte panCw = 0x80;
    const Byte override = 0x04;
    // Default CW soft limit is 170.00; jog CW at full speed until it stops.
    for (int i = 0; i < 120; ++i) {
        unit.advance(100);
        unit.jog(panCw, 255, 0);
    }
    auto report = unit.jog(panCw, 255, 0);
    EXPECT_EQ(angleAt(report, 1), 17000);
    EXPECT_EQ(report[7] & 0x80, 0x80) << "CW soft-limit bit";
    EXPECT_EQ(report[7] & 0x20, 0) << "not at the hard end";

    // With the override the jog goes on to the mechanical end.
    for (int i = 0; i < 40; ++i) {
        unit.advance(100);
        report = unit.jog(panCw | override, 255, 0);
    }
    EXPECT_EQ(report[9] & 0x10, 0x10) << "override shows in status byte C";
    EXPECT_EQ(angleAt(report, 1), 18000);
    EXPECT_EQ(report[7] & 0x20, 0x20) << "CW hard-limit bit";

    // Setting the CW limit here moves it; reading it back gives 180.00.
    const auto limit = unit.exchange({0x81, 0});
    EXPECT_EQ(limit, (std::vector<Byte>{0x81, 0, 0x50, 0x46, 0x00}));
    EXPECT_EQ(unit.exchange({0x81, 0x83}), (std::vector<Byte>{0x81, 3, 0xCC, 0xDE, 0xFF}));
}

TEST(UnitMotion, StopBitAndOtherCommandsEndAutomatedMoves) {
    UnitHarness unit;
    unit.exchange(moveCommand(0x33, 9000, 0));
    unit.advance(500);
    unit.jog(0x02);  // stop request
    unit.advance(2000);
    auto report = unit.jog();
    const auto stoppedAt = angleAt(report, 1);
    EXPECT_LT(stoppedAt, 9000);
    EXPECT_EQ(report[9] & kMovingBits, 0);

    unit.exchange(moveCommand(0x33, -9000, 0));
    unit.advance(300);
    unit.exchange({0x9A});  // any other command ends it too
    unit.advance(3000);
    EXPECT_GT(angleAt(unit.jog(), 1), -9000);
}

TEST(UnitMotion, InjectedFaultsLatchUntilReset) {
    UnitHarness unit;
    unit.unit.state().motion.latchFault(Fault::PanTimeout);
    unit.unit.state().motion.latchFault(Fault::TiltDirection);
    auto report = unit.exchange(moveCommand(0x33, 3000, 3000));
    unit.advance(2000);
    report = unit.jog();
    EXPECT_EQ(angleAt(report, 1), 0) << "a faulted axis does not move";
    EXPECT_EQ(report[7] & 0x0C, 0x08);
    EXPECT_EQ(report[8] & 0x0C, 0x04);

    report = unit.jog(0x01);  // reset request
    EXPECT_EQ(report[7] & 0x0C, 0);
    EXPECT_EQ(report[8] & 0x0C, 0);
}

TEST(UnitMotion, ContinuousPanWrapsAndHasNoEnds) {
    UnitHarness unit;
    EXPECT_EQ(unit.exchange({0x95, 0x10}), (std::vector<Byte>{0x95, 0x10}));
    std::vector<Byte> report;
    for (int i = 0; i < 100; ++i) {
        unit.advance(100);
        report = unit.jog(0x80, 255, 0);
    }
    EXPECT_EQ(report[9] & 0x80, 0x80);
    EXPECT_EQ(report[7] & 0xF0, 0) << "no limit bits while turning without end";
    EXPECT_LT(angleAt(report, 1), 18000);
    EXPECT_GT(angleAt(report, 1), -18000);
}

TEST(UnitMotion, CommTimeoutStopsATourWhenTheConsoleFallsSilent) {
    UnitHarness unit;
    unit.exchange({0x96, 2});
    unit.exchange({0x41, 0, 0x28, 0x23, 0, 0, 0, 0});  // 90.00
    unit.exchange({0x52, 0, 0, 0});
    unit.exchange({0x37, 0});
    unit.advance(1000);
    EXPECT_TRUE(unit.unit.state().tourRunner.running());
    unit.advance(1500);
    EXPECT_FALSE(unit.unit.state().tourRunner.running());
    const auto report = unit.jog();
    EXPECT_EQ(report[9] & 0x40, 0);
    unit.advance(3000);
    EXPECT_LT(angleAt(unit.jog(), 1), 9000);
}

TEST(UnitMotion, LensesJogAndMoveWithinTheirRange) {
    UnitHarness unit;
    // Zoom 1 up at magnitude 100 (byte 201) for a second.
    for (int i = 0; i < 10; ++i) {
        unit.advance(100);
        unit.jog(0, 0, 0, {201, 0, 0, 0});
    }
    auto report = unit.jog();
    EXPECT_GT(report[10], 200);
    EXPECT_EQ(report[11], 128);

    std::vector<Byte> move = moveCommand(0x3A, 99999, 99999);
    move.insert(move.end(), {10, 20, 30, 40});
    EXPECT_EQ(unit.exchange(move)[0], 0x3A);
    unit.advance(3000);
    report = unit.jog();
    EXPECT_EQ((std::vector<Byte>(report.begin() + 10, report.begin() + 14)),
              (std::vector<Byte>{10, 20, 30, 40}));
}

}  // namespace
}  // namespace halvex::sim::testing
