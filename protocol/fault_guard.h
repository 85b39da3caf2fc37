#pragma once

#include <QCoro/QCoroTask>
#include <exception>
#include <type_traits>
#include <utility>

#include "protocol/form_state.h"

namespace halvex {

// Shows an exception that stopped the handler `handler` (status bar, stderr).
void reportStoppedHandler(FormState& state, const char* handler, const std::exception& error);

// Completes when a handler that waits (a coroutine) has; a fault that stops
// it, before or after a wait, is reported as guarded() does.
QCoro::Task<> guardedRun(FormState& state, const char* handler, QCoro::Task<> running);

// The same, let run to its end on its own.
void launch(FormState& state, const char* handler, QCoro::Task<> running);

// Runs one event handler. A range fault (or any other exception) stops that
// handler only: whatever it was about to send is not sent, scoped flags are
// put back by their destructors, and the program goes on. A handler that
// waits returns its task, and goes on after this returns.
template <typename Handler>
void guarded(FormState& state, const char* handler, Handler&& body) {
    try {
        if constexpr (std::is_same_v<std::invoke_result_t<Handler>, QCoro::Task<>>) {
            launch(state, handler, std::forward<Handler>(body)());
        } else {
            std::forward<Handler>(body)();
        }
    } catch (const std::exception& error) {
        reportStoppedHandler(state, handler, error);
    }
}

}  // namespace halvex
