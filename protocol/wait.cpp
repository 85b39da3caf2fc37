#include "protocol/wait.h"

#include <QCoreApplication>
#include <QEventLoop>

#include "protocol/form_state.h"

namespace halvex {

void waitUntil(FormState& state, const std::function<bool()>& done) {
    if (done()) {
        return;
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
    loop.exec();
    QObject::disconnect(connection);
}

void letEventsRun() {
    QCoreApplication::processEvents(QEventLoop::AllEvents);
}

}  // namespace halvex
