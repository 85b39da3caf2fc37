// Set and get of every setting: the reply bytes after a set, and the same
// bytes from a later read.

#include <gtest/gtest.h>

#include "tests/sim/unit_test_support.h"

namespace halvex::sim::testing {
namespace {

struct SetGetCase {
    const char* name;
    std::vector<Byte> set;
    std::vector<Byte> get;
    std::vector<Byte> reply;  // after the set, and again for the get
};

class UnitSettingsSetGet : public ::testing::TestWithParam<SetGetCase> {};

TEST_P(UnitSettingsSetGet, ReplyCarriesTheNewValueAndReadBackAgrees) {
    const SetGetCase& c = GetParam();
    UnitHarness unit;
    EXPECT_EQ(unit.exchange(c.set), c.reply) << "set";
    EXPECT_EQ(unit.exchange(c.get), c.reply) << "get";
}

INSTANTIATE_TEST_SUITE_P(
    EachSetting, UnitSettingsSetGet,
    ::testing::Values(
        SetGetCase{"rates",
                   {0x92, 0x05, 0x30, 0x10, 0, 0x06, 0x31, 0x11, 0},
                   {0x92, 0x80, 0, 0, 0, 0, 0, 0, 0},
                   {0x92, 0x05, 0x30, 0x10, 0, 0x06, 0x31, 0x11}},
        SetGetCase{"top speeds", {0x9C, 0x00, 90, 70}, {0x9C, 0x80, 0, 0}, {0x9C, 0x00, 90, 70}},
        SetGetCase{
            "jog top speeds", {0x9C, 0x40, 91, 71}, {0x9C, 0xC0, 0, 0}, {0x9C, 0x40, 91, 71}},
        SetGetCase{"pan min max",
                   {0xA1, 0x00, 0x20, 0x00, 0x10, 0x27},
                   {0xA1, 0x80, 0, 0, 0, 0},
                   {0xA1, 0x20, 0x00, 0x10, 0x27}},
        SetGetCase{"tilt min max",
                   {0xA2, 0x00, 0x30, 0x00, 0x30, 0x75},
                   {0xA2, 0x80, 0, 0, 0, 0},
                   {0xA2, 0x30, 0x00, 0x30, 0x75}},
        SetGetCase{"directions", {0x95, 0x11}, {0x95, 0x80}, {0x95, 0x11}},
        SetGetCase{"comm timeout", {0x96, 30}, {0x96, 0x80}, {0x96, 30}},
        SetGetCase{"heater", {0x97, 2}, {0x97, 0x80}, {0x97, 2}},
        SetGetCase{"encoders",
                   {0xA5, 0x00, 0x10, 0x27, 0x64, 0x00},
                   {0xA5, 0x80, 0, 0, 0, 0},
                   {0xA5, 0x10, 0x27, 0x64, 0x00}},
        SetGetCase{"camera port", {0x60, 0x25, 0x4A}, {0x60, 0x80, 0}, {0x60, 0x25, 0x4A}},
        SetGetCase{"camera timeouts", {0x65, 1, 100}, {0x65, 0x80, 0}, {0x65, 1, 100}},
        SetGetCase{"lens configuration",
                   {0x61, 0x7E, 3, 4, 0x48, 5, 6},
                   {0x61, 0x80, 3, 4, 0x48, 5, 6},
                   {0x61, 0x7E, 3, 4, 0x48, 5, 6}},
        SetGetCase{"video", {0x64, 0x2D, 0x0C}, {0x64, 0x80, 0}, {0x64, 0x2D, 0x0C}},
        SetGetCase{"legacy video", {0x63, 0x06}, {0x63, 0x80}, {0x63, 0x06}},
        SetGetCase{"aux", {0x66, 0x05}, {0x66, 0x80}, {0x66, 0x05}},
        SetGetCase{"angle display", {0x70, 0x3B}, {0x70, 0x80}, {0x70, 0x3B}},
        SetGetCase{"name display", {0x71, 0x13}, {0x71, 0x80}, {0x71, 0x13}}),
    [](const auto& info) {
        std::string name = info.param.name;
        for (char& c : name) {
            if (c == ' ') {
                c = '_';
            }
        }
        return name;
    });

TEST(UnitSettings, ReadOnlyRepliesAndOutOfRangeValues) {
    UnitHarness unit;
    UnitOptions options;
    options.clockDate = CalendarDate{2011, 6, 15};
    options.firmwareMajor = 2;
    options.firmwareMinor = 3;
    UnitHarness dated(options);
    EXPECT_EQ(dated.exchange({0x9A}), (std::vector<Byte>{0x9A, 2, 3, 15, 6, 11}));

    // The maxima reply of 0x98 carries each maximum in one byte.
    EXPECT_EQ(unit.exchange({0x98}), (std::vector<Byte>{0x98, 255, 255}));
    EXPECT_EQ(unit.exchange({0x99, 40, 50}), (std::vector<Byte>{0x99, 40, 50}));
    EXPECT_EQ(unit.exchange({0x98}), (std::vector<Byte>{0x98, 40, 50}));
    EXPECT_EQ(unit.exchange({0x96, 121}), (std::vector<Byte>{0x96, 120}));
    EXPECT_EQ(unit.exchange({0x97, 3}), (std::vector<Byte>{0x97, 1})) << "mode 3 is not taken";
    EXPECT_EQ(unit.exchange({0x65, 0, 101}), (std::vector<Byte>{0x65, 10, 10}));
    EXPECT_EQ(unit.exchange({0x86}), (std::vector<Byte>{0x86, 40, 40}));
    EXPECT_EQ(unit.exchange({0x90}), (std::vector<Byte>{0x90, 0x00, 0x80, 0x00, 0x00, 0x80, 0x00}));
    EXPECT_EQ(unit.exchange({0x75, 'S', 'i', 't', 'e', ' ', '1', 9, ' ', ' ', ' ', ' ', ' '}),
              std::vector<Byte>{0x75});
    EXPECT_EQ(unit.unit.state().settings.siteName[6], ' ') << "control characters become blanks";

    // Storing the video mode as initial keeps bit 6 out of the reply.
    EXPECT_EQ(unit.exchange({0x64, 0x49, 0x04}), (std::vector<Byte>{0x64, 0x09, 0x04}));
    EXPECT_EQ(unit.unit.state().powerUp.videoMode, 0x09);
    // The short legacy store form changes the mode and keeps the power.
    EXPECT_EQ(unit.exchange({0x64, 0x41}), (std::vector<Byte>{0x64, 0x01, 0x04}));
}

TEST(UnitSettings, LongProceduresAreSilentUntilTheyEnd) {
    UnitOptions options;
    options.alignmentMs = 5000;
    options.homingMs = 7000;
    UnitHarness unit(options);
    EXPECT_TRUE(unit.send({0x9D}).empty());
    unit.advance(4900);
    EXPECT_TRUE(unit.send({0x85}).empty()) << "deaf while aligning";
    unit.unit.advanceTo(5000);
    auto frames = decodeFrames(unit.unit.takeOutput());
    ASSERT_EQ(frames.size(), 1u);
    EXPECT_EQ(frames[0].message, (std::vector<Byte>{0x9D, 0x00, 0x80, 0x00, 0x00, 0x80, 0x00}));

    unit.now = 5000;
    EXPECT_TRUE(unit.send({0x9E}).empty());
    unit.unit.advanceTo(12000);
    frames = decodeFrames(unit.unit.takeOutput());
    ASSERT_EQ(frames.size(), 1u);
    EXPECT_EQ(frames[0].message,
              (std::vector<Byte>{0x9E, 0x03, 0x0F, 0x80, 0x00, 0x0F, 0x80, 0x00}));
}

}  // namespace
}  // namespace halvex::sim::testing
