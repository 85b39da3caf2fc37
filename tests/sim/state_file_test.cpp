// Settings, presets and tours survive a restart through the state file;
// display settings only when stored for power up.

#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <string>

#include "sim/state_file.h"
#include "tests/sim/unit_test_support.h"

namespace halvex::sim::testing {
namespace {

class UnitStateFile : public ::testing::Test {
  protected:
    void SetUp() override {
        path_ = ::testing::TempDir() + "halvex-unit-state-" +
                ::testing::UnitTest::GetInstance()->current_test_info()->name();
        std::remove(path_.c_str());
    }
    void TearDown() override { std::remove(path_.c_str()); }

    UnitOptions options() const {
        UnitOptions o;
        o.statePath = path_;
        return o;
    }

    std::string path_;
};

TEST_F(UnitStateFile, StoredSettingsComeBackAfterARestart) {
    {
        UnitHarness unit(options());
        unit.exchange({0x41, 3, 0x10, 0x27, 0x00, 0x00, 0x00, 0x00});
        unit.exchange({0x52, 2, 3, 5});
        unit.exchange({0x96, 45});
        unit.exchange({0x70, 0x40 | 0x12});  // angle display stored for power up
        unit.exchange({0x71, 0x15});         // name display not stored
        unit.exchange({0x9F, 9});
    }
    UnitHarness restarted(options());
    restarted.id = 9;
    EXPECT_EQ(restarted.exchange({0x40, 3}, 9),
              (std::vector<Byte>{0x40, 3, 0x10, 0x27, 0x00, 0, 0, 0, 0, 0, 0, 0}));
    EXPECT_EQ(restarted.exchange({0x51, 2, 0}, 9), (std::vector<Byte>{0x51, 2, 0, 3, 5}));
    EXPECT_EQ(restarted.exchange({0x96, 0x80}, 9), (std::vector<Byte>{0x96, 45}));
    EXPECT_EQ(restarted.exchange({0x70, 0x80}, 9), (std::vector<Byte>{0x70, 0x12}));
    EXPECT_EQ(restarted.exchange({0x71, 0x80}, 9), (std::vector<Byte>{0x71, 0x00}));
}

TEST_F(UnitStateFile, CommandLineIdWinsAndDamagedLinesKeepFactoryValues) {
    {
        std::ofstream out(path_);
        out << "halvex-unit-state 1\n"
               "id 4\n"
               "comm-timeout 999\n"
               "heater x\n"
               "tour-0 1 2 3\n"
               "preset-1 100 200 1 2 3 4\n";
    }
    UnitOptions o = options();
    o.id = 6;
    UnitHarness unit(o);
    unit.id = 6;
    EXPECT_EQ(unit.exchange({0x96, 0x80}, 6), (std::vector<Byte>{0x96, 0}));
    EXPECT_EQ(unit.exchange({0x97, 0x80}, 6), (std::vector<Byte>{0x97, 1}));
    EXPECT_EQ(unit.exchange({0x56, 0}, 6), (std::vector<Byte>{0x56, 0, 0}));
    EXPECT_EQ(unit.exchange({0x40, 1}, 6),
              (std::vector<Byte>{0x40, 1, 100, 0, 0, 200, 0, 0, 1, 2, 3, 4}));
}

TEST_F(UnitStateFile, UnreadableFileIsNoState) {
    EXPECT_FALSE(loadState(path_).has_value());
    std::ofstream(path_) << "something else\n";
    EXPECT_FALSE(loadState(path_).has_value());
}

}  // namespace
}  // namespace halvex::sim::testing
