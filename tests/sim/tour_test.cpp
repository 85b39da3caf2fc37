// Tour editing replies and a tour running through its steps.

#include <gtest/gtest.h>

#include "tests/sim/unit_test_support.h"

namespace halvex::sim::testing {
namespace {

TEST(UnitTours, EditingRepliesFollowTheStepList) {
    UnitHarness unit;
    EXPECT_EQ(unit.exchange({0x56, 1}), (std::vector<Byte>{0x56, 1, 0}));
    // Append preset 5 for camera 2, dwell 10 with blanking: 69, 138.
    EXPECT_EQ(unit.exchange({0x52, 1, 69, 138}), (std::vector<Byte>{0x52, 1, 0, 69, 138}));
    EXPECT_EQ(unit.exchange({0x52, 1, 3, 4}), (std::vector<Byte>{0x52, 1, 1, 3, 4}));
    EXPECT_EQ(unit.exchange({0x53, 1, 1, 7, 8}), (std::vector<Byte>{0x53, 1, 1, 7, 8}));
    EXPECT_EQ(unit.exchange({0x55, 1, 0, 9, 10}), (std::vector<Byte>{0x55, 1, 0, 9, 10}));
    EXPECT_EQ(unit.exchange({0x56, 1}), (std::vector<Byte>{0x56, 1, 3}));
    // Steps are now (9,10) (7,8) (3,4).
    EXPECT_EQ(unit.exchange({0x51, 1, 1}), (std::vector<Byte>{0x51, 1, 1, 7, 8}));
    EXPECT_EQ(unit.exchange({0x51, 1, 2}), (std::vector<Byte>{0x51, 1, 2, 3, 4}));
    EXPECT_EQ(unit.exchange({0x51, 1, 3}), (std::vector<Byte>{0x51, 1, 255, 0, 0}));
    EXPECT_EQ(unit.exchange({0x54, 1, 0}), (std::vector<Byte>{0x54, 1, 0, 9, 10}));
    EXPECT_EQ(unit.exchange({0x54, 1, 5}), (std::vector<Byte>{0x54, 1, 255, 0, 0}));
    EXPECT_EQ(unit.exchange({0x53, 1, 2, 1, 1}), (std::vector<Byte>{0x53, 1, 255, 1, 1}));
    EXPECT_EQ(unit.exchange({0x55, 1, 9, 1, 1}), (std::vector<Byte>{0x55, 1, 255, 1, 1}));
    EXPECT_EQ(unit.exchange({0x51, 1, 0}), (std::vector<Byte>{0x51, 1, 0, 7, 8}));
    EXPECT_EQ(unit.exchange({0x56, 0}), (std::vector<Byte>{0x56, 0, 0})) << "tours are separate";

    EXPECT_EQ(unit.exchange({0x50, 1}), (std::vector<Byte>{0x50, 1}));
    EXPECT_EQ(unit.exchange({0x56, 1}), (std::vector<Byte>{0x56, 1, 0}));
    EXPECT_EQ(unit.send({0x56, 3}).at(0).start, kNak) << "there is no fourth tour";
}

TEST(UnitTours, FullTourRefusesAppendAndInsert) {
    UnitHarness unit;
    for (int i = 0; i < 63; ++i) {
        ASSERT_EQ(unit.exchange({0x52, 2, 1, 0})[2], i);
    }
    EXPECT_EQ(unit.exchange({0x52, 2, 1, 0}), (std::vector<Byte>{0x52, 2, 255, 1, 0}));
    EXPECT_EQ(unit.exchange({0x53, 2, 0, 1, 0}), (std::vector<Byte>{0x53, 2, 255, 1, 0}));
    EXPECT_EQ(unit.exchange({0x56, 2}), (std::vector<Byte>{0x56, 2, 63}));
}

TEST(UnitTours, ExecutionVisitsEachStepDwellsAndLoops) {
    UnitHarness unit;
    unit.exchange({0x41, 0, 0xE8, 0x03, 0, 0, 0, 0});  // 10.00
    unit.exchange({0x41, 1, 0xD0, 0x07, 0, 0, 0, 0});  // 20.00
    EXPECT_EQ(unit.exchange({0x37, 0}), (std::vector<Byte>{0x37, 255})) << "empty tour";
    unit.exchange({0x52, 0, 0, 2});  // preset 0, dwell 2 s
    unit.exchange({0x52, 0, 1, 1});  // preset 1, dwell 1 s
    EXPECT_EQ(unit.exchange({0x37, 0}), (std::vector<Byte>{0x37, 0}));

    // The console's jog messages (speed 0) do not end the tour.
    unit.advance(1000, true);
    auto report = unit.jog();
    EXPECT_EQ(report[9] & 0x40, 0x40) << "executing bit";
    EXPECT_EQ(angleAt(report, 1), 1000);
    unit.advance(1500, true);
    EXPECT_EQ(angleAt(unit.jog(), 1), 1000) << "still dwelling at step 0";
    unit.advance(1500, true);
    EXPECT_EQ(angleAt(unit.jog(), 1), 2000) << "at step 1";
    unit.advance(2000, true);
    EXPECT_EQ(angleAt(unit.jog(), 1), 1000) << "back at step 0";

    // A jog ends the tour.
    unit.jog(0x80, 10, 0);
    report = unit.jog();
    EXPECT_EQ(report[9] & 0x40, 0);
    EXPECT_FALSE(unit.unit.state().tourRunner.running());
}

}  // namespace
}  // namespace halvex::sim::testing
