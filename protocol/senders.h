#pragma once

#include <vector>

#include "protocol/form_state.h"
#include "protocol/link.h"

namespace halvex {

// The sender convention in one place: SendInProgress held, message into
// TxBuffer, SendFrame, SendInProgress let go (also when a range fault stops
// it). The ticket tells whether the frame went out.
FrameTicket sendMessage(FormState& state, Link& link, const std::vector<Byte>& message);

// Writes a message into TxBuffer and sends it, for senders that already hold
// SendInProgress across several frames.
FrameTicket sendHeld(FormState& state, Link& link, const std::vector<Byte>& message);

// Sends and waits for the reply; false when the frame did not go out or no
// reply came (the port closed, the watchdog gave up, the time-out passed).
bool sendAndAwaitReply(FormState& state, Link& link, const std::vector<Byte>& message);

}  // namespace halvex
