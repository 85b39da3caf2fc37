#include "commissioning/unit_line.h"

#include "protocol/senders.h"
#include "protocol/wait.h"

namespace halvex::commissioning {

ReplyTap::ReplyTap(FormState& state, Receiver& receiver) {
    receiver.addReplyWatcher([seen = seen_, &state](const std::vector<Byte>& reply) {
        seen->last = reply;
        ++seen->count;
        // Wakes a wait for it.
        state.notifyChanged();
    });
}

UnitLine::UnitLine(FormState& state, Link& link, const ReplyTap& tap, int watchdogMs)
    : state_(state),
      link_(link),
      tap_(tap),
      hold_(state),
      previousWatchdogMs_(link.Timer4().interval()) {
    link_.Timer4().setInterval(watchdogMs);
}

UnitLine::~UnitLine() {
    link_.Timer4().setInterval(previousWatchdogMs_);
}

std::optional<std::vector<Byte>> UnitLine::ask(const std::vector<Byte>& message, const Fits& fits,
                                               int attempts) {
    for (int attempt = 0; attempt < attempts && link_.portOpen(); ++attempt) {
        const std::uint64_t seen = tap_.count();
        const FrameTicket frame = sendHeld(state_, link_, message);
        if (!wentOut(frame)) {
            continue;
        }
        waitUntil(
            state_, [&] { return tap_.count() != seen || frame->unanswered || !link_.portOpen(); },
            link_.Timer4().interval() + kReplyGraceMs);
        const std::vector<Byte>& reply = tap_.last();
        if (tap_.count() != seen && !reply.empty() && reply.front() == message.front() &&
            (!fits || fits(reply))) {
            return reply;
        }
    }
    return std::nullopt;
}

std::vector<Byte> UnitLine::jogMessage(bool override, bool stop) const {
    Byte flags = state_.JogFlags & kOverrideBit;
    if (override) {
        flags |= kOverrideBit;
    }
    if (stop) {
        flags |= kStopBit;
    }
    return {0x31, flags, 0, 0, 0, 0, 0, 0};
}

}  // namespace halvex::commissioning
