#include "protocol/senders.h"

namespace halvex {

FrameTicket sendHeld(FormState& state, Link& link, const std::vector<Byte>& message) {
    for (std::size_t i = 0; i < message.size(); ++i) {
        state.TxBuffer[static_cast<int>(i)] = message[i];
    }
    return link.SendFrame(static_cast<int>(message.size()));
}

FrameTicket sendMessage(FormState& state, Link& link, const std::vector<Byte>& message) {
    SendInProgressScope sending(state);
    return sendHeld(state, link, message);
}

bool sendAndAwaitReply(FormState& state, Link& link, const std::vector<Byte>& message) {
    return link.awaitReply(sendMessage(state, link, message));
}

}  // namespace halvex
