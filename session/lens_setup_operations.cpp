// The session's lens setup: which lens motors run, which way, and their
// slowest speeds, for both cameras in one message.
#include "protocol/senders.h"
#include "protocol/vocabulary.h"
#include "session/session.h"

namespace halvex {

namespace {
using LensMessage = vocab::LensConfiguration;

// One lens's fields in the message.
struct LensFields {
    vocab::Field<LensMessage> flagsByte, zoomMinimum, focusMinimum;
    vocab::Bit<LensMessage> zoomEnable, zoomReverse, zoomInvert;
    vocab::Bit<LensMessage> focusEnable, focusReverse, focusInvert, spare;
};

template <class Lens>
constexpr LensFields lensFields() {
    return {Lens::kFlagsByte,   Lens::kZoomMinimum, Lens::kFocusMinimum, Lens::kZoomEnable,
            Lens::kZoomReverse, Lens::kZoomInvert,  Lens::kFocusEnable,  Lens::kFocusReverse,
            Lens::kFocusInvert, Lens::kSpare};
}

const std::array kLensFields = {lensFields<vocab::lens_configuration::Lens1>(),
                                lensFields<vocab::lens_configuration::Lens2>()};

Byte flagsOf(const LensSetup& lens, const LensFields& f) {
    Byte flags = vocab::withBit(0, f.spare, lens.spare);
    flags = vocab::withBit(flags, f.zoomEnable, lens.zoom.enabled);
    flags = vocab::withBit(flags, f.zoomReverse, lens.zoom.reversed);
    flags = vocab::withBit(flags, f.zoomInvert, lens.zoom.inverted);
    flags = vocab::withBit(flags, f.focusEnable, lens.focus.enabled);
    flags = vocab::withBit(flags, f.focusReverse, lens.focus.reversed);
    flags = vocab::withBit(flags, f.focusInvert, lens.focus.inverted);
    return flags;
}

// Both lenses into the message. A read differs from a write only in the
// first lens's flags byte, which then holds the read bit alone.
std::vector<Byte> lensMessage(const LensSetupPair& lenses, bool read) {
    std::vector<Byte> message = vocab::blank<LensMessage>();
    for (std::size_t c = 0; c < lenses.size(); ++c) {
        const LensFields& f = kLensFields[c];
        if (c != 0 || !read) {
            vocab::put(message, f.flagsByte, flagsOf(lenses[c], f));
        }
        vocab::put(message, f.zoomMinimum, checkedByte(lenses[c].zoom.minimumSpeed));
        vocab::put(message, f.focusMinimum, checkedByte(lenses[c].focus.minimumSpeed));
    }
    if (read) {
        constexpr auto kRead = vocab::kReadRequest<LensMessage>;
        message[kRead.offset] = vocab::withBit(message[kRead.offset], kRead, true);
    }
    return message;
}
}  // namespace

void Session::watchLensReports() {
    receiver_.registerDecoder(LensMessage::kCode, [this] {
        const ByteTable& rx = state_.RxBuffer;
        for (std::size_t c = 0; c < kLensFields.size(); ++c) {
            const LensFields& f = kLensFields[c];
            // The top bit of the first lens's byte is the read bit.
            const auto flags = static_cast<Byte>(vocab::get(rx, f.flagsByte));
            LensSetup& lens = status_.LensSetups[c];
            lens.zoom = {vocab::isSet(flags, f.zoomEnable), vocab::isSet(flags, f.zoomReverse),
                         vocab::isSet(flags, f.zoomInvert),
                         static_cast<int>(vocab::get(rx, f.zoomMinimum))};
            lens.focus = {vocab::isSet(flags, f.focusEnable), vocab::isSet(flags, f.focusReverse),
                          vocab::isSet(flags, f.focusInvert),
                          static_cast<int>(vocab::get(rx, f.focusMinimum))};
            lens.spare = vocab::isSet(flags, f.spare);
        }
        emit lensSetupReported(status_.LensSetups);
    });
}

QCoro::Task<Outcome> Session::setLensSetup(LensSetupPair lenses, Requester requester) {
    return exchange(requester, [lenses] { return lensMessage(lenses, false); });
}

QCoro::Task<Outcome> Session::readLensSetup(LensSetupPair carried, Requester requester) {
    return exchange(requester, [carried] { return lensMessage(carried, true); });
}

}  // namespace halvex
