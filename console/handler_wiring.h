#pragma once

#include <QObject>
#include <type_traits>

#include "protocol/fault_guard.h"

namespace halvex {

// Calls the handler with the signal's arguments when it takes them. A function
// of its own: clang 14 instantiates both branches of an `if constexpr` inside
// a lambda nested in a generic lambda.
// A handler that waits returns its task, which must not keep references to
// the arguments: a coroutine handler takes them by value.
template <typename Handler, typename... Args>
decltype(auto) invokeHandler(const Handler& handler, const Args&... args) {
    if constexpr (std::is_invocable_v<const Handler&, const Args&...>) {
        return handler(args...);
    } else {
        return handler();
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
        guarded(state, name, [&] { return invokeHandler(handler, args...); });
    });
}

// Runs the member function `handler` of `owner` on every click of `button`,
// as onEvent() does.
template <typename Button, typename Owner, typename Handler>
QMetaObject::Connection onClick(FormState& state, Button* button, Owner* owner, const char* name,
                                Handler Owner::*handler) {
    return onEvent(state, button, &Button::clicked, owner, name,
                   [owner, handler] { return (owner->*handler)(); });
}

}  // namespace halvex
