#include "protocol/senders.h"

namespace halvex {

QCoro::Task<FrameTicket> sendHeld(FormState& state, Link& link, const std::vector<Byte>& message) {
    for (std::size_t i = 0; i < message.size(); ++i) {
        state.TxBuffer[static_cast<int>(i)] = message[i];
    }
    // Not a coroutine itself: the message is copied out before this returns,
    // so a caller may pass a temporary.
    return link.SendFrame(static_cast<int>(message.size()));
}

QCoro::Task<FrameTicket> sendMessage(FormState& state, Link& link,
                                     const std::vector<Byte>& message) {
    return sendHeld(state, link, message);
}

QCoro::Task<bool> sendAndAwaitReply(FormState& state, Link& link, std::vector<Byte> message) {
    const FrameTicket frame = co_await sendMessage(state, link, message);
    co_return co_await link.awaitReply(frame);
}

}  // namespace halvex
