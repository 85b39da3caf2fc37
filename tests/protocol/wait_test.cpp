#include <gtest/gtest.h>

#include <QElapsedTimer>
#include <QTest>
#include <QTimer>
#include <memory>

#include "protocol/form_state.h"
#include "protocol/wait.h"
#include "tests/support/finish.h"

using namespace halvex;
using halvex::testing::finish;

namespace {
QCoro::Task<bool> waited(FormState& state, std::function<bool()> done, int timeoutMs = kNoTimeout,
                         QObject* owner = nullptr) {
    co_return co_await waitUntil(state, std::move(done), timeoutMs, owner);
}
}  // namespace

TEST(WaitUntil, GoesOnAfterTheEventThatEndedItWhileTimersKeepRunning) {
    FormState state;
    std::vector<QString> order;
    QTimer::singleShot(100, [&] {
        state.ReplyReceived = true;
        order.push_back(QStringLiteral("the handler that set the flag finished"));
    });
    int ticks = 0;
    QTimer other;
    other.callOnTimeout([&] { ++ticks; });
    other.start(20);

    QCoro::Task<bool> wait = waited(state, [&] { return static_cast<bool>(state.ReplyReceived); });
    EXPECT_FALSE(wait.isReady());
    EXPECT_EQ(waitCensus().running, 1);
    const bool held = finish([&]() -> QCoro::Task<bool> {
        const bool result = co_await std::move(wait);
        order.push_back(QStringLiteral("the wait went on"));
        co_return result;
    }());
    EXPECT_TRUE(held);
    EXPECT_EQ(order, (std::vector<QString>{QStringLiteral("the handler that set the flag finished"),
                                           QStringLiteral("the wait went on")}));
    EXPECT_EQ(waitCensus().running, 0);
    // Timers kept running during the wait.
    EXPECT_GE(ticks, 3);
}

TEST(WaitUntil, SaysWhetherTheConditionCameTrueOrTheTimeRanOut) {
    FormState state;
    state.ConnectTimedOut = true;
    const quint64 endedBefore = waitCensus().ended;
    EXPECT_TRUE(finish(waited(state, [&] { return static_cast<bool>(state.ConnectTimedOut); })));
    // Already true: no wait at all.
    EXPECT_EQ(waitCensus().ended, endedBefore);
    QElapsedTimer wall;
    for (const int timeoutMs : {0, 100}) {
        wall.restart();
        EXPECT_FALSE(finish(waited(
            state, [] { return false; }, timeoutMs)));
        EXPECT_GE(wall.elapsed(), timeoutMs - 5);
        EXPECT_LT(wall.elapsed(), timeoutMs + 500);
    }
    EXPECT_EQ(waitCensus().ended, endedBefore + 2);
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
