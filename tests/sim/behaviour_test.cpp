// What the console's own tests against the unit do not reach: refused and
// out-of-range values, injected faults, the comm time-out, the limits,
// camera bytes spread over reports.

#include <gtest/gtest.h>

#include <cstdlib>

#include "sim/tour_runner.h"
#include "tests/sim/unit_test_support.h"

namespace halvex::sim::testing {
namespace {

TEST(UnitReplies, OddValuesAreRefusedOrLimitedAndOffsetsChangeOnlyTheReadings) {
    struct Step {
        std::vector<Byte> send;
        std::vector<Byte> reply;
    };
    const Step steps[] = {
        {{0x40, 32}, {0x40, 255, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}},
        {{0x41, 40, 1, 2, 3, 4, 5, 6}, {0x41, 255, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}},
        {{0x37, 0}, {0x37, 255}},  // empty tour
        {{0x52, 1, 3, 4}, {0x52, 1, 0, 3, 4}},
        {{0x51, 1, 1}, {0x51, 1, 255, 0, 0}},
        {{0x54, 1, 5}, {0x54, 1, 255, 0, 0}},
        {{0x53, 1, 2, 1, 1}, {0x53, 1, 255, 1, 1}},
        {{0x55, 1, 9, 1, 1}, {0x55, 1, 255, 1, 1}},
        {{0x96, 121}, {0x96, 120}},
        {{0x97, 3}, {0x97, 1}},
        {{0x65, 0, 101}, {0x65, 10, 10}},
        {{0x65, 1, 100}, {0x65, 1, 100}},          // the shortest and longest time-outs
        {{0x64, 0x49, 0x04}, {0x64, 0x09, 0x04}},  // stored for power up: bit 6 stays out
        {{0x64, 0x41}, {0x64, 0x01, 0x04}},        // the short form keeps the power
        {{0x75, 'S', 'i', 't', 'e', ' ', '1', 9, ' ', ' ', ' ', ' ', ' '}, {0x75}},
        {{0x99, 40, 50}, {0x99, 40, 50}},
        {{0x98}, {0x98, 40, 50}},  // one byte each
        // Preset 2 at 10.00/0.00 and offsets of +5.00/-2.00 read 15.00/-2.00.
        {{0x41, 2, 0xE8, 0x03, 0, 0, 0, 0}, {0x41, 2, 0xE8, 0x03, 0, 0, 0, 0, 0, 0, 0, 0}},
        {{0x80, 0xF4, 0x01, 0x00, 0x38, 0xFF, 0xFF}, {0x80, 0xF4, 0x01, 0x00, 0x38, 0xFF, 0xFF}},
        {{0x40, 2}, {0x40, 2, 0xDC, 0x05, 0x00, 0x38, 0xFF, 0xFF, 0, 0, 0, 0}},
        // A preset stored at these offsets reads back as it was sent.
        {{0x41, 3, 0x2C, 0x01, 0, 0x2C, 0x01, 0},
         {0x41, 3, 0x2C, 0x01, 0, 0x2C, 0x01, 0, 0, 0, 0, 0}},
        {{0x40, 3}, {0x40, 3, 0x2C, 0x01, 0, 0x2C, 0x01, 0, 0, 0, 0, 0}},
        {{0x81, 0x80}, {0x81, 0, 0x5C, 0x44, 0x00}},  // the CW limit reads 175.00
        {{0x83, 0x64, 0, 0, 0xC8, 0, 0}, {0x83, 0x64, 0, 0, 0xC8, 0, 0}},  // here reads 1.00/2.00
        {{0x84}, {0x84, 0, 0, 0, 0, 0, 0}},
        {{0x66, 0x1A}, {0x66, 0x0A}},  // four outputs
        {{0x66, 0x80}, {0x66, 0x0A}},
        {{0x92, 20, 33, 20, 0, 20, 44, 20}, {0x92, 20, 33, 20, 0, 20, 44, 20}},
        {{0x86}, {0x86, 33, 44}},  // the ramps alone
        // The longer tilt set: the safe speed keeps to seven bits.
        {{0x93, 0xFF, 20, 0x10, 0x00, 0x20, 0x00}, {0x93, 0x7F, 20, 0x10, 0x00, 0x20, 0x00}},
        // Here stored as preset 4, the lenses in the middle of their travel.
        {{0x42, 4}, {0x42, 4, 0, 0, 0, 0, 0, 0, 0x80, 0x80, 0x80, 0x80}}};
    UnitHarness unit;
    for (const Step& step : steps) {
        SCOPED_TRACE(::testing::Message() << "command 0x" << std::hex << int(step.send[0]));
        EXPECT_EQ(unit.exchange(step.send), step.reply);
    }
    EXPECT_EQ(unit.unit.state().settings.siteName[0], 'S');
    EXPECT_EQ(unit.unit.state().settings.siteName[6], ' ') << "control characters become blanks";
    EXPECT_EQ(unit.unit.state().powerUp.videoMode, 0x01);
    for (int i = 1; i < 63; ++i) {
        ASSERT_EQ(unit.exchange({0x52, 1, 1, 0})[2], i);
    }
    EXPECT_EQ(unit.exchange({0x52, 1, 1, 0}), (std::vector<Byte>{0x52, 1, 255, 1, 0})) << "full";
    EXPECT_EQ(unit.exchange({0x53, 1, 0, 1, 0}), (std::vector<Byte>{0x53, 1, 255, 1, 0}));

    // Going to the preset lands on the same mechanical place whatever the offset.
    unit.exchange({0x80, 0xF4, 0x01, 0x00, 0x38, 0xFF, 0xFF});
    unit.exchange({0x32, 2});
    unit.advance(3000);
    EXPECT_EQ(unit.unit.state().motion.mechanicalPan(), 1000);
    EXPECT_EQ(angleAt(unit.jog(), 1), 1500);
    // 99999 holds pan; tilt 95.00 is past the end: the reply echoes where it is.
    EXPECT_EQ(angleAt(unit.exchange({0x33, 0x9F, 0x86, 0x01, 0xF4, 0x01, 0}), 1), 1500);
    unit.advance(3000);
    const auto refused = unit.exchange({0x33, 0, 0, 0, 0x1C, 0x25, 0});
    EXPECT_EQ(angleAt(refused, 1), 1500);
    EXPECT_EQ(angleAt(refused, 4), 500);
    EXPECT_EQ(refused[9] & 0x20, 0x20) << "target bit";
    unit.advance(3000);
    EXPECT_EQ(unit.unit.state().motion.mechanicalPan(), 1000);
}

TEST(UnitFaults, InjectedFaultsLatchUntilResetAndTheCommTimeoutStopsATour) {
    UnitHarness unit;
    unit.exchange({0x41, 0, 0x28, 0x23, 0, 0, 0, 0});  // 90.00
    unit.exchange({0x52, 0, 0, 0});
    unit.exchange({0x96, 2});
    EXPECT_EQ(unit.exchange({0x37, 0}), (std::vector<Byte>{0x37, 0}));
    unit.advance(1000, true);  // speed 0 jogs keep it alive without ending it
    EXPECT_EQ(unit.jog()[9] & 0x40, 0x40) << "executing bit";
    unit.advance(1000);
    EXPECT_TRUE(unit.unit.state().tourRunner.running());
    unit.advance(1500);
    EXPECT_FALSE(unit.unit.state().tourRunner.running()) << "silent for 2 s";
    EXPECT_EQ(unit.jog()[9] & 0x40, 0);

    const auto pan = unit.unit.state().motion.mechanicalPan();
    unit.unit.state().motion.latchFault(Fault::PanTimeout);
    unit.unit.state().motion.latchFault(Fault::TiltDirection);
    unit.exchange({0x33, 0xB8, 0x0B, 0, 0xB8, 0x0B, 0});
    unit.advance(2000);
    auto report = unit.jog();
    EXPECT_EQ(unit.unit.state().motion.mechanicalPan(), pan) << "a faulted axis does not move";
    EXPECT_EQ(report[7] & 0x0C, 0x08);
    EXPECT_EQ(report[8] & 0x0C, 0x04);
    report = unit.jog(0x01);  // reset
    EXPECT_EQ(report[7] & 0x0C, 0);
    EXPECT_EQ(report[8] & 0x0C, 0);

    unit.unit.state().motion.armFault(Fault::PanTimeout);
    EXPECT_EQ(unit.jog()[7] & 0x08, 0) << "not before the axis is driven";
    EXPECT_EQ(unit.jog(0x80, 100, 0)[7] & 0x08, 0x08);
    EXPECT_EQ(unit.jog(0x01)[7] & 0x08, 0);

    // A tilt fault waits for the tilt axis: driving pan leaves both clear.
    UnitHarness other;
    other.unit.state().motion.armFault(Fault::TiltTimeout);
    report = other.jog(0x80, 100, 0);
    EXPECT_EQ(report[7] & 0x0C, 0);
    EXPECT_EQ(report[8] & 0x0C, 0);
    report = other.jog(0x40, 0, 100);
    EXPECT_EQ(report[7] & 0x0C, 0);
    EXPECT_EQ(report[8] & 0x0C, 0x08);
}

TEST(UnitTours, AnyCommandButTheJogEndsARunningTour) {
    UnitHarness unit;
    unit.exchange({0x52, 0, 0, 1});  // preset 0, a second's dwell
    ASSERT_EQ(unit.exchange({0x37, 0}), (std::vector<Byte>{0x37, 0}));
    unit.advance(500, true);
    ASSERT_TRUE(unit.unit.state().tourRunner.running());
    unit.exchange({0x56, 0});
    EXPECT_FALSE(unit.unit.state().tourRunner.running());
    EXPECT_EQ(unit.jog()[9] & 0x40, 0) << "executing bit";
}

// What a tour runner works on, on its own.
struct TourBench {
    Tours tours;
    Presets presets;
    Settings settings;
    Motion motion;
    Lenses lenses;
    TourPlant plant{tours, presets, settings, motion, lenses};
};

// A tour emptied under the runner (a state file loaded, say) ends it at the
// next step instead of waiting at a step that is gone.
TEST(UnitTours, ATourEmptiedUnderTheRunnerEndsAtItsNextStep) {
    TourBench bench;
    auto& [tours, presets, settings, motion, lenses, plant] = bench;
    // Steps naming no preset (40) only wait out their dwell: nothing moves.
    tours.append(0, {40, 0});
    tours.append(0, {40, 0});
    TourRunner runner;
    ASSERT_TRUE(runner.start(0, 0, plant));
    runner.advance(100, plant);
    EXPECT_TRUE(runner.running());
    EXPECT_EQ(runner.stepIndex(), 1);
    tours.clear(0);
    runner.advance(200, plant);
    EXPECT_FALSE(runner.running());
    runner.advance(300, plant);
    EXPECT_FALSE(runner.running());
}

// A step waits for the platform to arrive before its dwell begins, though
// the lenses have nowhere to go.
TEST(UnitTours, AStepDwellsOnlyOnceThePlatformHasArrived) {
    TourBench bench;
    auto& [tours, presets, settings, motion, lenses, plant] = bench;
    presets.at(0).pan = 9000;
    tours.append(0, {0, 0});
    tours.append(0, {40, 0});
    TourRunner runner;
    ASSERT_TRUE(runner.start(0, 0, plant));
    ASSERT_TRUE(motion.hasTargets());
    std::int64_t now = 0;
    for (; motion.hasTargets() && now < 60000; now += 100) {
        runner.advance(now, plant);
        ASSERT_EQ(runner.stepIndex(), 0) << "left the step while moving, at " << now << " ms";
        motion.step(0.1, settings);
    }
    runner.advance(now, plant);
    EXPECT_EQ(runner.stepIndex(), 1);
}

TEST(UnitFaults, AHomingCycleReportsNoIndexForAFaultedAxis) {
    UnitHarness unit;
    unit.unit.state().motion.latchFault(Fault::PanTimeout);
    EXPECT_TRUE(unit.send({0x9E}).empty()) << "the reply comes when the cycle ends";
    unit.advance(8000);
    const auto frames = decodeFrames(unit.unit.takeOutput());
    ASSERT_EQ(frames.size(), 1u);
    const auto& reply = frames[0].message;
    ASSERT_EQ(reply.size(), 8u);
    EXPECT_EQ(reply[1], 2) << "tilt found its index, pan did not";
    EXPECT_EQ(angleAt(reply, 2), 0);
    EXPECT_NE(angleAt(reply, 5), 0);
}

// The alignment and homing procedures answer once they are over, not
// before: the console's long waits are measured against that.
TEST(UnitFaults, TheLongProceduresAnswerWhenTheyEndAndNotBefore) {
    UnitHarness unit;
    const sim::UnitOptions options;
    for (const auto& [code, durationMs] :
         {std::pair<Byte, std::int64_t>{0x9D, options.alignmentMs}, {0x9E, options.homingMs}}) {
        SCOPED_TRACE(int{code});
        EXPECT_TRUE(unit.send({code}).empty());
        unit.advance(durationMs - 100);
        EXPECT_TRUE(unit.unit.takeOutput().empty()) << "answered early";
        unit.advance(200);
        const auto frames = decodeFrames(unit.unit.takeOutput());
        ASSERT_EQ(frames.size(), 1u);
        EXPECT_EQ(frames[0].message.front(), code);
    }
}

TEST(UnitLimits, ASoftLimitBitClearsOnceTheAxisIsBackInside) {
    UnitHarness unit;
    std::vector<Byte> report;
    for (int i = 0; i < 130; ++i) {  // to the CW soft limit
        unit.advance(100);
        report = unit.jog(0x80, 255, 0);
    }
    EXPECT_EQ(report[7] & 0xC0, 0x80);
    for (int i = 0; i < 270; ++i) {  // all the way back to the CCW one
        unit.advance(100);
        report = unit.jog(0x00, 255, 0);
        if (i == 10) {
            EXPECT_EQ(report[7] & 0xC0, 0) << "inside again";
        }
    }
    EXPECT_EQ(report[7] & 0xC0, 0x40);
    for (int i = 0; i < 10; ++i) {
        unit.advance(100);
        report = unit.jog(0x80, 255, 0);
    }
    EXPECT_EQ(report[7] & 0xC0, 0) << "inside again";
}

TEST(UnitLimits, JogStopsAtTheSoftLimitUnlessOverriddenAndEndlessPanWraps) {
    UnitHarness unit;
    std::vector<Byte> report;
    for (int i = 0; i < 160; ++i) {
        unit.advance(100);
        report = unit.jog(i < 120 ? 0x80 : 0x84, 255, 0);  // CW, then with the override
        if (i == 119) {
            EXPECT_EQ(angleAt(report, 1), 17000);
            EXPECT_EQ(report[7] & 0xA0, 0x80) << "soft-limit bit, not the hard one";
        }
    }
    EXPECT_EQ(report[9] & 0x10, 0x10) << "override shows in status byte C";
    EXPECT_EQ(angleAt(report, 1), 18000);
    EXPECT_EQ(report[7] & 0x20, 0x20) << "CW hard-limit bit";
    EXPECT_EQ(unit.exchange({0x81, 0}), (std::vector<Byte>{0x81, 0, 0x50, 0x46, 0x00}));

    unit.exchange({0x95, 0x10});  // turning without end
    bool wrapped = false;
    for (int i = 0; i < 20; ++i) {
        unit.advance(100);
        report = unit.jog(0x80, 255, 0);
        EXPECT_EQ(report[7] & 0xF0, 0) << "no limit bits";
        EXPECT_TRUE(std::abs(angleAt(report, 1)) <= 18000);
        wrapped = wrapped || angleAt(report, 1) < 0;
    }
    EXPECT_TRUE(wrapped) << "past 180.00 the reading goes on from -180.00";
}

// A unit asked for the time often keeps to it: moving, in steps smaller
// than its own, it is neither ahead of the clock nor further along.
TEST(UnitMotion, SmallClockStepsMoveAsFarAsOneLargeStep) {
    UnitHarness often;
    UnitHarness once;
    for (UnitHarness* unit : {&often, &once}) {
        unit->exchange({0x33, 0xB8, 0x0B, 0, 0, 0, 0});  // pan to 30.00
    }
    for (std::int64_t ms = 1; ms <= 300; ms += 3) {
        often.unit.advanceTo(ms);
        ASSERT_EQ(often.unit.state().nowMs, ms);
    }
    once.unit.advanceTo(298);
    const double far = once.unit.state().motion.mechanicalPan();
    ASSERT_GT(far, 100);
    // The ramp, summed in smaller steps, comes out a little different.
    EXPECT_NEAR(often.unit.state().motion.mechanicalPan(), far, far * 0.05);
}

// A relative move goes from where the platform is by the pan and tilt
// steps it carries, each from its own field.
TEST(UnitMotion, ARelativeMoveStepsFromWhereThePlatformIs) {
    UnitHarness unit;
    unit.exchange({0x33, 0xB8, 0x0B, 0, 0xE8, 0x03, 0});  // to 30.00, 10.00
    unit.advance(20000);
    ASSERT_EQ(unit.unit.state().motion.mechanicalPan(), 3000);
    unit.exchange({0x34, 0xF4, 0x01, 0, 0x0C, 0xFE, 0xFF});  // by 5.00, -5.00
    unit.advance(20000);
    EXPECT_EQ(unit.unit.state().motion.mechanicalPan(), 3500);
    EXPECT_EQ(unit.unit.state().motion.mechanicalTilt(), 500);
}

// A target at the very end of travel is taken; one hundredth past it is not.
TEST(UnitMotion, TargetsUpToTheEndsOfTravelAreTakenAndNoFurther) {
    UnitHarness unit;
    const auto target = [&unit](std::int32_t pan, std::int32_t tilt) {
        const auto reply = unit.exchange({0x33, Byte(pan), Byte(pan >> 8), Byte(pan >> 16),
                                          Byte(tilt), Byte(tilt >> 8), Byte(tilt >> 16)});
        return std::pair(angleAt(reply, 1), angleAt(reply, 4));
    };
    EXPECT_EQ(target(18000, 9000), std::pair(18000, 9000));
    EXPECT_EQ(target(-18000, -9000), std::pair(-18000, -9000));
    EXPECT_NE(target(0, 9001).second, 9001);
    EXPECT_NE(target(0, -9001).second, -9001);
    EXPECT_NE(target(18001, 0).first, 18001);
    EXPECT_NE(target(-18001, 0).first, -18001);
}

TEST(UnitMotion, MovingBitsNameTheAxisAndItsDirection) {
    struct Case {
        Byte flags;
        Byte pan;
        Byte tilt;
        Byte moving;  // bits 0..3 of status byte C
    };
    const Case cases[] = {
        {0x00, 0, 100, 0x01},  // tilt down
        {0x40, 0, 100, 0x02},  // tilt up
        {0x00, 100, 0, 0x04},  // pan CCW
        {0x80, 100, 0, 0x08},  // pan CW
        {0xC0, 100, 100, 0x0A},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(::testing::Message() << "flags 0x" << std::hex << int(c.flags));
        UnitHarness unit;
        unit.jog(c.flags, c.pan, c.tilt);
        unit.advance(200);
        EXPECT_EQ(unit.jog(c.flags, c.pan, c.tilt)[9] & 0x0F, c.moving);
        unit.jog();
        unit.advance(2000);
        EXPECT_EQ(unit.jog()[9] & 0x0F, 0) << "at rest again";
    }
}

TEST(UnitCameras, AnswersWaitForTheTimeOutAndLongOnesAreSpreadOverReports) {
    UnitHarness unit;
    // Camera bytes of a jog report: counts at 14 and 15, then the bytes.
    const auto camera1 = [&unit] {
        const auto r = unit.jog();
        EXPECT_EQ(r.size(), 16u + r.at(14) + r.at(15));
        return std::vector<Byte>(r.begin() + 16, r.begin() + 16 + r.at(14));
    };
    unit.exchange({0x62, 6, 0x81, 0x01, 0x04, 0x07, 0x02, 0xFF});  // zoom tele
    EXPECT_TRUE(camera1().empty()) << "not before the response time-out";
    unit.advance(100);
    EXPECT_EQ(camera1(), (std::vector<Byte>{0x90, 0x41, 0xFF}));
    unit.advance(200);
    EXPECT_EQ(camera1(), (std::vector<Byte>{0x90, 0x51, 0xFF}));
    EXPECT_TRUE(camera1().empty()) << "each byte is delivered once";
    // A command the camera does not know: a syntax error.
    unit.exchange({0x62, 3, 0x81, 0x7E, 0xFF});
    unit.advance(100);
    EXPECT_EQ(camera1(), (std::vector<Byte>{0x90, 0x60, 0x02, 0xFF}));
    // The power inquiry: on. The zoom and focus inquiries: where the lens
    // is (128 of 255 each), in four nibbles: zoom 0..0x4000, focus from 0x1000.
    unit.exchange({0x62, 5, 0x81, 0x09, 0x04, 0x00, 0xFF});
    unit.advance(100);
    EXPECT_EQ(camera1(), (std::vector<Byte>{0x90, 0x50, 0x02, 0xFF}));
    unit.exchange({0x62, 5, 0x81, 0x09, 0x04, 0x47, 0xFF});
    unit.advance(100);
    EXPECT_EQ(camera1(), (std::vector<Byte>{0x90, 0x50, 2, 0, 2, 0, 0xFF}));
    unit.exchange({0x62, 5, 0x81, 0x09, 0x04, 0x48, 0xFF});
    unit.advance(100);
    EXPECT_EQ(camera1(), (std::vector<Byte>{0x90, 0x50, 6, 8, 5, 8, 0xFF}));
    // Broadcasts: address set gives the camera address 1, interface clear
    // comes back as sent.
    unit.exchange({0x62, 4, 0x88, 0x30, 0x01, 0xFF});
    unit.advance(100);
    EXPECT_EQ(camera1(), (std::vector<Byte>{0x88, 0x30, 0x02, 0xFF}));
    unit.exchange({0x62, 5, 0x88, 0x01, 0x00, 0x01, 0xFF});
    unit.advance(100);
    EXPECT_EQ(camera1(), (std::vector<Byte>{0x88, 0x01, 0x00, 0x01, 0xFF}));

    std::vector<Byte> text{0x62, 60};
    for (int i = 0; i < 60; ++i) {
        text.push_back(static_cast<Byte>('A' + i % 26));
    }
    unit.exchange({0x65, 50, 10});  // camera 1 answers after 400 ms
    unit.exchange(text);
    unit.advance(300);
    EXPECT_TRUE(camera1().empty());
    unit.advance(200);
    std::vector<Byte> received;
    for (int i = 0; i < 3; ++i) {
        const auto bytes = camera1();
        EXPECT_LE(bytes.size(), 24u);
        received.insert(received.end(), bytes.begin(), bytes.end());
    }
    EXPECT_EQ(received, std::vector<Byte>(text.begin() + 2, text.end()));
}

}  // namespace
}  // namespace halvex::sim::testing
