#pragma once

#include <vector>

#include "protocol/form_state.h"
#include "protocol/link.h"

namespace halvex {

// The sender convention in one place: message into TxBuffer, SendFrame. The
// ticket tells whether the frame went out. The frame is queued before this
// returns, so a caller that does not co_await it has sent it all the same.
QCoro::Task<FrameTicket> sendMessage(FormState& state, Link& link,
                                     const std::vector<Byte>& message);

// The same, for senders that hold SendInProgress across several frames.
QCoro::Task<FrameTicket> sendHeld(FormState& state, Link& link, const std::vector<Byte>& message);

// Sends and waits for the reply; false when the frame did not go out or no
// reply came (the port closed, the watchdog gave up, the time-out passed).
QCoro::Task<bool> sendAndAwaitReply(FormState& state, Link& link, std::vector<Byte> message);

}  // namespace halvex
