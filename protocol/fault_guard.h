#pragma once

#include <exception>
#include <utility>

#include "protocol/form_state.h"

namespace halvex {

// Shows an exception that stopped the handler `handler` (status bar, stderr).
void reportStoppedHandler(FormState& state, const char* handler, const std::exception& error);

// Runs one event handler. A range fault (or any other exception) stops that
// handler only: whatever it was about to send is not sent, scoped flags are
// put back by their destructors, and the program goes on.
template <typename Handler>
void guarded(FormState& state, const char* handler, Handler&& body) {
    try {
        std::forward<Handler>(body)();
    } catch (const std::exception& error) {
        reportStoppedHandler(state, handler, error);
    }
}

}  // namespace halvex
