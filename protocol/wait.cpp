#include "protocol/wait.h"

#include <algorithm>

#include "protocol/form_state.h"

namespace halvex {

namespace {
// Waits may end in any order: each keeps its own place in the list.
struct WaitRecord {
    std::list<QElapsedTimer> running;
    quint64 ended = 0;
    qint64 longestMs = 0;
};

WaitRecord& waitRecord() {
    static WaitRecord record;
    return record;
}
}  // namespace

WaitCensus waitCensus() {
    const WaitRecord& record = waitRecord();
    WaitCensus census;
    census.ended = record.ended;
    census.longestMs = record.longestMs;
    census.running = static_cast<int>(record.running.size());
    for (const QElapsedTimer& started : record.running) {
        census.oldestRunningMs = std::max(census.oldestRunningMs, started.elapsed());
    }
    return census;
}

PendingWait::PendingWait(FormState& state, std::function<bool()> done, int timeoutMs,
                         QObject* owner)
    : state_(state), owner_(owner), done_(std::move(done)), timeoutMs_(timeoutMs) {
    deadline_.setSingleShot(true);
}

PendingWait::~PendingWait() {
    disconnectAll();
    if (counted_) {
        waitRecord().running.erase(census_);
    }
}

void PendingWait::suspend(std::coroutine_handle<> waiting) {
    waiting_ = waiting;
    QElapsedTimer started;
    started.start();
    WaitRecord& record = waitRecord();
    census_ = record.running.insert(record.running.end(), started);
    counted_ = true;

    stateGone_ = QObject::connect(&state_, &QObject::destroyed, [this] { abandon(); });
    if (owner_ != nullptr) {
        ownerGone_ = QObject::connect(owner_, &QObject::destroyed, [this] { abandon(); });
    }
    if (!done_) {
        wake();  // the next turn of the loop
        return;
    }
    changed_ = QObject::connect(&state_, &FormState::changed, [this] { check(); });
    if (timeoutMs_ >= 0) {
        QObject::connect(&deadline_, &QTimer::timeout, [this] { wake(); });
        deadline_.start(timeoutMs_);
    }
}

bool PendingWait::resume() {
    if (counted_) {
        WaitRecord& record = waitRecord();
        record.longestMs = std::max(record.longestMs, census_->elapsed());
        record.running.erase(census_);
        ++record.ended;
        counted_ = false;
    }
    return done_ && done_();
}

void PendingWait::check() {
    if (done_()) {
        wake();
    }
}

void PendingWait::wake() {
    if (woken_) {
        return;
    }
    woken_ = true;
    QObject::disconnect(changed_);
    deadline_.stop();
    // Queued on the form state: dropped with it if it goes first.
    QMetaObject::invokeMethod(
        &state_,
        [this] {
            if (!abandoned_) {
                waiting_.resume();
            }
        },
        Qt::QueuedConnection);
}

void PendingWait::abandon() {
    woken_ = true;
    abandoned_ = true;
    disconnectAll();
    // Nobody will see it end; it no longer counts as running.
    if (counted_) {
        waitRecord().running.erase(census_);
        counted_ = false;
    }
}

void PendingWait::disconnectAll() {
    deadline_.stop();
    QObject::disconnect(changed_);
    QObject::disconnect(stateGone_);
    QObject::disconnect(ownerGone_);
}

}  // namespace halvex
