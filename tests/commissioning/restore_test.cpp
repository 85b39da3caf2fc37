#include <gtest/gtest.h>

#include <QElapsedTimer>
#include <QLineEdit>
#include <QTimer>
#include <algorithm>
#include <set>
#include <stdexcept>

#include "commissioning/command_line_runs.h"
#include "commissioning/platform_mover.h"
#include "commissioning/progress_dialog.h"
#include "commissioning/unit_reader.h"
#include "session/session.h"
#include "tests/commissioning/commissioning_rig.h"

using namespace halvex;
using namespace halvex::commissioning;
using namespace halvex::testing;
namespace v = halvex::vocab;

namespace {

// A jog message with this bit of its flags set.
bool jogWith(const Message_& m, v::Bit<v::JogMessage> bit) {
    return isJog(m) && v::isSet(m[v::jog::kFlagsByte.offset], bit);
}

template <class M>
bool is(const Message_& m) {
    return m.front() == M::kCode;
}

// Both axes held, the lenses to these positions.
Message_ lensesTo(std::array<std::uint32_t, 4> lens) {
    namespace move = v::absolute_move_with_lenses;
    Message_ m = test::message<v::AbsoluteMoveWithLenses>(
        {{move::kPan, v::absolute_move::kHoldAxis}, {move::kTilt, v::absolute_move::kHoldAxis}});
    for (std::size_t i = 0; i < lens.size(); ++i) {
        v::put(m, move::kLens[i], lens[i]);
    }
    return m;
}

Message_ storePreset(int preset, std::int32_t pan, std::int32_t tilt) {
    namespace store = v::store_preset;
    return test::message<v::StorePreset>(
        {{store::kPreset, preset}, {store::kPan, pan}, {store::kTilt, tilt}});
}

// What stopped the restore; empty when nothing did.
QCoro::Task<std::string> faultOf(QCoro::Task<RestoreResult> restoring) {
    try {
        co_await std::move(restoring);
    } catch (const std::exception& fault) {
        co_return fault.what();
    }
    co_return std::string();
}

// A move to the soft limit at 90.00 was stopped: the platform was told to
// stop, the override is off, no limit was set, and it stands short of it.
void expectStoppedShortOfTheLimit(const std::vector<Message_>& sent, sim::Unit& unit) {
    const auto move = std::find_if(sent.begin(), sent.end(), is<v::AbsoluteMove>);
    ASSERT_NE(move, sent.end());
    EXPECT_EQ(std::count_if(move, sent.end(),
                            [](const Message_& m) { return jogWith(m, v::jog::kStop); }),
              1);
    EXPECT_EQ(std::count_if(move, sent.end(), is<v::SoftLimit>), 0);
    EXPECT_FALSE(unit.state().motion.overrideOn());
    ASSERT_TRUE(ConsoleRig::waitFor([&] { return !unit.state().motion.moving(); }, 3000));
    EXPECT_LT(unit.state().motion.mechanicalPan(), 9000);
    EXPECT_EQ(unit.state().settings.softLimits[0], 17000);
}

// A restore with no window: a session's line to the virtual unit, and what
// the unit held before, read through that line.
class WindowlessRestore : public ::testing::Test {
  protected:
    void SetUp() override {
        ASSERT_TRUE(line.open(QStringLiteral("COM1"), 9600));
        const UnitRead read = finish(readUnit(asking, Progress{}), CommissioningRig::kLongestJobMs);
        ASSERT_TRUE(read.settings.has_value()) << read.problem.toStdString();
        before = *read.settings;
    }
    RestorePlan planFor(const UnitSettings& file) const { return planRestore(file, before, false); }
    RestoreResult restore(const UnitSettings& file, Progress progress = {}) {
        return finish(restoreUnit(asking, planFor(file), std::move(progress)),
                      CommissioningRig::kLongestJobMs);
    }
    // A restore that the operator cancels once the unit has heard a frame
    // that `heard` picks.
    RestoreResult restoreCancelledAfter(const UnitSettings& file, bool (*heard)(const Message_&)) {
        bool cancel = false;
        peer.onFrame = [&](const RecordingPeer::Frame& frame) {
            cancel = cancel || heard(frame.message);
        };
        Progress progress;
        progress.cancelled = [&] { return cancel; };
        RestoreResult result = restore(file, std::move(progress));
        peer.onFrame = nullptr;
        return result;
    }
    // The pan offset moved, and every soft limit and preset reading moved
    // with it but preset 2's.
    UnitSettings withPanOffsetMoved() const {
        constexpr std::int32_t kShift = 1000;
        UnitSettings file = before;
        file.values["offsets/pan-offset"] += kShift;
        file.values["soft-limits/cw"] += kShift;
        file.values["soft-limits/ccw"] += kShift;
        for (std::size_t n = 0; n < file.presets.size(); ++n) {
            file.presets[n].pan += n == 2 ? 0 : kShift;
        }
        return file;
    }
    // The pan soft limit a few seconds' drive away.
    UnitSettings farLimit() const {
        UnitSettings file = before;
        file.values["soft-limits/cw"] = 9000;
        return file;
    }

    sim::Unit unit;
    RecordingPeer peer{unit};
    TestPort* port = new TestPort(&peer);  // the session owns it
    Session line{port, CommissioningRig::kCommissioningTickMs};
    UnitLine asking{line};
    UnitSettings before;
};

// The console connected to a unit that has just been saved to the file.
class RestoreSavedUnit : public ::testing::Test {
  protected:
    void SetUp() override {
        ASSERT_TRUE(rig.connect());
        rig.trigger("MenuSaveUnit");
        rig.asked.clear();
    }
    CommissioningRig rig;
};

}  // namespace

TEST_F(RestoreSavedUnit, ShowsTheDifferencesWritesOnlyThoseAfterOkAndRefusesABadFile) {
    sim::UnitState& unit = rig.unit.state();
    const sim::StoredState saved = stored(unit);
    unit.settings.panRates.ramp = 33;
    unit.settings.heater = 2;
    unit.settings.lensConfig[1] = 0x4A;
    unit.presets.at(0).pan = 999;
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
    EXPECT_EQ(codes,
              (std::vector<Byte>{v::Rates::kCode, v::Heater::kCode, v::LensConfiguration::kCode,
                                 v::StorePreset::kCode, v::ClearTour::kCode}));
    EXPECT_EQ(stored(unit), saved);
    EXPECT_EQ(rig.status(), QStringLiteral("Restored unit.txt onto unit 0; read back, the unit "
                                           "holds every value of the file."));
    EXPECT_TRUE(rig.shown.empty()) << rig.lastMessage().toStdString();

    // Nothing left to do: nothing asked, nothing written.
    rig.trigger("MenuRestoreUnit");
    EXPECT_EQ(rig.confirmations.size(), 2u);
    EXPECT_TRUE(rig.writes().empty());
    EXPECT_EQ(rig.status(), QStringLiteral("The unit already holds every value of unit.txt."));

    // What is wrong with a file is named as the file tests check it.
    const std::string good = rig.fileText();
    rig.writeFile(good.substr(0, good.size() / 2));
    rig.trigger("MenuRestoreUnit");
    EXPECT_EQ(rig.lastMessage(), QStringLiteral("Could Not Restore Unit Settings: unit.txt was "
                                                "refused, and nothing was sent: it is cut short: "
                                                "the line 'end' is missing."));
    EXPECT_TRUE(rig.line.messages(false).empty());
    // A file from another controller type is refused after reading the unit.
    UnitSettings other = readSettingsText(good).settings.value();
    other.identity.controllerType = 1;
    rig.writeFile(writeSettingsText(other));
    rig.trigger("MenuRestoreUnit");
    EXPECT_TRUE(rig.lastMessage().contains(QStringLiteral("controller type 1")));
    EXPECT_TRUE(rig.writes().empty());
}

TEST_F(RestoreSavedUnit, FactorySettingsWaitForTheFactoryArea) {
    rig.unit.state().settings.directions = 0x05;
    rig.unit.state().settings.panEncoder = 321;
    rig.unit.state().settings.heater = 0;
    rig.trigger("MenuRestoreUnit");
    ASSERT_EQ(rig.confirmations.size(), 1u);
    EXPECT_TRUE(rig.confirmations[0].contains(
        QStringLiteral("factory/pan-motor-reverse|no|yes|factory area closed")));
    EXPECT_TRUE(
        rig.confirmations[0].contains(QStringLiteral("housekeeping/heater|share power|disabled|")));
    EXPECT_EQ(rig.writes(),
              std::vector<Message_>{test::message<v::Heater>({{v::heater::kModeByte, 1}})});
    const QString factoryRows = QStringLiteral(
        "factory/pan-motor-reverse (file no, unit yes); "
        "factory/pan-resolver-invert (file no, unit yes); "
        "factory/pan-encoder (file 15, unit 321).");
    EXPECT_EQ(rig.lastMessage(),
              QStringLiteral("Restore Unit Settings: Restored, except the factory settings, which "
                             "are written only while the factory area is open: ") +
                  factoryRows);
    EXPECT_EQ(rig.unit.state().settings.directions, 0x05);

    // Only they differ now: nothing to confirm, nothing written.
    rig.trigger("MenuRestoreUnit");
    EXPECT_EQ(rig.confirmations.size(), 1u);
    EXPECT_TRUE(rig.writes().empty());
    EXPECT_EQ(rig.lastMessage(),
              QStringLiteral("Restore Unit Settings: Nothing was written: only factory settings "
                             "differ, and they are written only while the factory area is open: ") +
                  factoryRows);

    rig.find<QLineEdit>(QStringLiteral("PassText"))->setText(QStringLiteral("7214"));
    rig.click(QStringLiteral("PassEntBut"));
    rig.trigger("MenuRestoreUnit");
    EXPECT_EQ(rig.writes(),
              (std::vector<Message_>{test::message<v::Directions>(),
                                     test::message<v::Encoders>(
                                         {{v::encoders::kPan, 15}, {v::encoders::kTilt, 15}})}));
    EXPECT_EQ(rig.unit.state().settings.directions, 0);
    EXPECT_EQ(rig.unit.state().settings.panEncoder, 15);
}

// Lens positions reach a preset only from where the lenses stand, and lens
// bytes go back to none only by clearing every preset.
TEST(RestoreUnit, MovesTheLensesForPresetLensPositionsOnlyAfterSayingSo) {
    CommissioningRig rig;
    sim::UnitState& unit = rig.unit.state();
    unit.presets.at(5) = sim::Preset{1000, 500, {60, 70, 80, 90}};
    unit.presets.at(0) = sim::Preset{100, 200, {}};
    ASSERT_TRUE(rig.connect());
    rig.trigger("MenuSaveUnit");
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
TEST(RestoreUnit, DrivesToEachSoftLimitAndNamesTheOneItCannotReach) {
    CommissioningRig rig;
    sim::UnitState& unit = rig.unit.state();
    unit.settings.panTop = 255;
    unit.settings.panRates = {127, 255, 63};
    ASSERT_TRUE(rig.connect());
    rig.trigger("MenuSaveUnit");
    UnitSettings file = rig.saved();
    file.values["soft-limits/cw"] = 2000;
    file.values["soft-limits/ccw"] = -20000;  // past the mechanical end
    rig.writeFile(writeSettingsText(file));

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
    // Each move ended by itself, at its target or short of it: nothing to stop.
    EXPECT_TRUE(std::none_of(sent.begin(), sent.end(),
                             [](const Message_& m) { return jogWith(m, v::jog::kStop); }));
    EXPECT_EQ(unit.settings.softLimits[0], 2000);
    EXPECT_EQ(unit.motion.mechanicalPan(), 0);
    EXPECT_FALSE(unit.motion.overrideOn());
    EXPECT_FALSE(unit.motion.moving());
    EXPECT_EQ(rig.lastMessage(),
              QStringLiteral("Restore Unit Settings: The unit did not take 1 of the values: "
                             "soft-limits/ccw (file -200.00, unit -170.00)."));
}

TEST_F(RestoreSavedUnit, CancelDuringAMoveStopsThePlatform) {
    UnitSettings file = rig.saved();
    file.values["soft-limits/cw"] = 9000;  // a few seconds away at the unit's top speed
    rig.writeFile(writeSettingsText(file));
    rig.line.onFrame = [&](const RecordingPeer::Frame& frame) {
        if (is<v::AbsoluteMove>(frame.message)) {
            QTimer::singleShot(200, [&] {
                QTest::mouseClick(rig.window->findChild<ProgressDialog*>()->CommissioningCancelBut,
                                  Qt::LeftButton);
            });
        }
    };
    rig.trigger("MenuRestoreUnit");
    expectStoppedShortOfTheLimit(rig.line.messages(), rig.unit);
    EXPECT_GT(rig.unit.state().motion.mechanicalPan(), 0);
    EXPECT_EQ(rig.lastMessage(), QStringLiteral("Restore Unit Settings: The restore was stopped. "
                                                "The unit holds part of the file's settings."));
    EXPECT_FALSE(rig.window->state().SendInProgress);
}

// A fault in the middle of a move (a range fault in something the restore
// calls) comes out where the restore is awaited, and still leaves the
// platform stopped and the soft limits no longer overridden.
TEST_F(WindowlessRestore, AFaultDuringAMoveStillStopsThePlatformAndComesOutOfTheRestore) {
    const RestorePlan plan = planFor(farLimit());
    ASSERT_TRUE(plan.moves());

    bool moving = false;
    peer.onFrame = [&](const RecordingPeer::Frame& frame) {
        moving = moving || is<v::AbsoluteMove>(frame.message);
    };
    Progress progress;
    progress.cancelled = [&]() -> bool {
        if (moving) {
            throw std::runtime_error("a fault while following the move");
        }
        return false;
    };
    peer.clear();
    EXPECT_EQ(finish(faultOf(restoreUnit(asking, plan, progress)), CommissioningRig::kLongestJobMs),
              "a fault while following the move");
    peer.onFrame = nullptr;

    const std::vector<Message_> sent = peer.messages();
    expectStoppedShortOfTheLimit(sent, unit);
    ASSERT_TRUE(isJog(sent.back()));
    EXPECT_FALSE(jogWith(sent.back(), v::jog::kSoftLimitOverride));
}

TEST_F(WindowlessRestore, OnTheCommandLineFactorySettingsAloneWriteNothingAndAreNamed) {
    UnitSettings file = before;
    file.values["factory/pan-encoder"] += 1;
    QStringList said;
    const CommandIo io{[&](const QString& line) { said << line; },
                       [](const QString&) { return true; }};
    peer.clear();
    EXPECT_EQ(finish(restoreUnitCommand(line, 0, file, {}, io), CommissioningRig::kLongestJobMs),
              kUnitFailed);
    EXPECT_TRUE(std::none_of(peer.frames().begin(), peer.frames().end(), [](const auto& frame) {
        return is<v::Encoders>(frame.message) && !isRead(frame.message);
    }));
    EXPECT_TRUE(said.last().startsWith(
        QStringLiteral("Not written, the factory area is closed (give --factory-code): "
                       "factory/pan-encoder (file ")))
        << said.join('\n').toStdString();
    EXPECT_EQ(said.filter(QStringLiteral(" differs from the file in 1 value:")).size(), 1)
        << said.join('\n').toStdString();
    // A setting written beside it moves nothing; a soft limit moves the platform.
    file.values["speeds/pan-ramp"] += 1;
    EXPECT_FALSE(planFor(file).moves());
    file.values["soft-limits/cw"] += 1;
    EXPECT_TRUE(planFor(file).moves());
}

TEST_F(WindowlessRestore, ALimitIsNotSetWhereverThePlatformIsWhenItCannotBeMovedThere) {
    ASSERT_TRUE(planFor(farLimit()).moves());
    // Once the move is sent the unit hears everything but the jog messages
    // that follow it; a short watchdog gives up on them sooner.
    line.link().Timer4().setInterval(100);
    bool moveSent = false;
    peer.onFrame = [&](const RecordingPeer::Frame& frame) {
        moveSent = moveSent || is<v::AbsoluteMove>(frame.message);
        peer.setConnected(!moveSent || !isJog(frame.message));
    };
    peer.clear();
    EXPECT_FALSE(restore(farLimit()).verified());
    peer.onFrame = nullptr;
    peer.setConnected(true);
    const std::vector<Message_> sent = peer.messages(false);
    EXPECT_TRUE(std::none_of(sent.begin(), sent.end(),
                             [](const Message_& m) { return is<v::SoftLimit>(m) && !isRead(m); }));
}

// Lenses that cannot be driven to a preset's positions, because the unit
// answers no jog message or no lens move: the preset takes none.
TEST_F(WindowlessRestore, APresetTakesNoLensPositionsTheLensesWereNotDrivenTo) {
    UnitSettings file = before;
    file.presets[5].lens = {60, 70, 80, 90};
    line.link().Timer4().setInterval(100);
    for (const bool jogs : {true, false}) {
        SCOPED_TRACE(jogs ? "no jog message answered" : "no lens move answered");
        peer.onFrame = [&](const RecordingPeer::Frame& frame) {
            peer.setConnected(jogs ? !isJog(frame.message)
                                   : !is<v::AbsoluteMoveWithLenses>(frame.message));
        };
        EXPECT_FALSE(restore(file).verified());
        peer.onFrame = nullptr;
        peer.setConnected(true);
        EXPECT_FALSE(unit.state().presets.at(5).hasLens());
    }
}

// A tour the unit does not answer for: its steps are not appended to
// whatever the tour held, and the restore stops there. The clearing is
// answered only by a reply cut short and a late one that names another tour.
TEST_F(WindowlessRestore, ATourTheUnitDoesNotAnswerForStopsTheRestoreThere) {
    UnitSettings file = before;
    file.tours[1] = {commissioning::TourStep::of(4, 0, 5, false)};
    line.link().Timer4().setInterval(100);
    for (const bool clearing : {true, false}) {
        SCOPED_TRACE(clearing ? "clearing" : "appending");
        peer.onFrame = [&](const RecordingPeer::Frame& frame) {
            const bool unanswered =
                clearing ? is<v::ClearTour>(frame.message) : is<v::AppendTourStep>(frame.message);
            peer.setConnected(!unanswered);
            if (unanswered && clearing) {
                QTimer::singleShot(0, &line, [this] {
                    port->injectIncoming(encodeFrame(kAck, 0, {v::TourCleared::kCode}, 0));
                    port->injectIncoming(encodeFrame(
                        kAck, 0, test::message<v::TourCleared>({{v::tour_cleared::kTour, 0}}), 0));
                });
            }
        };
        peer.clear();
        const RestoreResult result = restore(file);
        peer.onFrame = nullptr;
        peer.setConnected(true);
        EXPECT_EQ(result.problem,
                  QStringLiteral("No reply from the unit to tour 2; the restore stopped there."));
        EXPECT_FALSE(result.finished);
        const std::vector<Message_> sent = peer.messages(false);
        // A lost append has the whole tour written again: twice in all.
        EXPECT_EQ(std::count_if(sent.begin(), sent.end(), is<v::AppendTourStep>), clearing ? 0 : 2);
    }
}

// One append whose reply is lost: the tour is cleared and written again
// whole, and the restore goes on.
TEST_F(WindowlessRestore, ATourWithALostAppendReplyIsWrittenAgainWhole) {
    UnitSettings file = before;
    file.tours[1] = {commissioning::TourStep::of(4, 0, 5, false),
                     commissioning::TourStep::of(6, 0, 7, false)};
    line.link().Timer4().setInterval(100);
    bool lost = false;
    peer.onFrame = [&](const RecordingPeer::Frame& frame) {
        const bool drop = !lost && is<v::AppendTourStep>(frame.message);
        lost = lost || drop;
        peer.setConnected(!drop);
    };
    const RestoreResult result = restore(file);
    peer.onFrame = nullptr;
    EXPECT_TRUE(result.verified()) << result.problem.toStdString();
    const std::vector<Message_> sent = peer.messages(false);  // a clear may be asked twice
    EXPECT_GE(std::count_if(sent.begin(), sent.end(), is<v::ClearTour>), 2);
    ASSERT_EQ(unit.state().tours.size(1), 2);
    EXPECT_EQ(unit.state().tours.step(1, 0)->presetNumber(), 4);
    EXPECT_EQ(unit.state().tours.step(1, 1)->presetNumber(), 6);
}

// The offsets change what the soft limits and presets read. A file that
// moves the pan offset, with every reading moved with it but preset 2's,
// has only preset 2 written: what the unit holds is read again after the
// offsets are written.
TEST_F(WindowlessRestore, AnglesAreComparedAsTheyReadAfterTheOffsetsAreWritten) {
    UnitSettings file = withPanOffsetMoved();
    file.presets[5].tilt += 500;  // and one that differs in tilt alone
    const RestoreResult result = restore(file);
    EXPECT_TRUE(result.verified()) << result.problem.toStdString();
    const std::vector<Message_> sent = peer.messages(false);
    EXPECT_EQ(std::count_if(sent.begin(), sent.end(), is<v::StorePreset>), 2);
}

// Cancel as the last preset is stored: the restore ends there, with no
// tour written and nothing read back.
TEST_F(WindowlessRestore, CancelOnceThePresetsAreWrittenEndsTheRestoreThere) {
    const RestoreResult result = restoreCancelledAfter(withPanOffsetMoved(), is<v::StorePreset>);
    EXPECT_TRUE(result.cancelled);
    EXPECT_FALSE(result.finished);
    const std::vector<Message_> sent = peer.messages(false);
    EXPECT_TRUE(std::none_of(std::find_if(sent.begin(), sent.end(), is<v::StorePreset>), sent.end(),
                             is<v::TourStepCountRequest>));
}

// Cancel while the lenses drive to a preset's positions: the preset does
// not take them, and the restore says it was cancelled.
TEST_F(WindowlessRestore, CancelDuringALensMoveLeavesThePresetWithoutLenses) {
    UnitSettings file = before;
    file.presets[5].lens = {60, 70, 80, 90};
    const RestoreResult result = restoreCancelledAfter(file, is<v::AbsoluteMoveWithLenses>);
    EXPECT_TRUE(result.cancelled);
    EXPECT_FALSE(unit.state().presets.at(5).hasLens());
}

// A lens drive longer than the still time: a lens has no moving bit, so the
// changing reading is what keeps the restore following it.
TEST_F(WindowlessRestore, ALensDriveLongerThanTheStillTimeIsFollowedToItsEnd) {
    sim::UnitState& state = unit.state();
    state.lenses.moveTo({1, 1, 1, 1}, state.settings);
    state.lenses.step(10.0);
    UnitSettings file = before;
    file.presets[5].lens = {250, 250, 250, 250};
    EXPECT_TRUE(restore(file).verified());
    EXPECT_EQ(state.presets.at(5).lens, file.presets[5].lens);
}

// A unit whose tour holds fewer steps than the file's: the append it answers
// with no step ends the tour's writing, and the read-back names the tour as
// not taken, instead of the tour being written again.
TEST_F(WindowlessRestore, ATourTheUnitHasNoRoomForIsNamedAsNotTaken) {
    UnitSettings file = before;
    file.tours[1] = {commissioning::TourStep::of(4, 0, 5, false),
                     commissioning::TourStep::of(6, 0, 7, false)};
    // A unit with room for one step only: it answers the second append with
    // no step, and holds one step when it is read back.
    int appends = 0;
    peer.onFrame = [&](const RecordingPeer::Frame& frame) {
        const bool full = is<v::AppendTourStep>(frame.message) && ++appends == 2;
        peer.setConnected(!full);
        if (full) {
            QTimer::singleShot(0, &line, [this] {
                namespace t = v::tour_step;
                Message_ noRoom =
                    test::message<v::TourStep>({{t::kTour, 1}, {t::kStep, t::kNoStep}});
                noRoom[0] = v::AppendTourStep::kCode;
                port->injectIncoming(encodeFrame(kAck, 0, noRoom, 0));
            });
        } else if (appends == 2 && unit.state().tours.size(1) == 2) {
            unit.state().tours.remove(1, 1);
        }
    };
    const RestoreResult result = restore(file);
    peer.onFrame = nullptr;
    EXPECT_TRUE(result.finished) << result.problem.toStdString();
    ASSERT_EQ(result.notTaken.size(), 1u);
    EXPECT_EQ(result.notTaken[0].label, "tours/2");
    const std::vector<Message_> sent = peer.messages(false);
    EXPECT_EQ(std::count_if(sent.begin(), sent.end(), is<v::ClearTour>), 1);
    EXPECT_EQ(unit.state().tours.size(1), 1);
}

// A step the unit does not answer for is named when the unit is read.
// A tour as long as a tour may be is read whole; a question about tour 2
// that goes unanswered is named.
TEST_F(WindowlessRestore, ReadingTakesAFullTourAndNamesWhatTheUnitDoesNotAnswer) {
    for (int step = 0; step < kMostTourSteps; ++step) {
        unit.state().tours.append(1, {static_cast<Byte>(step % 4 + 1), 5});
    }
    UnitRead read = finish(readUnit(asking, Progress{}), CommissioningRig::kLongestJobMs);
    ASSERT_TRUE(read.settings.has_value()) << read.problem.toStdString();
    EXPECT_EQ(read.settings->tours[1].size(), static_cast<std::size_t>(kMostTourSteps));

    line.link().Timer4().setInterval(100);
    const std::pair<std::function<bool(const Message_&)>, QString> unanswered[] = {
        {[](const Message_& m) {
             return is<v::TourStepCountRequest>(m) &&
                    v::get(m, v::tour_step_count_request::kTour) == 1;
         },
         QStringLiteral("the step count of tour 2")},
        {[](const Message_& m) {
             return is<v::TourStepRequest>(m) && v::get(m, v::tour_step_request::kTour) == 1 &&
                    v::get(m, v::tour_step_request::kStep) == 1;
         },
         QStringLiteral("step 2 of tour 2")},
    };
    for (const auto& [question, named] : unanswered) {
        peer.onFrame = [&](const RecordingPeer::Frame& frame) {
            peer.setConnected(!question(frame.message));
        };
        read = finish(readUnit(asking, Progress{}), CommissioningRig::kLongestJobMs);
        peer.onFrame = nullptr;
        peer.setConnected(true);
        EXPECT_FALSE(read.settings.has_value());
        EXPECT_EQ(read.problem,
                  QStringLiteral("No reply from the unit to the request for %1.").arg(named));
    }
}

// The progress counts a step for each command written: values that one
// command writes together are one step.
TEST_F(WindowlessRestore, CountsOneStepForEachCommandWritten) {
    UnitSettings file = before;
    file.values["speeds/pan-ramp"] = 33;  // the two ramps: one command
    file.values["speeds/tilt-ramp"] = 44;
    file.values["housekeeping/heater"] = 2;
    file.tours[1] = {commissioning::TourStep::of(4, 0, 5, false)};
    std::set<int> totals;
    QStringList steps;
    std::vector<int> done;
    Progress progress;
    progress.report = [&](const QString& step, int count, int total) {
        if (step.startsWith(QStringLiteral("Writing"))) {
            totals.insert(total);
            steps << step;
            done.push_back(count);
        }
    };
    EXPECT_TRUE(restore(file, progress).verified());
    EXPECT_EQ(totals, std::set<int>{3});
    EXPECT_EQ(done, (std::vector<int>{0, 1, 2}));
    EXPECT_EQ(steps.last(), QStringLiteral("Writing tour 2"));
}

// Cancel once the first tour is written: the restore stops there, says it
// was cancelled, and the second tour is left as it was.
TEST_F(WindowlessRestore, CancelAmongTheToursWritesNoMore) {
    UnitSettings file = before;
    file.tours[0] = {commissioning::TourStep::of(3, 0, 5, false)};
    file.tours[1] = {commissioning::TourStep::of(4, 0, 5, false)};
    const RestoreResult result = restoreCancelledAfter(file, is<v::AppendTourStep>);
    EXPECT_TRUE(result.cancelled);
    EXPECT_FALSE(result.finished);
    EXPECT_EQ(unit.state().tours.size(0), 1);
    EXPECT_EQ(unit.state().tours.size(1), 0);
}

// A file saved from a unit set up unlike a new one, restored onto a new
// unit, leaves it set up as the first in everything the console restores.
TEST(RestoreUnit, EveryValueOfTheFileReachesANewUnit) {
    CommissioningRig rig;
    const sim::StoredState source = distinctUnit(0);
    loadInto(rig.unit.state(), source);
    ASSERT_TRUE(rig.connect());
    rig.trigger("MenuSaveUnit");
    loadInto(rig.unit.state(), sim::StoredState{});
    rig.find<QLineEdit>(QStringLiteral("PassText"))->setText(QStringLiteral("7214"));
    rig.click(QStringLiteral("PassEntBut"));

    rig.trigger("MenuRestoreUnit");
    EXPECT_TRUE(rig.shown.empty()) << rig.lastMessage().toStdString();
    EXPECT_EQ(stored(rig.unit.state()), source);
}

// A lens whose motor is off never gets there: the restore gives up on it
// once the reports stand still, and names the preset.
TEST(RestoreUnit, NamesAPresetWhoseLensCannotMove) {
    CommissioningRig rig;
    rig.unit.state().settings.lensConfig[1] = 0x08;  // camera 2: focus only
    ASSERT_TRUE(rig.connect());
    rig.trigger("MenuSaveUnit");
    UnitSettings file = rig.saved();
    file.presets[9] = {0, 0, {128, 128, 50, 128}};
    rig.writeFile(writeSettingsText(file));

    QElapsedTimer took;
    took.start();
    rig.trigger("MenuRestoreUnit");
    EXPECT_GE(took.elapsed(), PlatformMover::kStillMs);
    EXPECT_EQ(rig.lastMessage(),
              QStringLiteral("Restore Unit Settings: The unit did not take 1 of the values: "
                             "presets/9 (file 0.00 0.00 128 128 50 128, unit 0.00 0.00 0 0 0 0)."));
    EXPECT_FALSE(rig.unit.state().presets.at(9).hasLens());
}
