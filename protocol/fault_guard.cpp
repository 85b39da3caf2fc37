#include "protocol/fault_guard.h"

#include <QString>

#include "protocol/range_fault.h"

namespace halvex {

void reportStoppedHandler(FormState& state, const char* handler, const std::exception& error) {
    QString message;
    if (const auto* fault = dynamic_cast<const RangeFault*>(&error)) {
        message = QStringLiteral("Run-time error %1: %2 in %3")
                      .arg(fault->errorNumber())
                      .arg(QString::fromLatin1(fault->kindText()), QString::fromLatin1(handler));
    } else {
        message = QStringLiteral("Run-time error: %1 in %2")
                      .arg(QString::fromLocal8Bit(error.what()), QString::fromLatin1(handler));
    }
    state.reportFault(message);
}

QCoro::Task<> guardedRun(FormState& state, const char* handler, QCoro::Task<> running) {
    try {
        co_await std::move(running);
    } catch (const std::exception& error) {
        reportStoppedHandler(state, handler, error);
    }
}

void launch(FormState& state, const char* handler, QCoro::Task<> running) {
    // The watcher's own task is let go: it ends when the handler does.
    static_cast<void>(guardedRun(state, handler, std::move(running)));
}

}  // namespace halvex
