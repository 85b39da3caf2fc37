#include <gtest/gtest.h>

#include <QTest>
#include <memory>

#include "protocol/form_state.h"
#include "protocol/wait.h"
#include "tests/support/finish.h"

using namespace halvex;
using halvex::testing::finish;

namespace {
QCoro::Task<bool> waited(FormState& state, std::function<bool()> done, int timeoutMs = kNoTimeout) {
    co_return co_await waitUntil(state, std::move(done), timeoutMs);
}
}  // namespace

// How long a timed wait lasts is measured on the link's send grace
// (send_path_test.cpp); here the edges.
TEST(WaitUntil, SaysWhetherTheConditionCameTrueOrTheTimeRanOut) {
    FormState state;
    state.ConnectTimedOut = true;
    const quint64 endedBefore = waitCensus().ended;
    EXPECT_TRUE(finish(waited(state, [&] { return static_cast<bool>(state.ConnectTimedOut); })));
    // Already true: no wait at all.
    EXPECT_EQ(waitCensus().ended, endedBefore);
    EXPECT_FALSE(finish(waited(
        state, [] { return false; }, 0)));
    EXPECT_EQ(waitCensus().ended, endedBefore + 1);
}

TEST(WaitUntil, AWaitWhoseOwnerOrStateWentAwayIsNeverResumed) {
    // Resuming would run the rest of a handler whose objects are gone.
    for (const bool ownerGoes : {true, false}) {
        SCOPED_TRACE(ownerGoes ? "owner" : "form state");
        auto state = std::make_unique<FormState>();
        auto owner = std::make_unique<QObject>();
        bool resumed = false;
        FormState* watched = state.get();
        QCoro::Task<> wait = [](FormState& s, QObject* o, bool& r) -> QCoro::Task<> {
            co_await waitUntil(
                s, [&s] { return static_cast<bool>(s.ReplyReceived); }, 50, o);
            r = true;
        }(*watched, owner.get(), resumed);
        EXPECT_EQ(waitCensus().running, 1);
        if (ownerGoes) {
            state->ReplyReceived = true;  // the wake is on its way...
            owner.reset();                // ...and its owner goes first
        } else {
            state.reset();
        }
        QTest::qWait(80);  // past the time-out too
        EXPECT_FALSE(resumed);
        EXPECT_EQ(waitCensus().running, 0);
    }
}
