#pragma once

#include <QCoro/QCoroTask>
#include <QString>
#include <functional>
#include <optional>
#include <vector>

#include "session/session.h"

namespace halvex::commissioning {

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

// The unit one question at a time, through the session's line: each request
// goes out on a tick like every page's, and its reply is taken from the
// session's reply history. While it lives it holds the line (no jog message comes
// between its frames) and the reply watchdog runs at `watchdogMs`; a
// coroutine that keeps it in its frame holds the line across its waits.
class UnitLine {
  public:
    static constexpr int kAttempts = 3;
    // Beyond the watchdog, for a reply that is still arriving.
    static constexpr int kReplyGraceMs = 250;

    explicit UnitLine(Session& session, int watchdogMs = Link::kWatchdogMs);
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
    const Session& session_;
    FormState& state_;
    Link& link_;
    const ReplyHistory& replies_;
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
