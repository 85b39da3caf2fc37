#include "protocol/wait.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QTimer>
#include <algorithm>
#include <vector>

#include "protocol/form_state.h"

namespace halvex {

namespace {
// Nested waits end in the reverse order of their start: a stack.
struct WaitRecord {
    std::vector<QElapsedTimer> running;
    quint64 ended = 0;
    qint64 longestMs = 0;
};

WaitRecord& waitRecord() {
    static WaitRecord record;
    return record;
}

class CountedWait {
  public:
    CountedWait() {
        QElapsedTimer started;
        started.start();
        waitRecord().running.push_back(started);
    }
    ~CountedWait() {
        WaitRecord& record = waitRecord();
        record.longestMs = std::max(record.longestMs, record.running.back().elapsed());
        record.running.pop_back();
        ++record.ended;
    }
    CountedWait(const CountedWait&) = delete;
    CountedWait& operator=(const CountedWait&) = delete;
};
}  // namespace

WaitCensus waitCensus() {
    const WaitRecord& record = waitRecord();
    WaitCensus census;
    census.ended = record.ended;
    census.longestMs = record.longestMs;
    census.running = static_cast<int>(record.running.size());
    if (!record.running.empty()) {
        census.oldestRunningMs = record.running.front().elapsed();
    }
    return census;
}

bool waitUntil(FormState& state, const std::function<bool()>& done, int timeoutMs) {
    if (done()) {
        return true;
    }
    const CountedWait counted;
    QEventLoop loop;
    const auto connection = QObject::connect(&state, &FormState::changed, &loop, [&] {
        if (done()) {
            loop.quit();
        }
    });
    // Also leave when the application is going away, so a wait never keeps
    // a closing program alive.
    QObject::connect(QCoreApplication::instance(), &QCoreApplication::aboutToQuit, &loop,
                     &QEventLoop::quit);
    QTimer deadline;
    if (timeoutMs >= 0) {
        deadline.setSingleShot(true);
        QObject::connect(&deadline, &QTimer::timeout, &loop, &QEventLoop::quit);
        deadline.start(timeoutMs);
    }
    loop.exec();
    QObject::disconnect(connection);
    return done();
}

void letEventsRun() {
    QCoreApplication::processEvents(QEventLoop::AllEvents);
}

}  // namespace halvex
