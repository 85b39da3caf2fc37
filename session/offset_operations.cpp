// The session's angle offsets and the readings that go with them: the
// resolver centre, and what the encoders' first alignment and the homing
// cycle found. Changing the offsets shifts everything held in angle terms,
// so the soft limits and the presets are read again after it.
#include "protocol/senders.h"
#include "protocol/vocabulary.h"
#include "protocol/wait.h"
#include "session/position_encoding.h"
#include "session/session.h"

namespace halvex {

namespace {
// An offset command that carries pan and tilt, both encoded before the
// message is built.
template <class M, int At>
std::vector<Byte> withCoordinates(vocab::PanTilt<M, At>, double pan, double tilt) {
    using Fields = vocab::PanTilt<M, At>;
    const std::int32_t panValue = encodePosition(pan);
    const std::int32_t tiltValue = encodePosition(tilt);
    auto command = vocab::blank<M>();
    vocab::put(command, Fields::kPan, static_cast<std::uint32_t>(panValue));
    vocab::put(command, Fields::kTilt, static_cast<std::uint32_t>(tiltValue));
    return command;
}

// Announces the end of a table reload however the change ends.
class TableReloadScope {
  public:
    explicit TableReloadScope(Session& session) : session_(session), locked_(session) {
        emit session_.tableReloadStarted();
    }
    ~TableReloadScope() { emit session_.tableReloadEnded(); }
    TableReloadScope(const TableReloadScope&) = delete;
    TableReloadScope& operator=(const TableReloadScope&) = delete;

  private:
    Session& session_;
    Session::PagesLock locked_;
};
}  // namespace

void Session::watchOffsetReports() {
    // The five offset commands are all answered with the angle offsets.
    for (Byte code : {vocab::SetAngleOffsets::kCode, vocab::AlignToCentre::kCode,
                      vocab::AlignToCoordinates::kCode, vocab::ZeroOffsets::kCode,
                      vocab::OffsetsRequest::kCode}) {
        receiver_.registerDecoder(code, [this] {
            using Offsets = vocab::angle_offsets;
            const ByteTable& rx = state_.RxBuffer;
            status_.PanAngleOffset = static_cast<float>(getPosition(rx, Offsets::kPan)) / 100.0f;
            status_.TiltAngleOffset = static_cast<float>(getPosition(rx, Offsets::kTilt)) / 100.0f;
            emit angleOffsetsReported(status_.PanAngleOffset, status_.TiltAngleOffset);
        });
    }
    for (Byte code : {vocab::CentreRequest::kCode, vocab::SetCentre::kCode}) {
        receiver_.registerDecoder(code, [this] {
            const ByteTable& rx = state_.RxBuffer;
            emit centreReported(getPosition(rx, vocab::centre_position::kPan),
                                getPosition(rx, vocab::centre_position::kTilt));
        });
    }
    receiver_.registerDecoder(vocab::EncoderAlignmentFinished::kCode, [this] {
        const ByteTable& rx = state_.RxBuffer;
        emit encoderAlignmentReported(getPosition(rx, vocab::encoder_alignment_finished::kPan),
                                      getPosition(rx, vocab::encoder_alignment_finished::kTilt));
    });
    receiver_.registerDecoder(vocab::HomingCycleFinished::kCode, [this] {
        const ByteTable& rx = state_.RxBuffer;
        namespace h = vocab::homing_cycle_finished;
        const auto flags = static_cast<Byte>(vocab::get(rx, h::kIndex));
        emit homingReported(vocab::isSet(flags, h::kPanIndexFound), getPosition(rx, h::kPan),
                            vocab::isSet(flags, h::kTiltIndexFound), getPosition(rx, h::kTilt));
    });
}

QCoro::Task<Outcome> Session::setAngleOffsets(double pan, double tilt, Requester requester) {
    return changeOffsets(
        requester, [pan, tilt] { return withCoordinates(vocab::set_angle_offsets{}, pan, tilt); });
}

QCoro::Task<Outcome> Session::alignToCoordinates(double pan, double tilt, Requester requester) {
    return changeOffsets(requester, [pan, tilt] {
        return withCoordinates(vocab::align_to_coordinates{}, pan, tilt);
    });
}

QCoro::Task<Outcome> Session::alignToCentre(Requester requester) {
    return changeOffsets(requester, [] { return vocab::blank<vocab::AlignToCentre>(); });
}

QCoro::Task<Outcome> Session::zeroOffsets(Requester requester) {
    return changeOffsets(requester, [] { return vocab::blank<vocab::ZeroOffsets>(); });
}

QCoro::Task<Outcome> Session::changeOffsets(Requester requester,
                                            std::function<std::vector<Byte>()> build) {
    if (const auto refusal = programRefusal(requester)) {
        co_return Outcome::refused(*refusal);
    }
    // A value that cannot be sent stops the change before anything is
    // locked or sent.
    std::vector<Byte> command;
    try {
        command = build();
    } catch (const RangeFault& fault) {
        co_return Outcome::rangeFault(fault);
    }
    const TableReloadScope reloading(*this);
    // What announced the reload (a caption) is drawn before the line is busy.
    co_await letEventsRun(state_);
    const FrameTicket change = co_await sendMessage(state_, link_, command);
    if (!wentOut(change)) {
        co_return Outcome::noReply();  // the port is gone
    }
    const bool answered = co_await link_.awaitReply(change);
    const std::vector<Byte> reply = lastReply_;

    // The soft limits and presets are held in angle terms, which the new
    // offsets have shifted.
    for (int index = 0; index < vocab::soft_limit::kLimits; ++index) {
        auto request = vocab::readRequest<vocab::SoftLimit>();
        vocab::put(request, vocab::soft_limit::kLimit, static_cast<Byte>(index));
        co_await sendAndAwaitReply(state_, link_, request);
    }
    co_await reloadPresets(Requester::Operator);
    status_.SyncDesiredPending = true;
    co_return answered ? Outcome::done(reply) : Outcome::noReply();
}

QCoro::Task<Outcome> Session::readAngleOffsets(Requester requester) {
    return exchange(requester, [] { return vocab::blank<vocab::OffsetsRequest>(); });
}

QCoro::Task<Outcome> Session::readCentre(Requester requester) {
    return exchange(requester, [] { return vocab::blank<vocab::CentreRequest>(); });
}

QCoro::Task<Outcome> Session::setCentre(Requester requester) {
    return exchange(requester, [] { return vocab::blank<vocab::SetCentre>(); });
}

}  // namespace halvex
