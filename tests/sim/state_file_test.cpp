// The unit's state file across a restart. The console's own settings
// surviving a restart of halvex-sim are checked in the setup tests.

#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <string>

#include "sim/state_file.h"
#include "tests/sim/unit_test_support.h"

namespace halvex::sim::testing {
namespace {

TEST(UnitStateFile, StoredSettingsComeBackAndDamagedLinesKeepFactoryValues) {
    UnitOptions options;
    options.statePath = ::testing::TempDir() + "halvex-unit-state";
    std::ofstream(options.statePath) << "something else\n";
    EXPECT_FALSE(loadState(options.statePath).has_value());
    std::remove(options.statePath.c_str());
    {
        UnitHarness unit(options);
        unit.exchange({0x41, 3, 0x10, 0x27, 0x00, 0x00, 0x00, 0x00});
        unit.exchange({0x52, 2, 3, 5});
        unit.exchange({0x70, 0x40 | 0x12});  // stored for power up
        unit.exchange({0x71, 0x15});         // not stored
    }
    UnitHarness restarted(options);
    EXPECT_EQ(restarted.exchange({0x40, 3}),
              (std::vector<Byte>{0x40, 3, 0x10, 0x27, 0x00, 0, 0, 0, 0, 0, 0, 0}));
    EXPECT_EQ(restarted.exchange({0x51, 2, 0}), (std::vector<Byte>{0x51, 2, 0, 3, 5}));
    EXPECT_EQ(restarted.exchange({0x70, 0x80}), (std::vector<Byte>{0x70, 0x12}));
    EXPECT_EQ(restarted.exchange({0x71, 0x80}), (std::vector<Byte>{0x71, 0x00}));

    std::ofstream(options.statePath) << "halvex-unit-state 1\nid 4\ncomm-timeout 999\nheater x\n"
                                        "tour-0 1 2 3\npreset-1 100 200 1 2 3 4\n";
    options.id = 6;  // the command line wins
    UnitHarness damaged(options);
    damaged.id = 6;
    EXPECT_EQ(damaged.exchange({0x96, 0x80}, 6), (std::vector<Byte>{0x96, 0}));
    EXPECT_EQ(damaged.exchange({0x97, 0x80}, 6), (std::vector<Byte>{0x97, 1}));
    EXPECT_EQ(damaged.exchange({0x56, 0}, 6), (std::vector<Byte>{0x56, 0, 0}));
    EXPECT_EQ(damaged.exchange({0x40, 1}, 6),
              (std::vector<Byte>{0x40, 1, 100, 0, 0, 200, 0, 0, 1, 2, 3, 4}));
    std::remove(options.statePath.c_str());
}

TEST(UnitStateFile, EachCameraKeepsItsOwnLensSettingsAndTheSiteNameComesBackWhole) {
    UnitOptions options;
    options.statePath = ::testing::TempDir() + "halvex-unit-lenses";
    std::remove(options.statePath.c_str());
    const std::vector<Byte> lenses{0x61, 1, 3, 4, 2, 9, 10};
    {
        UnitHarness unit(options);
        unit.exchange(lenses);
        unit.exchange({0x75, 'A', 'B', 'C', 'D', 'E', 'F', 'G', 'H', 'I', 'J', 'K', 'L'});
    }
    UnitHarness restarted(options);
    EXPECT_EQ(restarted.exchange({0x61, 0x80, 0, 0, 0, 0, 0}), lenses);
    const auto& name = restarted.unit.state().settings.siteName;
    EXPECT_EQ(std::string(name.begin(), name.end()), "ABCDEFGHIJKL") << "the site name, whole";
    std::remove(options.statePath.c_str());
}

TEST(UnitStateFile, StoredValuesAtTheirEdgesAreTakenAndOnePastIsRefused) {
    UnitOptions options;
    options.statePath = ::testing::TempDir() + "halvex-unit-edges";
    std::ofstream(options.statePath) << "halvex-unit-state 1\n"
                                        "preset-1 -8388608 8388607 255 0 1 2\n"
                                        "preset-2 100 200 256 0 1 2\n"
                                        "preset-3 -8388609 0 0 0 0 0\n";
    UnitHarness unit(options);
    EXPECT_EQ(unit.exchange({0x40, 1}),
              (std::vector<Byte>{0x40, 1, 0x00, 0x00, 0x80, 0xFF, 0xFF, 0x7F, 255, 0, 1, 2}));
    EXPECT_EQ(unit.exchange({0x40, 2}), (std::vector<Byte>{0x40, 2, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}));
    EXPECT_EQ(unit.exchange({0x40, 3}), (std::vector<Byte>{0x40, 3, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}));
    std::remove(options.statePath.c_str());
}

}  // namespace
}  // namespace halvex::sim::testing
