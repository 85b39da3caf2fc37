// The session's video operations: the current units' routing, blanking,
// standard and cameras' power, their aux outputs, and the older units' video
// byte and video mode.
#include "protocol/senders.h"
#include "protocol/vocabulary.h"
#include "session/session.h"

namespace halvex {

namespace {
namespace vc = vocab::video_configuration;
namespace legacy = vocab::legacy_video;
using vocab::withBit;

static_assert(vocab::inPlace(vc::kRoute, kVideoRoutes - 1) == vc::kRoute.mask,
              "the routes are what the route field holds");

const std::array<vocab::Bit<vocab::VideoConfiguration>, 2> kPower = {vc::kCamera1Power,
                                                                     vc::kCamera2Power};
const std::array<vocab::Bit<vocab::LegacyVideo>, 2> kLegacyPower = {legacy::kCamera1Power,
                                                                    legacy::kCamera2Power};

template <class M>
Byte powerByte(const std::array<bool, 2>& power, const std::array<vocab::Bit<M>, 2>& bits,
               Byte byte = 0) {
    for (std::size_t camera = 0; camera < bits.size(); ++camera) {
        byte = withBit(byte, bits[camera], power[camera]);
    }
    return byte;
}

template <class M>
std::array<bool, 2> powerOf(Byte byte, const std::array<vocab::Bit<M>, 2>& bits) {
    return {vocab::isSet(byte, bits[0]), vocab::isSet(byte, bits[1])};
}

std::vector<Byte> videoMessage(const VideoSettings& video, bool store) {
    if (video.route < 0 || video.route >= kVideoRoutes) {
        throw RangeFault(RangeFault::Overflow, "video route");
    }
    auto mode =
        static_cast<Byte>(vocab::inPlace(vc::kRoute, static_cast<std::uint32_t>(video.route)));
    mode = withBit(mode, vc::kBlankOutput1, video.blankOutput1);
    mode = withBit(mode, vc::kBlankOutput2, video.blankOutput2);
    mode = withBit(mode, vc::kPal, video.pal);
    mode = withBit(mode, vc::kStore, store);
    std::vector<Byte> message = vocab::blank<vocab::VideoConfiguration>();
    vocab::put(message, vc::kModeByte, mode);
    vocab::put(message, vc::kPower, powerByte(video.cameraPower, kPower));
    return message;
}

Byte legacyModeByte(const LegacyVideoMode& mode, bool store) {
    Byte byte = withBit(0, vc::kLegacyDisplayOn, mode.displayOn);
    byte = withBit(byte, vc::kPal, mode.pal);
    return withBit(byte, vc::kStore, store);
}

Byte legacySelectionBits(LegacyVideoSelection selection) {
    using S = LegacyVideoSelection;
    const bool both = selection == S::BothBits;
    Byte byte = withBit(0, legacy::kSelectionLow, both || selection == S::Undefined);
    return withBit(byte, legacy::kSelectionHigh, both || selection == S::VideoSelect);
}

LegacyVideoSelection legacySelectionOf(Byte byte) {
    using S = LegacyVideoSelection;
    const bool low = vocab::isSet(byte, legacy::kSelectionLow);
    const bool high = vocab::isSet(byte, legacy::kSelectionHigh);
    if (low) {
        return high ? S::BothBits : S::Undefined;
    }
    return high ? S::VideoSelect : S::BlankVideo;
}
}  // namespace

void Session::watchVideoReports() {
    receiver_.registerDecoder(vocab::VideoConfiguration::kCode, [this] {
        const ByteTable& rx = state_.RxBuffer;
        const auto mode = static_cast<Byte>(vocab::get(rx, vc::kModeByte));
        VideoSettings& video = status_.Video;
        video.route = static_cast<int>(vocab::get(rx, vc::kRoute));
        video.blankOutput1 = vocab::isSet(mode, vc::kBlankOutput1);
        video.blankOutput2 = vocab::isSet(mode, vc::kBlankOutput2);
        video.pal = vocab::isSet(mode, vc::kPal);
        video.cameraPower = powerOf(static_cast<Byte>(vocab::get(rx, vc::kPower)), kPower);
        emit videoReported(status_.Video);
    });
    receiver_.registerDecoder(vocab::LegacyVideo::kCode, [this] {
        const auto byte = static_cast<Byte>(vocab::get(state_.RxBuffer, legacy::kSettingsByte));
        status_.LegacyVideoSetup = {legacySelectionOf(byte), powerOf(byte, kLegacyPower)};
        emit legacyVideoReported(status_.LegacyVideoSetup);
    });
    receiver_.registerDecoder(vocab::AuxOutputs::kCode, [this] {
        namespace aux = vocab::aux_outputs;
        const auto outputs = static_cast<Byte>(vocab::get(state_.RxBuffer, aux::kOutputs));
        for (std::size_t i = 0; i < aux::kOutput.size(); ++i) {
            status_.AuxOutputsOn[i] = vocab::isSet(outputs, aux::kOutput[i]);
        }
        emit auxOutputsReported(status_.AuxOutputsOn);
    });
}

QCoro::Task<Outcome> Session::setVideo(VideoSettings video, Requester requester) {
    return exchange(requester, [video] { return videoMessage(video, false); });
}

QCoro::Task<Outcome> Session::storeVideoAsInitial(VideoSettings video, Requester requester) {
    return exchange(requester, [video] { return videoMessage(video, true); });
}

QCoro::Task<Outcome> Session::readVideo(Requester requester) {
    return exchange(requester, [] { return vocab::readRequest<vocab::VideoConfiguration>(); });
}

QCoro::Task<Outcome> Session::setAuxOutputs(AuxOutputStates outputs, Requester requester) {
    return exchange(requester, [outputs] {
        namespace aux = vocab::aux_outputs;
        Byte byte{};  // every bit is set or cleared below
        for (std::size_t i = 0; i < aux::kOutput.size(); ++i) {
            byte = withBit(byte, aux::kOutput[i], outputs[i]);
        }
        std::vector<Byte> message = vocab::blank<vocab::AuxOutputs>();
        vocab::put(message, aux::kOutputs, byte);
        return message;
    });
}

QCoro::Task<Outcome> Session::setLegacyVideo(LegacyVideoSettings video, Requester requester) {
    return exchange(requester, [video] {
        std::vector<Byte> message = vocab::blank<vocab::LegacyVideo>();
        vocab::put(
            message, legacy::kSettingsByte,
            powerByte(video.cameraPower, kLegacyPower, legacySelectionBits(video.selection)));
        return message;
    });
}

QCoro::Task<Outcome> Session::setLegacyVideoMode(LegacyVideoMode mode, Requester requester) {
    return exchange(requester, [mode] {
        // The full form, whose power byte has always carried camera 1's
        // power alone.
        std::vector<Byte> message = vocab::blank<vocab::VideoConfiguration>();
        vocab::put(message, vc::kModeByte, legacyModeByte(mode, false));
        vocab::put(message, vc::kPower, vocab::maskOf(vc::kCamera1Power));
        return message;
    });
}

QCoro::Task<Outcome> Session::storeLegacyVideoModeAsInitial(LegacyVideoMode mode,
                                                            Requester requester) {
    return exchange(requester, [mode] {
        // The short, older form on purpose: the power byte of the mode
        // command is not part of it.
        std::vector<Byte> message(vocab::VideoConfiguration::kShortest, 0);
        vocab::begin<vocab::VideoConfiguration>(message);
        vocab::put(message, vc::kModeByte, legacyModeByte(mode, true));
        return message;
    });
}

}  // namespace halvex
