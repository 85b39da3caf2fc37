#pragma once

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QCoro/QCoroTask>
#include <QElapsedTimer>
#include <QTimer>
#include <exception>
#include <functional>
#include <optional>
#include <stdexcept>
#include <type_traits>

#include "protocol/wait.h"
#include "tests/support/run_until.h"

namespace halvex::testing {

// Lets the event loop run until `task` has finished and gives its result, or
// throws what it threw; a task still running after `timeoutMs` fails the
// test.
template <typename T>
T finish(QCoro::Task<T> task, int timeoutMs = 10000) {
    using Kept = std::conditional_t<std::is_void_v<T>, bool, T>;
    std::optional<Kept> result;
    std::exception_ptr error;
    bool done = false;
    // The awaiting coroutine takes everything as parameters: a lambda that
    // captured them would have to outlive it.
    static_cast<void>([](QCoro::Task<T> running, std::optional<Kept>& kept,
                         std::exception_ptr& thrown, bool& ended) -> QCoro::Task<> {
        try {
            if constexpr (std::is_void_v<T>) {
                co_await std::move(running);
                kept = true;
            } else {
                kept = co_await std::move(running);
            }
        } catch (...) {
            thrown = std::current_exception();
        }
        ended = true;
    }(std::move(task), result, error, done));
    const bool inTime = runUntil([&] { return done; }, timeoutMs);
    EXPECT_TRUE(inTime) << "still running after " << timeoutMs << " ms";
    if (error) {
        std::rethrow_exception(error);
    }
    if constexpr (std::is_default_constructible_v<T>) {
        return result ? std::move(*result) : T{};
    } else if constexpr (!std::is_void_v<T>) {
        if (!result) {
            throw std::runtime_error("the task did not finish");
        }
        return std::move(*result);
    }
}

// Lets the event loop run until no wait is left running: what a click
// started has finished.
inline bool settle(int timeoutMs = 10000) {
    return runUntil([] { return waitCensus().running == 0; }, timeoutMs);
}

}  // namespace halvex::testing
