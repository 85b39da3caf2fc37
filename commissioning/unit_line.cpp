#include "commissioning/unit_line.h"

#include "protocol/senders.h"
#include "protocol/vocabulary.h"
#include "protocol/wait.h"

namespace halvex::commissioning {

UnitLine::UnitLine(Session& session, int watchdogMs)
    : session_(session),
      state_(session.state()),
      link_(session.link()),
      replies_(session.replies()),
      hold_(session.state()),
      previousWatchdogMs_(session.link().Timer4().interval()) {
    link_.Timer4().setInterval(watchdogMs);
}

UnitLine::~UnitLine() {
    link_.Timer4().setInterval(previousWatchdogMs_);
}

QCoro::Task<std::optional<std::vector<Byte>>> UnitLine::ask(std::vector<Byte> message, Fits fits,
                                                            int attempts) {
    for (int attempt = 0; attempt < attempts && link_.portOpen(); ++attempt) {
        const std::uint64_t seen = replies_.count();
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
                reply = replies_.firstSince(seen, answers);
                return reply || frame->unanswered || !link_.portOpen();
            },
            link_.Timer4().interval() + kReplyGraceMs, &link_);
        reply = replies_.firstSince(seen, answers);
        if (reply) {
            co_return reply;
        }
    }
    co_return std::nullopt;
}

std::vector<Byte> UnitLine::jogMessage(bool override, bool stop) const {
    using namespace vocab;
    // The operator's override stays as it is unless this message asks for it.
    Byte flags = withBit(0, jog::kSoftLimitOverride, override || session_.softLimitOverride());
    flags = withBit(flags, jog::kStop, stop);
    std::vector<Byte> message(JogMessage::kLength, 0);
    begin<JogMessage>(message);
    put(message, jog::kFlagsByte, flags);
    return message;
}

}  // namespace halvex::commissioning
