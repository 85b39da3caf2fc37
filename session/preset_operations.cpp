// The session's preset operations: go to one, store one (at given angles or
// where the platform is), add the lens positions to one, read them all again
// and clear them all.
#include "protocol/senders.h"
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

void Session::watchPresetReports() {
    // Reading, storing, storing the current position and adding the lenses
    // are all answered by a preset record under their own codes.
    for (Byte code : {vocab::PresetRequest::kCode, vocab::StorePreset::kCode,
                      vocab::StoreCurrentPosition::kCode, vocab::AddLensPositions::kCode}) {
        receiver_.registerDecoder(code, [this] {
            const ByteTable& rx = state_.RxBuffer;
            const int number = static_cast<int>(vocab::get(rx, vocab::preset_record::kPreset));
            presets_.store(number, readPresetRecord(rx));
            emit presetReported(number);
        });
    }
}

QCoro::Task<Outcome> Session::reloadPresets(Requester requester) {
    if (const auto refusal = programRefusal(requester)) {
        co_return Outcome::refused(*refusal);
    }
    // A reload asked for while one runs is not nested in it: the running
    // one starts over, and this call completes.
    auto reloading = presetReloading_.run([this] { return reloadPresetsOnce(); });
    co_await std::move(reloading);
    emit presetsReloaded();
    co_return presetsAnswered_ ? Outcome::done(lastReply_) : Outcome::noReply();
}

// One pass of a reload: presets 0..31, each after the previous reply.
QCoro::Task<> Session::reloadPresetsOnce() {
    presetsAnswered_ = false;
    emit presetsReloadStarted();
    const SendInProgressScope sending(state_);
    for (int number = 0; number < kUnitPresets && !presetReloading_.superseded(); ++number) {
        auto request = vocab::blank<vocab::PresetRequest>();
        vocab::put(request, vocab::preset_request::kPreset, static_cast<Byte>(number));
        const FrameTicket asked = co_await sendHeld(state_, link_, request);
        if (!wentOut(asked)) {
            co_return;  // the port is gone
        }
        const bool answered = co_await link_.awaitReply(asked);
        if (!answered) {
            co_return;  // the unit has stopped answering
        }
    }
    presetsAnswered_ = true;
}

QCoro::Task<Outcome> Session::clearAllPresets(Requester requester) {
    if (const auto refusal = programRefusal(requester)) {
        co_return Outcome::refused(*refusal);
    }
    // The unit's answer to the clear, then one more reply (the next jog
    // report) so the unit has finished zeroing before it is asked again.
    co_await sendAndAwaitReply(state_, link_, vocab::blank<vocab::ClearAllPresets>());
    link_.Timer4().setInterval(Link::kWatchdogMs);
    co_await link_.awaitNextReply();
    co_return co_await reloadPresets(Requester::Operator);
}

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
    Outcome outcome = co_await std::move(saving);
    if (outcome.isDone()) {
        emit presetStoredHere(preset);
    }
    co_return outcome;
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
