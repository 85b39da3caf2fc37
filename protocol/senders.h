#pragma once

#include <vector>

#include "protocol/form_state.h"
#include "protocol/link.h"

namespace halvex {

// The sender convention in one place: SendInProgress up, message into
// TxBuffer, SendFrame, SendInProgress down (also when a range fault stops it).
void sendMessage(FormState& state, Link& link, const std::vector<Byte>& message);

// Writes a message into TxBuffer and sends it, for senders that already hold
// SendInProgress across several frames.
void sendHeld(FormState& state, Link& link, const std::vector<Byte>& message);

// Clears ReplyReceived and sleeps until the receive path sets it again.
void awaitReply(FormState& state);

// Sleeps until no send is in progress.
void awaitIdle(FormState& state);

}  // namespace halvex
