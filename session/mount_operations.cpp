// The session's mount settings: motor and resolver directions, continuous
// rotation and mounting, the encoder counts, and the unit's two long
// procedures, the initial encoder alignment and the homing cycle.
#include "protocol/flag_scope.h"
#include "protocol/senders.h"
#include "protocol/vocabulary.h"
#include "session/session.h"
#include "session/signed_word.h"

namespace halvex {

namespace {
namespace v = vocab;
namespace directions = vocab::directions;
using Named = v::Bit<v::Directions>;

// The named bits of the directions byte and where they live in the settings.
struct NamedBit {
    Named bit;
    bool MountSettings::*setting;
};
const std::array<NamedBit, 6> kNamedBits = {{
    {directions::kPanMotorReverse, &MountSettings::panMotorReversed},
    {directions::kTiltMotorReverse, &MountSettings::tiltMotorReversed},
    {directions::kPanResolverInvert, &MountSettings::panResolverInverted},
    {directions::kTiltResolverInvert, &MountSettings::tiltResolverInverted},
    {directions::kContinuousRotation, &MountSettings::continuousRotation},
    {directions::kInvertedMount, &MountSettings::invertedMount},
}};

Byte directionsByte(const MountSettings& mount) {
    Byte flags = mount.otherBits;
    for (const NamedBit& named : kNamedBits) {
        flags = v::withBit(flags, named.bit, mount.*named.setting);
    }
    return flags;
}

MountSettings mountOf(Byte flags) {
    MountSettings mount;
    for (const NamedBit& named : kNamedBits) {
        mount.*named.setting = v::isSet(flags, named.bit);
    }
    Byte named = 0;
    for (const NamedBit& each : kNamedBits) {
        named = v::withBit(named, each.bit, true);
    }
    mount.otherBits = static_cast<Byte>(flags & ~named);
    return mount;
}

// The console's own reading of a count: Build16, high byte first.
int encoderCount(const ByteTable& rx, v::Field<v::EncodersReply> field) {
    const std::uint32_t word = v::get(rx, field);
    return Build16(static_cast<Byte>(word >> 8), static_cast<Byte>(word));
}

std::vector<Byte> encodersMessage(const AxisPair& counts) {
    std::vector<Byte> message = v::blank<v::Encoders>();
    putSignedWord(message, v::encoders::kPan, counts.pan);
    putSignedWord(message, v::encoders::kTilt, counts.tilt);
    return message;
}
}  // namespace

void Session::watchMountReports() {
    receiver_.registerDecoder(v::Directions::kCode, [this] {
        status_.Mount = mountOf(static_cast<Byte>(v::get(state_.RxBuffer, directions::kBits)));
        emit mountReported(status_.Mount);
    });
    receiver_.registerDecoder(v::EncodersReply::kCode, [this] {
        const ByteTable& rx = state_.RxBuffer;
        // Both counts are read before either is kept.
        const int pan = encoderCount(rx, v::encoders_reply::kPan);
        status_.EncoderCounts = {pan, encoderCount(rx, v::encoders_reply::kTilt)};
        emit encodersReported(status_.EncoderCounts);
    });
}

QCoro::Task<Outcome> Session::setMount(MountSettings mount, Requester requester) {
    return exchange(requester, [mount] {
        std::vector<Byte> message = v::blank<v::Directions>();
        v::put(message, directions::kBits, directionsByte(mount));
        return message;
    });
}

QCoro::Task<Outcome> Session::readMount(Requester requester) {
    return exchange(requester, [] { return v::readRequest<v::Directions>(); });
}

QCoro::Task<Outcome> Session::setEncoderCounts(AxisPair counts, Requester requester) {
    return exchange(requester, [counts] { return encodersMessage(counts); });
}

QCoro::Task<Outcome> Session::readEncoderCounts(Requester requester) {
    return exchange(requester, [] { return v::readRequest<v::Encoders>(); });
}

QCoro::Task<Outcome> Session::alignEncoders(Requester requester) {
    auto running = runProcedure(v::blank<v::EncoderAlignment>(), requester);
    const Outcome outcome = co_await std::move(running);
    if (outcome.kind() != Outcome::Kind::Refused) {
        link_.Timer4().setInterval(kAfterAlignmentWatchdogMs);
    }
    co_return outcome;
}

QCoro::Task<Outcome> Session::runHomingCycle(Requester requester) {
    // Unlike the initial alignment, the homing cycle leaves the long
    // watchdog interval in place afterwards.
    return runProcedure(v::blank<v::HomingCycle>(), requester, [this] { emit homingStarted(); });
}

QCoro::Task<Outcome> Session::runProcedure(std::vector<Byte> command, Requester requester,
                                           std::function<void()> starting) {
    if (const auto refusal = programRefusal(requester)) {
        co_return Outcome::refused(*refusal);
    }
    if (procedureRunning_) {
        co_return Outcome::refused(Refusal::UnitBusy);
    }
    const FlagScope running(procedureRunning_);
    if (starting) {
        starting();
    }
    link_.Timer4().setInterval(kProcedureWatchdogMs);
    // The unit answers when the procedure ends. The line is held until then:
    // the unit hears nothing meanwhile, and jog messages piling up unanswered
    // would crowd the procedure's frame out of the replies the link waits
    // for.
    const SendInProgressScope holding(state_);
    auto answering = awaitAnswer(sendHeld(state_, link_, command));
    co_return co_await std::move(answering);
}

}  // namespace halvex
