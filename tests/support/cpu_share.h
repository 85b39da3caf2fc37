#pragma once

#include <QTest>

#include <ctime>

// The share of one core this process used while its event loop ran for the
// given time. A console that polls a lost port in a loop uses most of a core;
// one that sleeps between its once-a-second looks uses almost none. The limit
// the tests use sits far from both, so that a sanitizer build on a busy
// machine, with an in-process unit answering too, does not trip it.
inline double cpuShareWhileWaiting(int milliseconds) {
    const std::clock_t before = std::clock();
    QTest::qWait(milliseconds);
    return static_cast<double>(std::clock() - before) / CLOCKS_PER_SEC / (milliseconds / 1000.0);
}

inline constexpr double kSpinningCpuShare = 0.10;
