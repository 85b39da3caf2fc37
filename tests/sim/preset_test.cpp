// Preset records, and offsets changing what presets and limits read.

#include <gtest/gtest.h>

#include "tests/sim/unit_test_support.h"

namespace halvex::sim::testing {
namespace {

TEST(UnitPresets, StoreRecallAndClear) {
    UnitHarness unit;
    // -123.45 degrees pan, 12.00 tilt, as the console encodes them.
    EXPECT_EQ(unit.exchange({0x41, 5, 0xC7, 0xCF, 0xFF, 0xB0, 0x04, 0x00}),
              (std::vector<Byte>{0x41, 5, 0xC7, 0xCF, 0xFF, 0xB0, 0x04, 0x00, 0, 0, 0, 0}));
    EXPECT_EQ(unit.exchange({0x40, 5}),
              (std::vector<Byte>{0x40, 5, 0xC7, 0xCF, 0xFF, 0xB0, 0x04, 0x00, 0, 0, 0, 0}));

    // Recall moves there; the record of preset 6 stores that position
    // with the current lens bytes.
    const auto moved = unit.exchange({0x32, 5});
    EXPECT_EQ(angleAt(moved, 1), -12345);
    EXPECT_EQ(moved[9] & 0x20, 0x20);
    unit.advance(8000);
    EXPECT_EQ(unit.exchange({0x42, 6}),
              (std::vector<Byte>{0x42, 6, 0xC7, 0xCF, 0xFF, 0xB0, 0x04, 0x00, 128, 128, 128, 128}));

    // Adding lens positions to preset 5 keeps its angles.
    EXPECT_EQ(unit.exchange({0x43, 5}),
              (std::vector<Byte>{0x43, 5, 0xC7, 0xCF, 0xFF, 0xB0, 0x04, 0x00, 128, 128, 128, 128}));

    EXPECT_EQ(unit.exchange({0x94}), std::vector<Byte>{0x94});
    EXPECT_EQ(unit.exchange({0x40, 5}), (std::vector<Byte>{0x40, 5, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}));
}

TEST(UnitPresets, NumbersPastTheTableAnswer255AndDoNotMove) {
    UnitHarness unit;
    const std::vector<Byte> none{255, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0};
    auto reply = unit.exchange({0x40, 32});
    EXPECT_EQ(std::vector<Byte>(reply.begin() + 1, reply.end()), none);
    reply = unit.exchange({0x41, 40, 1, 2, 3, 4, 5, 6});
    EXPECT_EQ(std::vector<Byte>(reply.begin() + 1, reply.end()), none);
    reply = unit.exchange({0x32, 200});
    EXPECT_EQ(angleAt(reply, 1), 0);
}

TEST(UnitOffsets, ChangeWhatPresetsAndLimitsReadNotWhereTheyAre) {
    UnitHarness unit;
    unit.exchange({0x41, 2, 0xE8, 0x03, 0x00, 0x00, 0x00, 0x00});  // 10.00 / 0.00
    // Offsets of +5.00 pan, -2.00 tilt.
    EXPECT_EQ(unit.exchange({0x80, 0xF4, 0x01, 0x00, 0x38, 0xFF, 0xFF}),
              (std::vector<Byte>{0x80, 0xF4, 0x01, 0x00, 0x38, 0xFF, 0xFF}));
    auto record = unit.exchange({0x40, 2});
    EXPECT_EQ(angleAt(record, 2), 1500);
    EXPECT_EQ(angleAt(record, 5), -200);
    auto limit = unit.exchange({0x81, 0x80});
    EXPECT_EQ(limit[1], 0);
    EXPECT_EQ(angleAt(limit, 2), 17500);
    EXPECT_EQ(angleAt(unit.jog(), 1), 500) << "the platform itself reads the offset";

    // Going to the preset lands on the same mechanical place.
    unit.exchange({0x32, 2});
    unit.advance(3000);
    EXPECT_EQ(unit.unit.state().motion.mechanicalPan(), 1000);
    EXPECT_EQ(angleAt(unit.jog(), 1), 1500);

    // Align to centre: here reads 0/0; zero offsets: back to mechanical.
    EXPECT_EQ(unit.exchange({0x82}), (std::vector<Byte>{0x82, 0x18, 0xFC, 0xFF, 0, 0, 0}));
    EXPECT_EQ(angleAt(unit.jog(), 1), 0);
    auto aligned = unit.exchange({0x83, 0x64, 0x00, 0x00, 0xC8, 0x00, 0x00});  // reads 1.00/2.00
    EXPECT_EQ(angleAt(aligned, 1), 100 - 1000);
    EXPECT_EQ(angleAt(aligned, 4), 200);
    EXPECT_EQ(unit.exchange({0x84}), (std::vector<Byte>{0x84, 0, 0, 0, 0, 0, 0}));
    EXPECT_EQ(unit.exchange({0x85}), (std::vector<Byte>{0x85, 0, 0, 0, 0, 0, 0}));
}

}  // namespace
}  // namespace halvex::sim::testing
