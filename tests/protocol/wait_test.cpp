#include <gtest/gtest.h>
#include <sys/resource.h>

#include <QElapsedTimer>
#include <QTimer>

#include "protocol/form_state.h"
#include "protocol/wait.h"

using namespace halvex;

namespace {
double processCpuSeconds() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return static_cast<double>(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) +
           static_cast<double>(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) / 1e6;
}
}  // namespace

TEST(WaitUntil, SleepsWhileWaitingAndWakesWhenTheFlagIsSet) {
    FormState state;
    QTimer::singleShot(1000, [&] { state.ReplyReceived = true; });
    int ticks = 0;
    QTimer other;
    other.setInterval(100);
    QObject::connect(&other, &QTimer::timeout, [&] { ++ticks; });
    other.start();

    QElapsedTimer wall;
    wall.start();
    const double cpuBefore = processCpuSeconds();
    waitUntil(state, [&] { return static_cast<bool>(state.ReplyReceived); });
    const double cpu = processCpuSeconds() - cpuBefore;
    const double seconds = static_cast<double>(wall.elapsed()) / 1000.0;

    EXPECT_GE(seconds, 0.95);
    EXPECT_LT(seconds, 1.5);
    // A spinning wait would burn close to a whole second of CPU.
    EXPECT_LT(cpu, 0.1 * seconds);
    // Timers kept running during the wait.
    EXPECT_GE(ticks, 8);
}

TEST(WaitUntil, SaysWhetherTheConditionCameTrueOrTheTimeRanOut) {
    FormState state;
    state.ConnectTimedOut = true;
    QElapsedTimer wall;
    wall.start();
    EXPECT_TRUE(waitUntil(state, [&] { return static_cast<bool>(state.ConnectTimedOut); }));
    EXPECT_LT(wall.elapsed(), 50);
    for (const int timeoutMs : {0, 100}) {
        wall.restart();
        EXPECT_FALSE(waitUntil(
            state, [] { return false; }, timeoutMs));
        EXPECT_GE(wall.elapsed(), timeoutMs - 5);
        EXPECT_LT(wall.elapsed(), timeoutMs + 500);
    }
}
