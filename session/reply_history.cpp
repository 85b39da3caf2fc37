#include "session/reply_history.h"

#include <algorithm>

namespace halvex {

void ReplyHistory::listenTo(FormState& state, Receiver& receiver) {
    receiver.addReplyWatcher([seen = seen_, &state](const std::vector<Byte>& reply) {
        keepIn(*seen, reply);
        // Wakes a wait for it.
        state.notifyChanged();
    });
}

void ReplyHistory::keep(const std::vector<Byte>& reply) {
    keepIn(*seen_, reply);
}

void ReplyHistory::keepIn(Seen& seen, const std::vector<Byte>& reply) {
    seen.last.push_back(reply);
    if (seen.last.size() > kKept) {
        seen.last.pop_front();
    }
    ++seen.count;
}

std::optional<std::vector<Byte>> ReplyHistory::firstSince(std::uint64_t seen,
                                                          const Fits& fits) const {
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

}  // namespace halvex
