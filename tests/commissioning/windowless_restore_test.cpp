// A restore through a session's line to the virtual unit, with no window:
// what it writes, in what order, and how it ends when the unit does not
// answer, the operator cancels or something faults.

#include <gtest/gtest.h>

#include <QTimer>
#include <set>
#include <stdexcept>

#include "commissioning/command_line_runs.h"
#include "commissioning/platform_mover.h"
#include "commissioning/unit_reader.h"
#include "session/session.h"
#include "tests/commissioning/commissioning_rig.h"

using namespace halvex;
using namespace halvex::commissioning;
using namespace halvex::testing;

namespace {

using Step = commissioning::TourStep;
constexpr int kLongestJobMs = CommissioningRig::kLongestJobMs;
// The unit's clock runs fast: its lenses settle sooner than a real unit's.
constexpr int kStillMs = 250;

// A restore with no window: a session's line to the virtual unit, and what
// the unit held before, read through that line.
class WindowlessRestore : public ::testing::Test {
  protected:
    void SetUp() override {
        PlatformMover::stillMs = kStillMs;
        ASSERT_TRUE(line.open(QStringLiteral("COM1"), 9600));
        const UnitRead read = readBack();
        ASSERT_TRUE(read.settings.has_value()) << read.problem.toStdString();
        before = *read.settings;
    }
    RestorePlan planFor(const UnitSettings& file) const { return planRestore(file, before, false); }
    // The line's record holds the restore's frames alone; afterwards the
    // unit hears everything again.
    RestoreResult restore(const UnitSettings& file, Progress progress = {}) {
        peer.clear();
        RestoreResult result =
            finish(restoreUnit(asking, planFor(file), std::move(progress)), kLongestJobMs);
        hearAll();
        return result;
    }
    UnitRead readBack(Progress progress = {}) {
        UnitRead read = finish(readUnit(asking, std::move(progress)), kLongestJobMs);
        hearAll();
        return read;
    }
    void hearAll() {
        peer.onFrame = nullptr;
        peer.setConnected(true);
    }
    // The unit hears no frame that `unheard` picks; a short watchdog gives
    // up on them sooner.
    void deafTo(std::function<bool(const Message_&)> unheard) {
        line.link().Timer4().setInterval(20);
        peer.onFrame = [this, unheard](const RecordingPeer::Frame& frame) {
            peer.setConnected(!unheard(frame.message));
        };
    }
    // The operator cancels once the unit has heard a frame that `heard` picks.
    Progress cancelOnceHeard(bool (*heard)(const Message_&)) {
        peer.onFrame = [this, heard](const RecordingPeer::Frame& frame) {
            heard_ = heard_ || heard(frame.message);
        };
        Progress progress;
        progress.cancelled = [this] { return heard_; };
        return progress;
    }
    // Frames of M the restore sent that ask nothing.
    template <class M>
    long written() const {
        return std::ranges::count_if(peer.messages(false),
                                     [](const Message_& m) { return is<M>(m) && !isRead(m); });
    }
    // The unit answers `reply` as if it had sent it.
    void replyLater(const Message_& reply) {
        QTimer::singleShot(0, &line,
                           [this, reply] { port->injectIncoming(encodeFrame(kAck, 0, reply, 0)); });
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
    UnitSettings withTour2(std::vector<Step> steps) const {
        UnitSettings file = before;
        file.tours[1] = std::move(steps);
        return file;
    }
    UnitSettings withPreset5Lenses(std::array<Byte, 4> lens) const {
        UnitSettings file = before;
        file.presets[5].lens = lens;
        return file;
    }

    sim::Unit unit;
    RecordingPeer peer{unit, 2 * CommissioningRig::kUnitTimeScale};
    TestPort* port = new TestPort(&peer);  // the session owns it
    Session line{port, CommissioningRig::kCommissioningTickMs};
    UnitLine asking{line};
    UnitSettings before;
    bool heard_ = false;
};

const std::vector<Step> kOneStep = {Step::of(4, 0, 5, false)};
const std::vector<Step> kTwoSteps = {Step::of(4, 0, 5, false), Step::of(6, 0, 7, false)};

}  // namespace

TEST_F(WindowlessRestore, AFaultDuringAMoveStillStopsThePlatformAndComesOutOfTheRestore) {
    Progress progress = cancelOnceHeard(is<v::AbsoluteMove>);
    progress.cancelled = [moving = progress.cancelled]() -> bool {
        if (moving()) {
            throw std::runtime_error("a fault while following the move");
        }
        return false;
    };
    try {
        restore(farLimit(), progress);
        ADD_FAILURE() << "the fault did not come out of the restore";
    } catch (const std::runtime_error& fault) {
        EXPECT_STREQ(fault.what(), "a fault while following the move");
    }
    hearAll();
    const std::vector<Message_> sent = peer.messages();
    expectStoppedShortOfTheLimit(sent, unit);
    ASSERT_TRUE(isJog(sent.back()));
    EXPECT_FALSE(jogWith(sent.back(), v::jog::kSoftLimitOverride));
}

TEST_F(WindowlessRestore, OnTheCommandLineFactorySettingsAloneWriteNothingAndAreNamed) {
    UnitSettings file = before;
    file.values["factory/pan-encoder"] += 1;
    QStringList said;
    // The restore's exit status, the operator answering `yes` when asked.
    const auto restoreAnswering = [&](bool yes) {
        const CommandIo io{[&said](const QString& line) { said << line; },
                           [yes](const QString&) { return yes; }};
        peer.clear();
        return finish(restoreUnitCommand(line, 0, file, {}, io), kLongestJobMs);
    };
    EXPECT_EQ(restoreAnswering(true), kUnitFailed);
    EXPECT_EQ(written<v::Encoders>(), 0);
    EXPECT_TRUE(said.last().startsWith(
        QStringLiteral("Not written, the factory area is closed (give --factory-code): "
                       "factory/pan-encoder (file ")))
        << said.join('\n').toStdString();
    EXPECT_EQ(said.filter(QStringLiteral(" differs from the file in 1 value:")).size(), 1)
        << said.join('\n').toStdString();
    // With a setting beside it and asked whether to write it, the operator
    // says no: nothing is written.
    file.values["speeds/pan-ramp"] += 1;
    EXPECT_EQ(restoreAnswering(false), kUnitFailed);
    EXPECT_EQ(said.last(), QStringLiteral("Nothing was written."));
    EXPECT_TRUE(std::ranges::all_of(peer.messages(false), isRead));
}

TEST_F(WindowlessRestore, ALimitIsNotSetWhereverThePlatformIsWhenItCannotBeMovedThere) {
    // Once the move is sent the unit hears everything but the jog messages
    // that follow it.
    bool moveSent = false;
    deafTo([&moveSent](const Message_& m) {
        moveSent = moveSent || is<v::AbsoluteMove>(m);
        return moveSent && isJog(m);
    });
    EXPECT_FALSE(restore(farLimit()).verified());
    EXPECT_EQ(written<v::SoftLimit>(), 0);
}

// Lenses not driven to a preset's positions, because the unit answers no
// jog message or no lens move, or the operator cancels during the drive:
// the preset takes none.
TEST_F(WindowlessRestore, APresetTakesNoLensPositionsTheLensesWereNotDrivenTo) {
    const UnitSettings file = withPreset5Lenses({60, 70, 80, 90});
    for (const bool jogs : {true, false}) {
        SCOPED_TRACE(jogs ? "no jog message answered" : "no lens move answered");
        deafTo(jogs ? &isJog : &is<v::AbsoluteMoveWithLenses>);
        EXPECT_FALSE(restore(file).verified());
        EXPECT_FALSE(unit.state().presets.at(5).hasLens());
    }
    EXPECT_TRUE(restore(file, cancelOnceHeard(is<v::AbsoluteMoveWithLenses>)).cancelled);
    EXPECT_FALSE(unit.state().presets.at(5).hasLens());
}

// A tour the unit does not answer for: its steps are not appended to
// whatever the tour held, and the restore stops there. The clearing is
// answered only by a reply cut short and a late one that names another tour.
TEST_F(WindowlessRestore, ATourTheUnitDoesNotAnswerForStopsTheRestoreThere) {
    for (const bool clearing : {true, false}) {
        SCOPED_TRACE(clearing ? "clearing" : "appending");
        deafTo([this, clearing](const Message_& m) {
            if (clearing && is<v::ClearTour>(m)) {
                replyLater({v::TourCleared::kCode});
                replyLater(test::message<v::TourCleared>({{v::tour_cleared::kTour, 0}}));
            }
            return clearing ? is<v::ClearTour>(m) : is<v::AppendTourStep>(m);
        });
        const RestoreResult result = restore(withTour2(kOneStep));
        EXPECT_EQ(result.problem,
                  QStringLiteral("No reply from the unit to tour 2; the restore stopped there."));
        EXPECT_FALSE(result.finished);
        // A lost append has the whole tour written again: twice in all.
        EXPECT_EQ(written<v::AppendTourStep>(), clearing ? 0 : 2);
    }
}

// One append whose reply is lost: the tour is cleared and written again
// whole, and the restore goes on.
TEST_F(WindowlessRestore, ATourWithALostAppendReplyIsWrittenAgainWhole) {
    bool lost = false;
    deafTo([&lost](const Message_& m) {
        const bool drop = !lost && is<v::AppendTourStep>(m);
        lost = lost || drop;
        return drop;
    });
    const RestoreResult result = restore(withTour2(kTwoSteps));
    EXPECT_TRUE(result.verified()) << result.problem.toStdString();
    EXPECT_GE(written<v::ClearTour>(), 2);  // a clear may be asked twice
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
    EXPECT_EQ(written<v::StorePreset>(), 2);
    EXPECT_EQ(written<v::SoftLimit>(), 0);
}

// The soft limits and presets read again after new offsets: a question the
// unit does not answer stops the restore there.
TEST_F(WindowlessRestore, ASilentUnitAfterTheOffsetsAreWrittenStopsTheRestore) {
    for (const bool limits : {true, false}) {
        SCOPED_TRACE(limits ? "a soft limit" : "a preset");
        bool offsetsWritten = false;
        deafTo([&offsetsWritten, limits](const Message_& m) {
            offsetsWritten = offsetsWritten || is<v::SetAngleOffsets>(m);
            return offsetsWritten &&
                   (limits ? is<v::SoftLimit>(m) && isRead(m) : is<v::PresetRequest>(m));
        });
        EXPECT_EQ(restore(withPanOffsetMoved()).problem,
                  QStringLiteral("No reply from the unit to the soft limits and presets; the "
                                 "restore stopped there."));
    }
}

// Cancel as the last preset is stored: the restore ends there, with no
// tour written and nothing read back.
TEST_F(WindowlessRestore, CancelOnceThePresetsAreWrittenEndsTheRestoreThere) {
    const RestoreResult result = restore(withPanOffsetMoved(), cancelOnceHeard(is<v::StorePreset>));
    EXPECT_TRUE(result.cancelled);
    EXPECT_FALSE(result.finished);
    const std::vector<Message_> sent = peer.messages(false);
    EXPECT_TRUE(std::none_of(std::find_if(sent.begin(), sent.end(), is<v::StorePreset>), sent.end(),
                             is<v::TourStepCountRequest>));
}

// A lens drive longer than the still time: a lens has no moving bit, so the
// changing reading is what keeps the restore following it.
TEST_F(WindowlessRestore, ALensDriveLongerThanTheStillTimeIsFollowedToItsEnd) {
    sim::UnitState& state = unit.state();
    state.lenses.moveTo({1, 1, 1, 1}, state.settings);
    state.lenses.step(10.0);
    EXPECT_TRUE(restore(withPreset5Lenses({250, 250, 250, 250})).verified());
    EXPECT_EQ(state.presets.at(5).lens, (std::array<Byte, 4>{250, 250, 250, 250}));
}

// A unit whose tour holds fewer steps than the file's: the append it answers
// with no step ends the tour's writing, and the read-back names the tour as
// not taken, instead of the tour being written again.
TEST_F(WindowlessRestore, ATourTheUnitHasNoRoomForIsNamedAsNotTaken) {
    // A unit with room for one step only: it answers the second append with
    // no step, and holds one step when it is read back.
    int appends = 0;
    peer.onFrame = [&](const RecordingPeer::Frame& frame) {
        const bool full = is<v::AppendTourStep>(frame.message) && ++appends == 2;
        peer.setConnected(!full);
        if (full) {
            namespace t = v::tour_step;
            replyLater(test::withCode<v::AppendTourStep>(
                test::message<v::TourStep>({{t::kTour, 1}, {t::kStep, t::kNoStep}})));
        } else if (appends == 2 && unit.state().tours.size(1) == 2) {
            unit.state().tours.remove(1, 1);
        }
    };
    const RestoreResult result = restore(withTour2(kTwoSteps));
    EXPECT_TRUE(result.finished) << result.problem.toStdString();
    ASSERT_EQ(result.notTaken.size(), 1u);
    EXPECT_EQ(result.notTaken[0].label, "tours/2");
    EXPECT_EQ(written<v::ClearTour>(), 1);
    EXPECT_EQ(unit.state().tours.size(1), 1);
}

// A tour as long as a tour may be is read whole; a question about tour 2
// that goes unanswered is named.
TEST_F(WindowlessRestore, ReadingTakesAFullTourAndNamesWhatTheUnitDoesNotAnswer) {
    for (int step = 0; step < kMostTourSteps; ++step) {
        unit.state().tours.append(1, {static_cast<Byte>(step % 4 + 1), 5});
    }
    QStringList steps;
    Progress progress;
    progress.report = [&steps](const QString& step, int, int) { steps << step; };
    UnitRead read = readBack(progress);
    ASSERT_TRUE(read.settings.has_value()) << read.problem.toStdString();
    EXPECT_EQ(read.settings->tours[1].size(), static_cast<std::size_t>(kMostTourSteps));
    EXPECT_EQ(steps.filter(QStringLiteral(" tour ")),
              (QStringList{QStringLiteral("Reading tour 3"), QStringLiteral("Reading tour 2"),
                           QStringLiteral("Reading tour 1")}));

    // Cancelled among the tours: the read says so, and holds nothing.
    read = readBack(cancelOnceHeard(is<v::TourStepCountRequest>));
    EXPECT_TRUE(read.cancelled);
    EXPECT_FALSE(read.settings.has_value());

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
        deafTo(asked);
        read = readBack();
        EXPECT_FALSE(read.settings.has_value());
        EXPECT_EQ(read.problem,
                  QStringLiteral("No reply from the unit to the request for %1.").arg(named));
    }
}

// The progress counts a step for each command written: values that one
// command writes together are one step.
TEST_F(WindowlessRestore, CountsOneStepForEachCommandWritten) {
    UnitSettings file = withTour2(kOneStep);
    file.values["speeds/pan-ramp"] = 33;  // the two ramps: one command
    file.values["speeds/tilt-ramp"] = 44;
    file.values["housekeeping/heater"] = 2;
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
    UnitSettings file = withTour2(kOneStep);
    file.tours[0] = {Step::of(3, 0, 5, false)};
    const RestoreResult result = restore(file, cancelOnceHeard(is<v::AppendTourStep>));
    EXPECT_TRUE(result.cancelled);
    EXPECT_FALSE(result.finished);
    EXPECT_EQ(unit.state().tours.size(0), 1);
    EXPECT_EQ(unit.state().tours.size(1), 0);
}
