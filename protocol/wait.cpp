#include "protocol/wait.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QTimer>

#include "protocol/form_state.h"

namespace halvex {

bool waitUntil(FormState& state, const std::function<bool()>& done, int timeoutMs) {
    if (done()) {
        return true;
    }
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
