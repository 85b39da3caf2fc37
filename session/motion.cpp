// The session's moves, Stop and Reset.
#include <cmath>

#include "protocol/senders.h"
#include "protocol/vocabulary.h"
#include "session/position_encoding.h"
#include "session/session.h"

namespace halvex {

namespace {
// Limits arrive as floats in hundredths; half a hundredth absorbs the float.
constexpr double kLimitSlack = 0.005;

bool within(double value, float lower, float upper) {
    return value >= static_cast<double>(lower) - kLimitSlack &&
           value <= static_cast<double>(upper) + kLimitSlack;
}

// A target's pan and tilt into a move's fields, both encoded before the
// buffer is touched, so that a value that cannot be sent sends nothing.
template <class M>
void putTarget(ByteTable& tx, vocab::Field<M> pan, vocab::Field<M> tilt,
               const PanTiltTarget& target) {
    const std::int32_t panValue = target.holdPan ? kHoldAxis : encodePosition(target.pan);
    const std::int32_t tiltValue = target.holdTilt ? kHoldAxis : encodePosition(target.tilt);
    putPosition(tx, pan, panValue);
    putPosition(tx, tilt, tiltValue);
}
}  // namespace

bool Session::withinSoftLimits(double pan, double tilt) const {
    const bool panInside =
        status_.PanContinuous || within(pan, status_.PanMinLimit, status_.PanMaxLimit);
    return panInside && within(tilt, status_.TiltMinLimit, status_.TiltMaxLimit);
}

std::optional<Refusal> Session::refusalFor(Requester requester, const PanTiltTarget* target) const {
    if (!online()) {
        return Refusal::Offline;
    }
    if (pagesLocked()) {
        return Refusal::PagesLocked;
    }
    if (requester == Requester::Operator) {
        return std::nullopt;
    }
    if (procedureRunning_) {
        return Refusal::UnitBusy;
    }
    if (jogSources_.operatorJogging()) {
        return Refusal::OperatorJogging;
    }
    if (target != nullptr &&
        !withinSoftLimits(target->holdPan ? status_.CurrentPan : target->pan,
                          target->holdTilt ? status_.CurrentTilt : target->tilt)) {
        return Refusal::OutsideLimits;
    }
    return std::nullopt;
}

std::optional<Refusal> Session::programRefusal(Requester requester,
                                               const PanTiltTarget* target) const {
    if (requester == Requester::Operator) {
        return std::nullopt;
    }
    return refusalFor(requester, target);
}

QCoro::Task<Outcome> Session::awaitAnswer(QCoro::Task<FrameTicket> sending) {
    const FrameTicket frame = co_await std::move(sending);
    const bool answered = co_await link_.awaitReply(frame);
    co_return answered ? Outcome::done(lastReply_) : Outcome::noReply();
}

QCoro::Task<Outcome> Session::exchange(Requester requester,
                                       std::function<std::vector<Byte>()> build) {
    if (const auto refusal = programRefusal(requester)) {
        co_return Outcome::refused(*refusal);
    }
    std::vector<Byte> message;
    try {
        message = build();
    } catch (const RangeFault& fault) {
        co_return Outcome::rangeFault(fault);
    }
    co_return co_await awaitAnswer(sendMessage(state_, link_, message));
}

QCoro::Task<Outcome> Session::moveTo(PanTiltTarget target, Requester requester) {
    // A frame that cannot go out is reported by the send path.
    if (const auto refusal = programRefusal(requester, &target)) {
        co_return Outcome::refused(*refusal);
    }
    namespace m = vocab::absolute_move;
    // Started apart from the co_await: see protocol/wait.h on GCC 12.
    auto moving = sendMove<vocab::AbsoluteMove>(
        [target](ByteTable& tx) { putTarget(tx, m::kPan, m::kTilt, target); });
    co_return co_await std::move(moving);
}

QCoro::Task<Outcome> Session::moveToWithLenses(PanTiltTarget target, std::array<int, 4> lenses,
                                               Requester requester) {
    if (const auto refusal = programRefusal(requester, &target)) {
        co_return Outcome::refused(*refusal);
    }
    namespace m = vocab::absolute_move_with_lenses;
    auto moving = sendMove<vocab::AbsoluteMoveWithLenses>([target, lenses](ByteTable& tx) {
        putTarget(tx, m::kPan, m::kTilt, target);
        for (std::size_t i = 0; i < lenses.size(); ++i) {
            vocab::put(tx, m::kLens.at(i), checkedByte(lenses[i]));
        }
    });
    co_return co_await std::move(moving);
}

QCoro::Task<Outcome> Session::moveBy(double pan, double tilt, Requester requester) {
    const PanTiltTarget landing{status_.CurrentPan + pan, status_.CurrentTilt + tilt};
    if (const auto refusal = programRefusal(requester, &landing)) {
        co_return Outcome::refused(*refusal);
    }
    namespace m = vocab::delta_move;
    const PanTiltTarget by{pan, tilt};
    auto moving =
        sendMove<vocab::DeltaMove>([by](ByteTable& tx) { putTarget(tx, m::kPan, m::kTilt, by); });
    co_return co_await std::move(moving);
}

QCoro::Task<Outcome> Session::moveHome(Requester requester) {
    return exchange(requester, [] { return vocab::blank<vocab::MoveToHome>(); });
}

QCoro::Task<Outcome> Session::moveToCentre(Requester requester) {
    return exchange(requester, [] { return vocab::blank<vocab::MoveToCentre>(); });
}

Outcome Session::stop() {
    // Whatever can be stopped here is, online or not: every jog source at
    // rest, and the stop request on the next jog message that goes out.
    jogSources_.stopAll();
    state_.JogFlags = vocab::withBit(state_.JogFlags, vocab::jog::kStop, true);
    link_.requestJogMessage();
    emit stopRequested();
    return link_.portOpen() ? Outcome::done({}) : Outcome::refused(Refusal::Offline);
}

Outcome Session::reset() {
    state_.JogFlags = vocab::withBit(state_.JogFlags, vocab::jog::kReset, true);
    link_.requestJogMessage();
    return link_.portOpen() ? Outcome::done({}) : Outcome::refused(Refusal::Offline);
}

}  // namespace halvex
