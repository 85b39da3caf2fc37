// A restore through a session's line to the virtual unit, with no window:
// what it writes, in what order, and how it ends when the unit does not
// answer, the operator cancels or something faults.

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
        const std::vector<Message_> sent = peer.messages();
        expectStoppedShortOfTheLimit(sent, unit);
        ASSERT_TRUE(isJog(sent.back()));
        EXPECT_FALSE(jogWith(sent.back(), v::jog::kSoftLimitOverride));
    }
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
