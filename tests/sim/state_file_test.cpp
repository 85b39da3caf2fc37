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

namespace v = vocab;
using test::message;
using test::withBits;

TEST(UnitStateFile, StoredSettingsComeBackWhole) {
    UnitOptions options;
    options.statePath = ::testing::TempDir() + "halvex-unit-state";
    std::ofstream(options.statePath) << "something else\n";
    EXPECT_FALSE(loadState(options.statePath).has_value());
    std::remove(options.statePath.c_str());
    using angle = v::angle_display;
    using Lens1 = v::lens_configuration::Lens1;
    using Lens2 = v::lens_configuration::Lens2;
    // Each camera keeps its own lens settings.
    const auto lenses = message<v::LensConfiguration>({{Lens1::kFlags, 1},
                                                       {Lens1::kZoomMinimum, 3},
                                                       {Lens1::kFocusMinimum, 4},
                                                       {Lens2::kFlags, 2},
                                                       {Lens2::kZoomMinimum, 9},
                                                       {Lens2::kFocusMinimum, 10}});
    {
        UnitHarness unit(options);
        unit.exchange(storePreset(3, 10000));
        unit.exchange(appendStep(2, 3, 5));
        unit.exchange(
            withBits(message<v::AngleDisplay>({{angle::kLine, 2}}), {angle::kOn, angle::kStore}));
        unit.exchange(withBits(message<v::NameDisplay>({{v::name_display::kLine, 5}}),
                               {v::name_display::kOn}));  // not stored
        unit.exchange(lenses);
        unit.exchange(siteName("ABCDEFGHIJKL"));
    }
    UnitHarness restarted(options);
    EXPECT_EQ(restarted.exchange(readPreset(3)), presetRecord(3, 10000));
    EXPECT_EQ(restarted.exchange(message<v::TourStepRequest>({{v::tour_step_request::kTour, 2}})),
              tourStep(2, 0, 3, 5));
    EXPECT_EQ(restarted.exchange(v::readRequest<v::AngleDisplay>()),
              withBits(message<v::AngleDisplay>({{angle::kLine, 2}}), {angle::kOn}));
    EXPECT_EQ(restarted.exchange(v::readRequest<v::NameDisplay>()), message<v::NameDisplay>());
    EXPECT_EQ(restarted.exchange(v::readRequest<v::LensConfiguration>()), lenses);
    const auto& name = restarted.unit.state().settings.siteName;
    EXPECT_EQ(std::string(name.begin(), name.end()), "ABCDEFGHIJKL") << "the site name, whole";
    std::remove(options.statePath.c_str());
}

// Values at their edges are taken, one past is refused; a damaged line
// keeps the factory value.
TEST(UnitStateFile, DamagedLinesAndValuesPastTheirEdgesKeepFactoryValues) {
    UnitOptions options;
    options.statePath = ::testing::TempDir() + "halvex-unit-edges";
    std::ofstream(options.statePath) << "halvex-unit-state 1\nid 4\ncomm-timeout 999\nheater x\n"
                                        "tour-0 1 2 3\n"
                                        "preset-1 -8388608 8388607 255 0 1 2\n"
                                        "preset-2 100 200 256 0 1 2\n"
                                        "preset-3 -8388609 0 0 0 0 0\n";
    options.id = 6;  // the command line wins
    UnitHarness unit(options);
    EXPECT_EQ(unit.exchange(v::readRequest<v::CommTimeout>()), message<v::CommTimeout>());
    EXPECT_EQ(unit.exchange(v::readRequest<v::Heater>()),
              message<v::Heater>({{v::heater::kModeByte, 1}}));
    EXPECT_EQ(unit.exchange(message<v::TourStepCountRequest>()), message<v::TourStepCount>());
    auto edges = presetRecord(1, -8388608, 8388607);
    v::put(edges, v::preset_record::kLens[0], 255);
    v::put(edges, v::preset_record::kLens[2], 1);
    v::put(edges, v::preset_record::kLens[3], 2);
    EXPECT_EQ(unit.exchange(readPreset(1)), edges);
    EXPECT_EQ(unit.exchange(readPreset(2)), presetRecord(2));
    EXPECT_EQ(unit.exchange(readPreset(3)), presetRecord(3));
    std::remove(options.statePath.c_str());
}

}  // namespace
}  // namespace halvex::sim::testing
