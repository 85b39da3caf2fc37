#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "protocol/form_state.h"
#include "protocol/receiver.h"

namespace halvex {

// Keeps the last good replies the receive path saw, numbered, for whoever
// asks the unit a question and looks for its answer among them. More than
// the last one is kept: a page that follows a reply may ask the unit
// something of its own (a cleared tour is loaded again) before the asker
// has looked.
class ReplyHistory {
  public:
    static constexpr std::size_t kKept = 256;
    using Fits = std::function<bool(const std::vector<Byte>& reply)>;

    // Starts keeping the replies `receiver` takes; once.
    void listenTo(FormState& state, Receiver& receiver);
    // Keeps one reply as if the receive path had taken it.
    void keep(const std::vector<Byte>& reply);

    // Replies seen so far.
    std::uint64_t count() const { return seen_->count; }
    // The first reply after the first `seen` that `fits`; code at [0], then
    // the payload.
    std::optional<std::vector<Byte>> firstSince(std::uint64_t seen, const Fits& fits) const;

  private:
    struct Seen {
        std::uint64_t count = 0;
        std::deque<std::vector<Byte>> last;  // the last kKept, oldest first
    };
    static void keepIn(Seen& seen, const std::vector<Byte>& reply);
    std::shared_ptr<Seen> seen_ = std::make_shared<Seen>();
};

}  // namespace halvex
