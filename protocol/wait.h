#pragma once

#include <QtGlobal>
#include <functional>

namespace halvex {

class FormState;

constexpr int kNoTimeout = -1;

// Lets window, timer and port events run until done() holds or timeoutMs
// has passed. Sleeps in a nested event loop that the form state wakes
// whenever one of its flags is written; it never spins. Returns done().
bool waitUntil(FormState& state, const std::function<bool()>& done, int timeoutMs = kNoTimeout);

// Lets the events that are already pending run once (a "DoEvents").
void letEventsRun();

// How the waits have gone since the program started, for long runs that
// must show that every wait ended.
struct WaitCensus {
    quint64 ended = 0;
    qint64 longestMs = 0;
    // Waits still running, and how long the oldest of them has been.
    int running = 0;
    qint64 oldestRunningMs = 0;
};
WaitCensus waitCensus();

}  // namespace halvex
