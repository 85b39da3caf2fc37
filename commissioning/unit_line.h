#pragma once

#include <QCoro/QCoroTask>
#include <QString>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "protocol/form_state.h"
#include "protocol/link.h"
#include "protocol/receiver.h"

namespace halvex::commissioning {

// Keeps the last good replies the receive path saw, numbered. Made once for
// a receiver and kept as long as it is. More than the last one is kept: a
// page that follows a reply may ask the unit something of its own (a
// cleared tour is loaded again) before the asker has looked.
class ReplyTap {
  public:
    static constexpr std::size_t kKept = 256;
    using Fits = std::function<bool(const std::vector<Byte>& reply)>;

    ReplyTap(FormState& state, Receiver& receiver);

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
    std::shared_ptr<Seen> seen_ = std::make_shared<Seen>();
};

// How a long job shows how far it is and learns that the operator gave up.
struct Progress {
    std::function<void(const QString& step, int done, int total)> report;
    std::function<bool()> cancelled;

    void show(const QString& step, int done, int total) const {
        if (report) {
            report(step, done, total);
        }
    }
    bool stopped() const { return cancelled && cancelled(); }
};

// The unit one question at a time, through the console's own link: each
// request goes out on a tick like every page's, and its reply is taken from
// the receive path. While it lives it holds the line (no jog message comes
// between its frames) and the reply watchdog runs at `watchdogMs`; a
// coroutine that keeps it in its frame holds the line across its waits.
class UnitLine {
  public:
    static constexpr int kAttempts = 3;
    // Beyond the watchdog, for a reply that is still arriving.
    static constexpr int kReplyGraceMs = 250;

    UnitLine(FormState& state, Link& link, const ReplyTap& tap, int watchdogMs = Link::kWatchdogMs);
    ~UnitLine();
    UnitLine(const UnitLine&) = delete;
    UnitLine& operator=(const UnitLine&) = delete;

    // Whether a reply with the right code answers the question asked (a
    // preset reply names its preset, a soft-limit reply its limit).
    using Fits = std::function<bool(const std::vector<Byte>& reply)>;

    // The reply to `message` (code at [0]), asking up to `attempts` times
    // when none comes, another code answers or it does not fit; nothing when
    // the unit stays silent or the port closes. The line must outlive the
    // question (its caller co_awaits it).
    QCoro::Task<std::optional<std::vector<Byte>>> ask(std::vector<Byte> message, Fits fits = {},
                                                      int attempts = kAttempts);

    // A jog message that moves nothing (speeds 0), with the operator's soft
    // limit override unless `override` forces it on; `stop` adds the stop bit.
    std::vector<Byte> jogMessage(bool override, bool stop = false) const;

    bool portOpen() const { return link_.portOpen(); }
    FormState& state() { return state_; }
    // The address the console talks to.
    Byte unitId() const { return state_.UnitId; }

  private:
    FormState& state_;
    Link& link_;
    const ReplyTap& tap_;
    SendInProgressScope hold_;
    int previousWatchdogMs_;
};

// Talks to `address` for the life of the scope (the reply check starts from
// it too), then to the address before.
class AddressScope {
  public:
    AddressScope(FormState& state, Byte address) : state_(state), previous_(state.UnitId) {
        state_.UnitId = address;
    }
    ~AddressScope() { state_.UnitId = previous_; }
    AddressScope(const AddressScope&) = delete;
    AddressScope& operator=(const AddressScope&) = delete;

  private:
    FormState& state_;
    Byte previous_;
};

}  // namespace halvex::commissioning
