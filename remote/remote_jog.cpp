#include "remote/remote_jog.h"

#include "session/session.h"

namespace halvex {

RemoteJog::RemoteJog(Session& session, JogSource source, int refreshMs, QObject* parent)
    : QObject(parent), session_(session), source_(source), refreshMs_(refreshMs) {
    // Its timeout stops it, along with the jog.
    connect(&silence_, &QTimer::timeout, this, [this] {
        stop();
        emit timedOut();
    });
}

std::optional<Refusal> RemoteJog::drive(const JogDemand& demand) {
    if (!demand.moving()) {
        stop();
        return std::nullopt;
    }
    if (const auto refusal = session_.refusalFor(Requester::Program)) {
        return refusal;
    }
    if (!session_.jogSources().apply(source_, demand)) {
        return Refusal::OperatorJogging;
    }
    // Kept running even while another source steers: the jog may be
    // handed back to this one when that source lets go.
    moving_ = true;
    if (refreshMs_ > 0) {
        silence_.start(refreshMs_);
    }
    return std::nullopt;
}

void RemoteJog::stop() {
    silence_.stop();
    moving_ = false;
    session_.jogSources().release(source_);
}

}  // namespace halvex
