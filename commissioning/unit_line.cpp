#include "commissioning/unit_line.h"

#include <algorithm>

#include "protocol/senders.h"
#include "protocol/vocabulary.h"
#include "protocol/wait.h"

namespace halvex::commissioning {

ReplyTap::ReplyTap(FormState& state, Receiver& receiver) {
    receiver.addReplyWatcher([seen = seen_, &state](const std::vector<Byte>& reply) {
        seen->last.push_back(reply);
        if (seen->last.size() > kKept) {
            seen->last.pop_front();
        }
        ++seen->count;
        // Wakes a wait for it.
        state.notifyChanged();
    });
}

std::optional<std::vector<Byte>> ReplyTap::firstSince(std::uint64_t seen, const Fits& fits) const {
    const std::uint64_t kept = seen_->last.size();
    const std::uint64_t oldest = seen_->count - kept;
    for (std::uint64_t number = std::max(seen, oldest); number < seen_->count; ++number) {
        const std::vector<Byte>& reply = seen_->last[number - oldest];
        if (fits(reply)) {
            return reply;
        }
    }
    return std::nullopt;
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

QCoro::Task<std::optional<std::vector<Byte>>> UnitLine::ask(std::vector<Byte> message, Fits fits,
                                                            int attempts) {
    for (int attempt = 0; attempt < attempts && link_.portOpen(); ++attempt) {
        const std::uint64_t seen = tap_.count();
        const FrameTicket frame = co_await sendHeld(state_, link_, message);
        if (!wentOut(frame)) {
            continue;
        }
        const auto answers = [&message, &fits](const std::vector<Byte>& reply) {
            return !reply.empty() && reply.front() == message.front() && (!fits || fits(reply));
        };
        std::optional<std::vector<Byte>> reply;
        co_await waitUntil(
            state_,
            [&] {
                reply = tap_.firstSince(seen, answers);
                return reply || frame->unanswered || !link_.portOpen();
            },
            link_.Timer4().interval() + kReplyGraceMs, &link_);
        reply = tap_.firstSince(seen, answers);
        if (reply) {
            co_return reply;
        }
    }
    co_return std::nullopt;
}

std::vector<Byte> UnitLine::jogMessage(bool override, bool stop) const {
    using namespace vocab;
    // The operator's override stays as it is unless this message asks for it.
    Byte flags = withBit(0, jog::kSoftLimitOverride,
                         override || isSet(state_.JogFlags, jog::kSoftLimitOverride));
    flags = withBit(flags, jog::kStop, stop);
    std::vector<Byte> message(JogMessage::kLength, 0);
    begin<JogMessage>(message);
    put(message, jog::kFlagsByte, flags);
    return message;
}

}  // namespace halvex::commissioning
