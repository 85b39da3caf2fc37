// The session's identity operations: which unit the console talks to, the
// unit's own address, its communication time-out, its heater and its
// firmware revision.
#include "protocol/senders.h"
#include "protocol/vocabulary.h"
#include "session/session.h"

namespace halvex {

namespace {
// A one-byte message with its value; a value the byte cannot carry is a
// range fault.
template <class M>
std::vector<Byte> messageWith(vocab::Field<M> field, int value) {
    std::vector<Byte> message = vocab::blank<M>();
    vocab::put(message, field, checkedByte(value));
    return message;
}
}  // namespace

void Session::watchIdentityReports() {
    receiver_.registerDecoder(vocab::UnitAddress::kCode, [this] {
        status_.UnitAddress =
            static_cast<int>(vocab::get(state_.RxBuffer, vocab::unit_address::kId));
        emit unitAddressReported(status_.UnitAddress);
    });
    receiver_.registerDecoder(vocab::CommTimeout::kCode, [this] {
        status_.CommTimeoutSeconds =
            static_cast<int>(vocab::get(state_.RxBuffer, vocab::comm_timeout::kSeconds));
        emit commTimeoutReported(status_.CommTimeoutSeconds);
    });
    receiver_.registerDecoder(vocab::Heater::kCode, [this] {
        status_.HeaterMode = static_cast<int>(vocab::get(state_.RxBuffer, vocab::heater::kMode));
        emit heaterModeReported(status_.HeaterMode);
    });
    receiver_.registerDecoder(vocab::Firmware::kCode, [this] {
        namespace f = vocab::firmware;
        const ByteTable& rx = state_.RxBuffer;
        const auto field = [&rx](vocab::Field<vocab::Firmware> at) {
            return static_cast<int>(vocab::get(rx, at));
        };
        status_.Firmware = {field(f::kMajor), field(f::kMinor), field(f::kDay), field(f::kMonth),
                            f::kYearBias + field(f::kYear)};
        emit firmwareReported(status_.Firmware);
    });
}

void Session::talkTo(int unitId) {
    // The next frame goes to this unit, and both checks start from it.
    const Byte id = checkedByte(unitId);
    if (id != state_.UnitId) {
        state_.UnitId = id;
        link_.abandonAwaitedReplies();
        emit talkingTo(id);
    }
}

QCoro::Task<Outcome> Session::setUnitAddress(int id, bool broadcast, Requester requester) {
    return exchange(requester, [this, id, broadcast] {
        std::vector<Byte> message = messageWith(vocab::unit_address::kId, id);
        if (broadcast) {
            // Taken by the frame about to be queued with this message, and
            // by no other.
            state_.AddressOverride = kBroadcast;
        }
        return message;
    });
}

QCoro::Task<Outcome> Session::readUnitAddress(Requester requester) {
    return exchange(requester, [this] {
        // Whatever the unit's address, it answers with it.
        state_.AddressOverride = kBroadcast;
        return vocab::readRequest<vocab::UnitAddress>();
    });
}

QCoro::Task<Outcome> Session::setCommTimeout(int seconds, Requester requester) {
    return exchange(requester,
                    [seconds] { return messageWith(vocab::comm_timeout::kSeconds, seconds); });
}

QCoro::Task<Outcome> Session::readCommTimeout(Requester requester) {
    return exchange(requester, [] { return vocab::readRequest<vocab::CommTimeout>(); });
}

QCoro::Task<Outcome> Session::setHeaterMode(int mode, Requester requester) {
    return exchange(requester, [mode] { return messageWith(vocab::heater::kModeByte, mode); });
}

QCoro::Task<Outcome> Session::readHeaterMode(Requester requester) {
    return exchange(requester, [] { return vocab::readRequest<vocab::Heater>(); });
}

QCoro::Task<Outcome> Session::readFirmware(Requester requester) {
    return exchange(requester, [] { return vocab::blank<vocab::FirmwareRequest>(); });
}

}  // namespace halvex
