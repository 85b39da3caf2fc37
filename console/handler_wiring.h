#pragma once

#include <QObject>
#include <type_traits>

#include "protocol/fault_guard.h"

namespace halvex {

// Calls the handler with the signal's arguments when it takes them. A function
// of its own: clang 14 instantiates both branches of an `if constexpr` inside
// a lambda nested in a generic lambda.
template <typename Handler, typename... Args>
void invokeHandler(const Handler& handler, const Args&... args) {
    if constexpr (std::is_invocable_v<const Handler&, const Args&...>) {
        handler(args...);
    } else {
        handler();
    }
}

// Runs `handler` on every `signal` of `sender`, under the range-fault guard
// and by the name the operator documentation gives it ("AbsoBut_Click"), so
// a fault report names the handler. The handler may take the signal's
// arguments or none.
template <typename Sender, typename Signal, typename Handler>
QMetaObject::Connection onEvent(FormState& state, Sender* sender, Signal signal, QObject* receiver,
                                const char* name, Handler handler) {
    return QObject::connect(sender, signal, receiver, [&state, name, handler](const auto&... args) {
        guarded(state, name, [&] { invokeHandler(handler, args...); });
    });
}

}  // namespace halvex
