#pragma once

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QTimer>
#include <functional>

namespace halvex::testing {

// Handles events as they come until `done` holds or `timeoutMs` has passed,
// and stops as soon as it holds: no batch of later events (a tick, its
// reply) runs after it, as it would with a poll that sleeps between looks.
inline bool runUntil(const std::function<bool()>& done, int timeoutMs) {
    QElapsedTimer clock;
    clock.start();
    QTimer deadline;  // wakes the loop when nothing else would
    deadline.setSingleShot(true);
    deadline.setTimerType(Qt::PreciseTimer);
    while (!done()) {
        const qint64 left = timeoutMs - clock.elapsed();
        if (left <= 0) {
            return false;
        }
        // A timer may fire a little early: armed again for what is left, or
        // the loop would wait for an event that never comes.
        if (!deadline.isActive()) {
            deadline.start(static_cast<int>(left));
        }
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    return true;
}

}  // namespace halvex::testing
