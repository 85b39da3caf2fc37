// A restore through a session's line to the virtual unit, with no window:
// what it writes, in what order, and how it ends when the unit does not
// answer, the operator cancels or something faults.

#include <gtest/gtest.h>

#include <QTimer>
#include <set>
#include <stdexcept>

#include "commissioning/command_line_runs.h"
#include "commissioning/unit_reader.h"
#include "session/session.h"
#include "tests/commissioning/restore_frames.h"

using namespace halvex;
using namespace halvex::commissioning;
using namespace halvex::testing;

namespace {

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

}  // namespace

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
    // Asked whether to write it, the operator says no: nothing is written.
    const CommandIo refusing{[&](const QString& line) { said << line; },
                             [](const QString&) { return false; }};
    peer.clear();
    EXPECT_EQ(
        finish(restoreUnitCommand(line, 0, file, {}, refusing), CommissioningRig::kLongestJobMs),
        kUnitFailed);
    EXPECT_EQ(said.last(), QStringLiteral("Nothing was written."));
    EXPECT_TRUE(std::ranges::all_of(peer.messages(false), isRead));
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

TEST_F(WindowlessRestore, AnglesAreComparedAsTheyReadAfterTheOffsetsAreWritten) {
    UnitSettings file = withPanOffsetMoved();
    file.presets[5].tilt += 500;  // and one that differs in tilt alone
    const RestoreResult result = restore(file);
    EXPECT_TRUE(result.verified()) << result.problem.toStdString();
    const std::vector<Message_> sent = peer.messages(false);
    EXPECT_EQ(std::count_if(sent.begin(), sent.end(), is<v::StorePreset>), 2);
    EXPECT_TRUE(std::none_of(sent.begin(), sent.end(),
                             [](const Message_& m) { return is<v::SoftLimit>(m) && !isRead(m); }));
}

// The soft limits and presets read again after new offsets: a question the
// unit does not answer stops the restore there.
TEST_F(WindowlessRestore, ASilentUnitAfterTheOffsetsAreWrittenStopsTheRestore) {
    line.link().Timer4().setInterval(100);
    for (const bool limits : {true, false}) {
        SCOPED_TRACE(limits ? "a soft limit" : "a preset");
        bool offsetsWritten = false;
        peer.onFrame = [&](const RecordingPeer::Frame& frame) {
            const Message_& m = frame.message;
            offsetsWritten = offsetsWritten || is<v::SetAngleOffsets>(m);
            const bool asked = limits ? is<v::SoftLimit>(m) && isRead(m) : is<v::PresetRequest>(m);
            peer.setConnected(!(offsetsWritten && asked));
        };
        const RestoreResult result = restore(withPanOffsetMoved());
        peer.onFrame = nullptr;
        peer.setConnected(true);
        EXPECT_EQ(result.problem, QStringLiteral("No reply from the unit to the soft limits and "
                                                 "presets; the restore stopped there."));
    }
}

TEST_F(WindowlessRestore, CancelOnceThePresetsAreWrittenEndsTheRestoreThere) {
    const RestoreResult result = restoreCancelledAfter(withPanOffsetMoved(), is<v::StorePreset>);
    EXPECT_TRUE(result.cancelled);
    EXPECT_FALSE(result.finished);
    const std::vector<Message_> sent = peer.messages(false);
    EXPECT_TRUE(std::none_of(std::find_if(sent.begin(), sent.end(), is<v::StorePreset>), sent.end(),
                             is<v::TourStepCountRequest>));
}

TEST_F(WindowlessRestore, CancelDuringALensMoveLeavesThePresetWithoutLenses) {
    UnitSettings file = before;
    file.presets[5].lens = {60, 70, 80, 90};
    const RestoreResult result = restoreCancelledAfter(file, is<v::AbsoluteMoveWithLenses>);
    EXPECT_TRUE(result.cancelled);
    EXPECT_FALSE(unit.state().presets.at(5).hasLens());
}

TEST_F(WindowlessRestore, ALensDriveLongerThanTheStillTimeIsFollowedToItsEnd) {
    sim::UnitState& state = unit.state();
    state.lenses.moveTo({1, 1, 1, 1}, state.settings);
    state.lenses.step(10.0);
    UnitSettings file = before;
    file.presets[5].lens = {250, 250, 250, 250};
    EXPECT_TRUE(restore(file).verified());
    EXPECT_EQ(state.presets.at(5).lens, file.presets[5].lens);
}

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

TEST_F(WindowlessRestore, ReadingTakesAFullTourAndNamesWhatTheUnitDoesNotAnswer) {
    for (int step = 0; step < kMostTourSteps; ++step) {
        unit.state().tours.append(1, {static_cast<Byte>(step % 4 + 1), 5});
    }
    QStringList steps;
    Progress progress;
    progress.report = [&steps](const QString& step, int, int) { steps << step; };
    UnitRead read = finish(readUnit(asking, progress), CommissioningRig::kLongestJobMs);
    ASSERT_TRUE(read.settings.has_value()) << read.problem.toStdString();
    EXPECT_EQ(read.settings->tours[1].size(), static_cast<std::size_t>(kMostTourSteps));
    EXPECT_EQ(steps.filter(QStringLiteral(" tour ")),
              (QStringList{QStringLiteral("Reading tour 3"), QStringLiteral("Reading tour 2"),
                           QStringLiteral("Reading tour 1")}));

    // Cancelled among the tours: the read says so, and holds nothing.
    bool cancel = false;
    peer.onFrame = [&cancel](const RecordingPeer::Frame& frame) {
        cancel = cancel || is<v::TourStepCountRequest>(frame.message);
    };
    progress = Progress{};
    progress.cancelled = [&cancel] { return cancel; };
    read = finish(readUnit(asking, progress), CommissioningRig::kLongestJobMs);
    peer.onFrame = nullptr;
    EXPECT_TRUE(read.cancelled);
    EXPECT_FALSE(read.settings.has_value());

    line.link().Timer4().setInterval(100);
    const SettingGroup& firstGroup = settingGroups().front();
    const std::pair<std::function<bool(const Message_&)>, QString> unanswered[] = {
        {is<v::FirmwareRequest>, QStringLiteral("its controller type and firmware revision")},
        {[&firstGroup](const Message_& m) { return m == firstGroup.request; },
         QString::fromStdString(firstGroup.title).toLower()},
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
    for (const auto& [asked, named] : unanswered) {
        const std::function<bool(const Message_&)>& question = asked;  // a lambda takes no binding
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
