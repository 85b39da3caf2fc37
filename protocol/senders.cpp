#include "protocol/senders.h"

#include "protocol/wait.h"

namespace halvex {

void sendHeld(FormState& state, Link& link, const std::vector<Byte>& message) {
    for (std::size_t i = 0; i < message.size(); ++i) {
        state.TxBuffer[static_cast<int>(i)] = message[i];
    }
    link.SendFrame(static_cast<int>(message.size()));
}

void sendMessage(FormState& state, Link& link, const std::vector<Byte>& message) {
    SendInProgressScope sending(state);
    sendHeld(state, link, message);
}

void awaitReply(FormState& state) {
    state.ReplyReceived = false;
    waitUntil(state, [&state] { return static_cast<bool>(state.ReplyReceived); });
}

void awaitIdle(FormState& state) {
    waitUntil(state, [&state] { return !state.SendInProgress; });
}

}  // namespace halvex
