// Line faults and the halvex-sim command line.

#include <gtest/gtest.h>

#include "sim/line_faults.h"
#include "sim/sim_command_line.h"
#include "tests/sim/unit_test_support.h"

namespace halvex::sim::testing {
namespace {

std::vector<std::vector<Byte>> replies(int count) {
    std::vector<std::vector<Byte>> frames;
    for (int i = 0; i < count; ++i) {
        // Some LRCs need stuffing (0x85 ^ 0x83 = 0x06), some do not.
        frames.push_back(encodeFrame(kAck, 0, {0x85, static_cast<Byte>(0x80 + i)}, 0));
    }
    return frames;
}

TEST(LineFaults, CorruptedRepliesStayFramesButFailTheirCheck) {
    LineFaultOptions options;
    options.corrupt = 1.0;
    LineFaults faults(options);
    const auto frames = decodeFrames(faults.apply(replies(40)));
    ASSERT_EQ(frames.size(), 40u);
    for (std::size_t i = 0; i < frames.size(); ++i) {
        EXPECT_FALSE(frames[i].lrcGood) << i;
        EXPECT_EQ(frames[i].message.at(1), 0x80 + i) << "payload untouched";
    }
}

TEST(LineFaults, NoiseLeavesFramesIntactDropLosesAndSilenceEndsReplies) {
    LineFaultOptions noisy;
    noisy.noise = 1.0;
    LineFaults noise(noisy);
    const auto wire = noise.apply(replies(50));
    EXPECT_GT(wire.size(), 50 * 6u);
    const auto frames = decodeFrames(wire);
    ASSERT_EQ(frames.size(), 50u);
    for (const auto& frame : frames) {
        EXPECT_TRUE(frame.lrcGood);
    }

    LineFaultOptions dropping;
    dropping.drop = 0.5;
    LineFaults drop(dropping);
    const auto kept = decodeFrames(drop.apply(replies(200))).size();
    EXPECT_GT(kept, 50u);
    EXPECT_LT(kept, 150u);

    LineFaultOptions silent;
    silent.silentAfter = 3;
    LineFaults silence(silent);
    EXPECT_EQ(decodeFrames(silence.apply(replies(2))).size(), 2u);
    EXPECT_EQ(decodeFrames(silence.apply(replies(5))).size(), 1u);
    EXPECT_TRUE(silence.apply(replies(5)).empty());
}

TEST(SimCommandLine, ParsesEveryOptionAndRejectsBadValues) {
    const auto parsed = parseSimCommandLine(
        {"--id",         "7",      "--variant",      "1",       "--state", "s.txt",     "--link",
         "/tmp/l",       "--pace", "9600",           "--noise", "0.1",     "--corrupt", "0.2",
         "--drop",       "0.3",    "--silent-after", "5",       "--fault", "pan-dir",   "--fault",
         "tilt-timeout", "-v"});
    ASSERT_TRUE(std::holds_alternative<SimCommandLine>(parsed));
    const auto& line = std::get<SimCommandLine>(parsed);
    EXPECT_EQ(line.options.unit.id, 7);
    EXPECT_EQ(line.options.unit.variant, 1);
    EXPECT_EQ(line.options.unit.statePath, "s.txt");
    EXPECT_EQ(line.link, "/tmp/l");
    EXPECT_EQ(line.options.paceBaud, 9600);
    EXPECT_DOUBLE_EQ(line.options.line.noise, 0.1);
    EXPECT_DOUBLE_EQ(line.options.line.corrupt, 0.2);
    EXPECT_DOUBLE_EQ(line.options.line.drop, 0.3);
    EXPECT_EQ(line.options.line.silentAfter, 5u);
    EXPECT_EQ(line.options.faults, (std::vector<Fault>{Fault::PanDirection, Fault::TiltTimeout}));
    EXPECT_TRUE(line.verbose);

    for (const auto& bad : std::vector<std::vector<std::string>>{{"--id", "100"},
                                                                 {"--noise", "1.5"},
                                                                 {"--fault", "pan"},
                                                                 {"--pace"},
                                                                 {"--bogus", "1"},
                                                                 {"--bogus"},
                                                                 {"stray"},
                                                                 {"--id", "7x"}}) {
        EXPECT_TRUE(std::holds_alternative<std::string>(parseSimCommandLine(bad))) << bad[0];
    }
    EXPECT_TRUE(std::get<SimCommandLine>(parseSimCommandLine({"--help"})).help);
    EXPECT_TRUE(std::get<SimCommandLine>(parseSimCommandLine({"--version"})).version);
    // An unknown option is named as such, even as the last word.
    EXPECT_EQ(std::get<std::string>(parseSimCommandLine({"--bogus"})), "unknown option --bogus");
    EXPECT_EQ(std::get<std::string>(parseSimCommandLine({"--id"})), "--id needs a value");
}

TEST(ArmedFaults, LatchEachTimeTheAxisIsDriven) {
    UnitHarness unit;
    unit.unit.state().motion.armFault(Fault::PanTimeout);
    EXPECT_EQ(unit.jog()[7] & 0x08, 0) << "not before the axis is driven";
    EXPECT_EQ(unit.jog(0x80, 100, 0)[7] & 0x08, 0x08);
    EXPECT_EQ(unit.jog(0x01)[7] & 0x08, 0) << "reset clears it";
    EXPECT_EQ(unit.jog(0, 0, 100)[7] & 0x08, 0) << "driving tilt leaves pan alone";
    EXPECT_EQ(unit.jog(0x80, 100, 0)[7] & 0x08, 0x08) << "and it comes back";
}

}  // namespace
}  // namespace halvex::sim::testing
