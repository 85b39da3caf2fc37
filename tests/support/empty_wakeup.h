#pragma once

#include <QCoreApplication>
#include <QEvent>
#include <QSocketNotifier>
#include <cerrno>

namespace halvex::testing {

// Makes the serial library's read notifier under `port` fire although nothing
// is waiting, as it does when something else has read the bytes it was woken
// for: the read finds nothing and, with EAGAIN left in errno, the library
// reports a resource error and stops listening to the device. True when a
// read notifier was found.
inline bool raiseEmptyWakeup(QObject& port) {
    bool found = false;
    for (QSocketNotifier* notifier : port.findChildren<QSocketNotifier*>()) {
        if (notifier->type() != QSocketNotifier::Read || !notifier->isEnabled()) {
            continue;
        }
        found = true;
        errno = EAGAIN;
        QEvent wakeup(QEvent::SockAct);
        QCoreApplication::sendEvent(notifier, &wakeup);
    }
    return found;
}

}  // namespace halvex::testing
