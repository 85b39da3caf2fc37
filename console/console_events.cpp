#include "console/console_events.h"

#include "protocol/fault_guard.h"

namespace halvex {

void AwaitedRequest::answerWith(FormState& state, const char* handler,
                                std::function<QCoro::Task<>()> answer) {
    state_ = &state;
    handler_ = handler;
    answer_ = std::move(answer);
}

QCoro::Task<> AwaitedRequest::operator()() const {
    if (!answer_) {
        co_return;
    }
    try {
        co_await answer_();
    } catch (const std::exception& error) {
        reportStoppedHandler(*state_, handler_, error);
    }
}

}  // namespace halvex
