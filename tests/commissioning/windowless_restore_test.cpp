// A restore through a session's line to the virtual unit, with no window:
// how it ends when the operator cancels or something faults during a move.

#include <gtest/gtest.h>

#include <stdexcept>

#include "commissioning/unit_reader.h"
#include "session/session.h"
#include "tests/commissioning/commissioning_rig.h"

using namespace halvex;
using namespace halvex::commissioning;
using namespace halvex::testing;

namespace {

constexpr int kLongestJobMs = CommissioningRig::kLongestJobMs;

// A restore with no window: a session's line to the virtual unit, and what
// the unit held before, read through that line.
class WindowlessRestore : public ::testing::Test {
  protected:
    void SetUp() override {
        ASSERT_TRUE(line.open(QStringLiteral("COM1"), 9600));
        const UnitRead read = finish(readUnit(asking, {}), kLongestJobMs);
        ASSERT_TRUE(read.settings.has_value()) << read.problem.toStdString();
        before = *read.settings;
    }
    // The line's record holds the restore's frames alone; afterwards the
    // unit hears everything again.
    RestoreResult restore(const UnitSettings& file, Progress progress = {}) {
        peer.clear();
        RestoreResult result =
            finish(restoreUnit(asking, planRestore(file, before, false), std::move(progress)),
                   kLongestJobMs);
        hearAll();
        return result;
    }
    void hearAll() {
        peer.onFrame = nullptr;
        peer.setConnected(true);
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
    // The pan soft limit a few seconds' drive away.
    UnitSettings farLimit() const {
        UnitSettings file = before;
        file.values["soft-limits/cw"] = 9000;
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

}  // namespace

// Cancelled, or a fault while the restore follows a move: the platform is
// told to stop either way, and the fault comes out of the restore.
TEST_F(WindowlessRestore, ACancelOrAFaultDuringAMoveStillStopsThePlatform) {
    for (const bool fault : {false, true}) {
        SCOPED_TRACE(fault ? "a fault" : "cancelled");
        heard_ = false;
        Progress progress = cancelOnceHeard(is<v::AbsoluteMove>);
        if (fault) {
            progress.cancelled = [moving = progress.cancelled]() -> bool {
                if (moving()) {
                    throw std::runtime_error("a fault while following the move");
                }
                return false;
            };
        }
        try {
            EXPECT_TRUE(restore(farLimit(), progress).cancelled);
            EXPECT_FALSE(fault) << "the fault did not come out of the restore";
        } catch (const std::runtime_error& thrown) {
            EXPECT_TRUE(fault);
            EXPECT_STREQ(thrown.what(), "a fault while following the move");
        }
        hearAll();
        // Told to stop once, the override off, no limit set, and short of it.
        const std::vector<Message_> sent = peer.messages();
        const auto move = std::find_if(sent.begin(), sent.end(), is<v::AbsoluteMove>);
        ASSERT_NE(move, sent.end());
        EXPECT_EQ(std::count_if(move, sent.end(),
                                [](const Message_& m) { return jogWith(m, v::jog::kStop); }),
                  1);
        EXPECT_EQ(std::count_if(move, sent.end(), is<v::SoftLimit>), 0);
        EXPECT_FALSE(unit.state().motion.overrideOn());
        ASSERT_TRUE(ConsoleRig::waitFor([&] { return !unit.state().motion.moving(); }, 3000));
        EXPECT_LT(unit.state().motion.mechanicalPan(), 9000);
    }
}

// Cancelled on the way back to where it started, the limit written: the
// restore still ends as cancelled.
TEST_F(WindowlessRestore, ACancelOnTheWayBackStillEndsAsCancelled) {
    Progress progress;
    progress.cancelled = [this] {
        return std::ranges::count_if(peer.messages(), is<v::AbsoluteMove>) >= 2;
    };
    EXPECT_TRUE(restore(farLimit(), progress).cancelled);
}

// Cancelled while a preset's lenses are set: the restore ends as cancelled.
TEST_F(WindowlessRestore, ACancelDuringAPresetsLensesEndsAsCancelled) {
    UnitSettings file = before;
    file.presets[3] = {1000, 500, {10, 20, 30, 40}};
    EXPECT_TRUE(restore(file, cancelOnceHeard(is<v::StorePreset>)).cancelled);
}
