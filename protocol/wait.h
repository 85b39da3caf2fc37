#pragma once

#include <QCoro/QCoroTask>
#include <QElapsedTimer>
#include <QObject>
#include <QTimer>
#include <coroutine>
#include <functional>
#include <list>
#include <memory>

namespace halvex {

class FormState;

constexpr int kNoTimeout = -1;

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

// The state of one wait: its connections, its time-out and its place in the
// census (below).
class PendingWait {
  public:
    PendingWait(FormState& state, std::function<bool()> done, int timeoutMs, QObject* owner);
    ~PendingWait();
    PendingWait(const PendingWait&) = delete;
    PendingWait& operator=(const PendingWait&) = delete;

    bool ready() const { return done_ && done_(); }
    void suspend(std::coroutine_handle<> waiting);
    bool resume();

  private:
    void check();
    void wake();
    void abandon();
    void disconnectAll();

    FormState& state_;
    QObject* owner_;
    std::function<bool()> done_;
    int timeoutMs_;
    std::coroutine_handle<> waiting_;
    QMetaObject::Connection changed_;
    QMetaObject::Connection stateGone_;
    QMetaObject::Connection ownerGone_;
    QTimer deadline_;
    bool woken_ = false;
    bool abandoned_ = false;
    bool counted_ = false;
    std::list<QElapsedTimer>::iterator census_;
};

// What a coroutine awaits while the one event loop goes on: clicks, timers
// and port events run meanwhile, and no second loop is ever started. It is
// resumed from the event loop, never from inside the event that ended the
// wait, so the handler that ended it finishes first.
//
// A wait belongs to the form state and, when given, to an owner: if either
// goes away first, the coroutine is never resumed (it would find its objects
// gone); its frame is left to the end of the program.
class StateWait {
  public:
    // Until `done` holds (tested whenever the form state changes) or
    // `timeoutMs` has passed; resumes with done(). A `done` that is null
    // never holds: the wait is for the next turn of the event loop.
    StateWait(FormState& state, std::function<bool()> done, int timeoutMs, QObject* owner = nullptr)
        : wait_(std::make_unique<PendingWait>(state, std::move(done), timeoutMs, owner)) {}

    bool await_ready() const { return wait_->ready(); }
    void await_suspend(std::coroutine_handle<> waiting) { wait_->suspend(waiting); }
    bool await_resume() { return wait_->resume(); }

  private:
    // Where the timer and connections live: it stays put while the awaiter
    // itself may be moved into the coroutine's frame.
    std::unique_ptr<PendingWait> wait_;
};

// Two rules for every coroutine in the program, for GCC 12's sake:
// - A lambda written inside a co_await expression captures by reference
//   only: GCC 12 destroys it twice, which a capture by value (a shared
//   pointer's count) does not survive.
// - A co_await is never itself the condition of an if, && or ||: its result
//   goes into a local first. There GCC 12 can resume a frame that is gone.
// - `co_return member_;` moves the member out under GCC 12, as if it were a
//   local: a coroutine that hands back what an object keeps returns a copy
//   it made itself.

// Suspends the calling coroutine until `done` holds or `timeoutMs` has
// passed; co_await gives done().
inline StateWait waitUntil(FormState& state, std::function<bool()> done, int timeoutMs = kNoTimeout,
                           QObject* owner = nullptr) {
    return StateWait(state, std::move(done), timeoutMs, owner);
}

// Lets the events already pending run (a caption repaints) before the
// calling coroutine goes on.
inline StateWait letEventsRun(FormState& state) {
    return StateWait(state, nullptr, 0);
}

}  // namespace halvex
