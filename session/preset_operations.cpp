// The session's preset operations: go to one, store one (at given angles or
// where the platform is) and add the lens positions to one.
#include "protocol/vocabulary.h"
#include "session/position_encoding.h"
#include "session/session.h"

namespace halvex {

namespace {
// A message that names one preset and nothing else.
template <class M>
auto namingPreset(vocab::Field<M> field, int preset) {
    return [field, preset](ByteTable& tx) { vocab::put(tx, field, checkedByte(preset)); };
}
}  // namespace

QCoro::Task<Outcome> Session::goToPreset(int preset, Requester requester) {
    if (const auto refusal = programRefusal(requester)) {
        co_return Outcome::refused(*refusal);
    }
    auto going = sendMove<vocab::GoToPreset>(namingPreset(vocab::go_to_preset::kPreset, preset));
    co_return co_await std::move(going);
}

QCoro::Task<Outcome> Session::savePreset(int preset, PanTiltTarget at, Requester requester) {
    if (const auto refusal = programRefusal(requester, &at)) {
        co_return Outcome::refused(*refusal);
    }
    namespace m = vocab::store_preset;
    auto saving = sendMove<vocab::StorePreset>([preset, at](ByteTable& tx) {
        const Byte number = checkedByte(preset);
        const std::int32_t pan = encodePosition(at.pan);
        const std::int32_t tilt = encodePosition(at.tilt);
        vocab::put(tx, m::kPreset, number);
        putPosition(tx, m::kPan, pan);
        putPosition(tx, m::kTilt, tilt);
    });
    co_return co_await std::move(saving);
}

QCoro::Task<Outcome> Session::saveCurrentPosition(int preset, Requester requester) {
    if (const auto refusal = programRefusal(requester)) {
        co_return Outcome::refused(*refusal);
    }
    auto saving = sendMove<vocab::StoreCurrentPosition>(
        namingPreset(vocab::store_current_position::kPreset, preset));
    co_return co_await std::move(saving);
}

QCoro::Task<Outcome> Session::addLensPositions(int preset, Requester requester) {
    if (const auto refusal = programRefusal(requester)) {
        co_return Outcome::refused(*refusal);
    }
    auto adding =
        sendMove<vocab::AddLensPositions>(namingPreset(vocab::add_lens_positions::kPreset, preset));
    co_return co_await std::move(adding);
}

}  // namespace halvex
