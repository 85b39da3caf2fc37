#include <gtest/gtest.h>

#include "commissioning/platform_mover.h"
#include "tests/commissioning/commissioning_rig.h"

using namespace halvex;
using namespace halvex::commissioning;
using namespace halvex::testing;

namespace {

// The console connected to the unit, and the unit saved to the file.
class RestoreUnit : public ::testing::Test {
  protected:
    // The unit's clock runs fast: a lens that has not moved for this long
    // will not.
    RestoreUnit() { PlatformMover::stillMs = 250; }
    void save() {
        ASSERT_TRUE(rig.connect());
        rig.trigger("MenuSaveUnit");
        rig.asked.clear();
    }
    CommissioningRig rig;
    sim::UnitState& unit = rig.unit.state();
};
class RestoreSavedUnit : public RestoreUnit {
  protected:
    void SetUp() override { save(); }
};

}  // namespace

TEST_F(RestoreSavedUnit,
       ShowsTheDifferencesWritesOnlyThoseAfterOkAndRefusesAnotherControllerTypesFile) {
    const sim::StoredState saved = stored(unit);
    unit.settings.panRates.ramp = 33;
    unit.settings.heater = 2;
    unit.settings.lensConfig[1] = 0x4A;
    unit.presets.at(0).pan = 999;
    unit.presets.at(1).tilt = 999;              // each angle is compared on its own
    unit.tours.append(0, sim::TourStep{7, 3});  // the first of each

    // Cancel writes nothing.
    rig.confirmAnswer = false;
    rig.trigger("MenuRestoreUnit");
    ASSERT_EQ(rig.asked.size(), 1u);
    EXPECT_FALSE(rig.asked[0].first) << "a file to open, not one to save";
    ASSERT_EQ(rig.confirmations.size(), 1u);
    EXPECT_TRUE(rig.cancelIsDefault);
    EXPECT_FALSE(rig.moveWarned);
    EXPECT_EQ(rig.confirmations[0],
              QStringList({QStringLiteral("speeds/pan-ramp|40|33|"),
                           QStringLiteral("housekeeping/heater|share power|full power|"),
                           QStringLiteral("lenses/camera2-focus-invert|no|yes|"),
                           QStringLiteral("presets/0|0.00 0.00 0 0 0 0|9.99 0.00 0 0 0 0|"),
                           QStringLiteral("presets/1|0.00 0.00 0 0 0 0|0.00 9.99 0 0 0 0|"),
                           QStringLiteral("tours/1|no steps|7/0/3/no|")}));
    EXPECT_TRUE(rig.writes().empty());
    EXPECT_EQ(rig.status(), QStringLiteral("Restore cancelled: nothing was written."));

    // After Ok, one command for each value that differs, and the unit is as
    // it was saved.
    rig.confirmAnswer = true;
    rig.trigger("MenuRestoreUnit");
    std::vector<Byte> codes;
    std::ranges::transform(rig.writes(), std::back_inserter(codes),
                           [](const Message_& write) { return write.front(); });
    EXPECT_EQ(codes, (std::vector<Byte>{v::Rates::kCode, v::Heater::kCode,
                                        v::LensConfiguration::kCode, v::StorePreset::kCode,
                                        v::StorePreset::kCode, v::ClearTour::kCode}));
    EXPECT_EQ(stored(unit), saved);
    EXPECT_EQ(rig.status(), QStringLiteral("Restored unit.txt onto unit 0; read back, the unit "
                                           "holds every value of the file."));
    EXPECT_TRUE(rig.shown.empty()) << rig.lastMessage().toStdString();

    // Only a value kept for reference differs: nothing asked, nothing
    // written.
    rig.editFile([](UnitSettings& file) { file.values["reference/pan-resolver-centre"] += 1; });
    rig.trigger("MenuRestoreUnit");
    EXPECT_EQ(rig.confirmations.size(), 2u);
    EXPECT_TRUE(rig.writes().empty());
    EXPECT_EQ(rig.status(), QStringLiteral("The unit already holds every value of unit.txt."));
    EXPECT_TRUE(rig.shown.empty()) << rig.lastMessage().toStdString();

    // A file from another controller type is refused after reading the unit.
    rig.editFile([](UnitSettings& file) { file.identity.controllerType = 1; });
    rig.trigger("MenuRestoreUnit");
    EXPECT_TRUE(rig.lastMessage().contains(QStringLiteral("controller type 1")));
    EXPECT_TRUE(rig.writes().empty());
}

TEST_F(RestoreSavedUnit, FactorySettingsWaitForTheFactoryArea) {
    unit.settings.directions = 0x05;
    unit.settings.panEncoder = 321;
    unit.settings.heater = 0;
    rig.trigger("MenuRestoreUnit");
    ASSERT_EQ(rig.confirmations.size(), 1u);
    EXPECT_TRUE(rig.confirmations[0].contains(
        QStringLiteral("factory/pan-motor-reverse|no|yes|factory area closed")));
    EXPECT_EQ(rig.writes(),
              std::vector<Message_>{test::message<v::Heater>({{v::heater::kModeByte, 1}})});
    EXPECT_EQ(rig.lastMessage(),
              QStringLiteral("Restore Unit Settings: Restored, except the factory settings, which "
                             "are written only while the factory area is open: "
                             "factory/pan-motor-reverse (file no, unit yes); "
                             "factory/pan-resolver-invert (file no, unit yes); "
                             "factory/pan-encoder (file 15, unit 321)."));
    EXPECT_EQ(unit.settings.directions, 0x05);

    rig.openFactoryArea();
    rig.trigger("MenuRestoreUnit");
    EXPECT_EQ(rig.writes(),
              (std::vector<Message_>{test::message<v::Directions>(),
                                     test::message<v::Encoders>(
                                         {{v::encoders::kPan, 15}, {v::encoders::kTilt, 15}})}));
    EXPECT_EQ(unit.settings.directions, 0);
    EXPECT_EQ(unit.settings.panEncoder, 15);
}

// Lens positions reach a preset only from where the lenses stand, and lens
// bytes go back to none only by clearing every preset.
TEST_F(RestoreUnit, MovesTheLensesForPresetLensPositionsOnlyAfterSayingSo) {
    unit.presets.at(5) = sim::Preset{1000, 500, {60, 70, 80, 90}};
    unit.presets.at(0) = sim::Preset{100, 200, {}};
    save();
    unit.presets.at(5) = sim::Preset{1000, 500, {}};
    unit.presets.at(0) = sim::Preset{100, 200, {1, 2, 3, 4}};

    rig.trigger("MenuRestoreUnit");
    EXPECT_TRUE(rig.moveWarned);
    // Both axes held, the lenses to the preset's positions, then the preset
    // takes them; and back to where they stood.
    EXPECT_EQ(rig.writes(),
              (std::vector<Message_>{
                  v::blank<v::ClearAllPresets>(), storePreset(0, 100, 200),
                  storePreset(5, 1000, 500), lensesTo({60, 70, 80, 90}),
                  test::message<v::AddLensPositions>({{v::add_lens_positions::kPreset, 5}}),
                  lensesTo({128, 128, 128, 128})}));
    EXPECT_EQ(unit.presets.at(5), (sim::Preset{1000, 500, {60, 70, 80, 90}}));
    EXPECT_EQ(unit.presets.at(0), (sim::Preset{100, 200, {}}));
    EXPECT_EQ(unit.lenses.position(0), 128);
    EXPECT_TRUE(rig.shown.empty()) << rig.lastMessage().toStdString();
}

// A soft limit is set where the platform stands: the platform drives there
// with the limits overridden, and back. A limit the unit cannot reach is
// named afterwards.
TEST_F(RestoreUnit, DrivesToEachSoftLimitAndNamesTheOneItCannotReach) {
    unit.settings.panTop = 255;
    unit.settings.panRates = {127, 255, 63};
    save();
    rig.editFile([](UnitSettings& file) {
        file.values["soft-limits/cw"] = 2000;
        file.values["soft-limits/ccw"] = -20000;  // past the mechanical end
    });

    rig.trigger("MenuRestoreUnit");
    EXPECT_TRUE(rig.moveWarned);
    const std::vector<Message_> sent = rig.line.messages();
    const auto at = [&](const Message_& message) {
        return std::find(sent.begin(), sent.end(), message) - sent.begin();
    };
    const auto toLimit = at(test::message<v::AbsoluteMove>(
        {{v::absolute_move::kPan, 2000}, {v::absolute_move::kTilt, v::absolute_move::kHoldAxis}}));
    const auto setLimit = at(test::message<v::SoftLimit>({{v::soft_limit::kLimitByte, 0}}));
    ASSERT_LT(setLimit, static_cast<long>(sent.size()));
    ASSERT_LT(toLimit, setLimit);
    // The override was on for the move, and is off at the end.
    EXPECT_TRUE(std::any_of(sent.begin(), sent.begin() + toLimit, [](const Message_& m) {
        return jogWith(m, v::jog::kSoftLimitOverride);
    }));
    EXPECT_EQ(unit.settings.softLimits[0], 2000);
    EXPECT_EQ(unit.motion.mechanicalPan(), 0);
    EXPECT_FALSE(unit.motion.overrideOn());
    EXPECT_EQ(rig.lastMessage(),
              QStringLiteral("Restore Unit Settings: The unit did not take 1 of the values: "
                             "soft-limits/ccw (file -200.00, unit -170.00)."));
}

// A file saved from a unit set up unlike a new one, restored onto a new
// unit, leaves it set up as the first in everything the console restores.
// Its platform drives to four soft limits: a faster clock spares the wait.
TEST(RestoreOntoANewUnit, EveryValueOfTheFileReachesIt) {
    CommissioningRig rig({}, 4 * CommissioningRig::kUnitTimeScale);
    sim::UnitState& unit = rig.unit.state();
    loadInto(unit, distinctUnit());
    ASSERT_TRUE(rig.connect());
    rig.trigger("MenuSaveUnit");
    loadInto(unit, sim::StoredState{});
    rig.openFactoryArea();

    rig.trigger("MenuRestoreUnit");
    EXPECT_TRUE(rig.shown.empty()) << rig.lastMessage().toStdString();
    EXPECT_EQ(stored(unit), distinctUnit());
}
