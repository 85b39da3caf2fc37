#include "video/video_config.h"

#include "console/controls_from_reply.h"
#include "console/handler_wiring.h"
#include "protocol/senders.h"
#include "protocol/vocabulary.h"
#include "views/pages/video_page.h"

namespace halvex {

namespace {
namespace vc = vocab::video_configuration;
namespace legacy = vocab::legacy_video;
using vocab::maskOf;
using vocab::withBit;

// CamPwrCheck(0) and (1), LCamPwrCheck(0) and (1).
const std::array<vocab::Bit<vocab::VideoConfiguration>, 2> kPower = {vc::kCamera1Power,
                                                                     vc::kCamera2Power};
const std::array<vocab::Bit<vocab::LegacyVideo>, 2> kLegacyPower = {legacy::kCamera1Power,
                                                                    legacy::kCamera2Power};
// What a reply sets of the power.
constexpr Byte kPowerKept = maskOf(vc::kCamera1Power) | maskOf(vc::kCamera2Power);
constexpr Byte kLegacyKept =
    maskOf(legacy::kSelection) | maskOf(legacy::kCamera1Power) | maskOf(legacy::kCamera2Power);

// The legacy option that two selection bits stand for: the first alone is
// "Undefined", the second alone "Video Sel", neither "Blank Video"; both set
// reads as the first.
int legacyOptionOf(bool first, bool second) {
    if (first) {
        return 0;
    }
    return second ? 1 : 2;
}
}  // namespace

VideoConfig::VideoConfig(ConsoleContext& context, VideoPage& page, QObject* parent)
    : QObject(parent), context_(context), page_(page) {
    connectControls();
}

void VideoConfig::connectControls() {
    FormState& state = context_.state;
    // Check boxes and option buttons act on every change of their value, as
    // when a reply sets them; UserClickEnabled keeps those quiet.
    for (int i = 0; i < VideoPage::kRoutes; ++i) {
        onEvent(state, page_.VidOption[i], &QRadioButton::toggled, this, "VidOption_Click",
                [this, i](bool on) {
                    if (on) {
                        VidOption_Click(i);
                    }
                });
    }
    for (QCheckBox* box : page_.BlankCheck) {
        onEvent(state, box, &QCheckBox::toggled, this, "BlankCheck_Click",
                [this] { BlankCheck_Click(); });
    }
    onEvent(state, page_.PALCheck, &QCheckBox::toggled, this, "PALCheck_Click",
            [this] { PALCheck_Click(); });
    for (QCheckBox* box : page_.CamPwrCheck) {
        onEvent(state, box, &QCheckBox::toggled, this, "CamPwrCheck_Click",
                [this] { CamPwrCheck_Click(); });
    }
    for (QCheckBox* box : page_.AuxCheck) {
        onEvent(state, box, &QCheckBox::toggled, this, "AuxCheck_Click",
                [this] { AuxCheck_Click(); });
    }
    for (int i = 0; i < 3; ++i) {
        onEvent(state, page_.LVidOption[i], &QRadioButton::toggled, this, "LVidOption_Click",
                [this, i](bool on) {
                    if (on) {
                        LVidOption_Click(i);
                    }
                });
    }
    for (QCheckBox* box : page_.LCamPwrCheck) {
        onEvent(state, box, &QCheckBox::toggled, this, "LCamPwrCheck_Click",
                [this] { LCamPwrCheck_Click(); });
    }
    onEvent(state, page_.PALCheck2, &QCheckBox::toggled, this, "PALCheck2_Click",
            [this] { PALCheck2_Click(); });
    onEvent(state, page_.OSDOnCheck, &QCheckBox::toggled, this, "OSDOnCheck_Click",
            [this] { PALCheck2_Click(); });
    onEvent(state, page_.StoreInitBut, &QPushButton::clicked, this, "StoreInitBut_Click",
            [this] { StoreInitBut_Click(); });
    onEvent(state, page_.InitVModeBut, &QPushButton::clicked, this, "InitVModeBut_Click",
            [this] { InitVModeBut_Click(); });
    onEvent(state, page_.GetVidBut, &QPushButton::clicked, this, "GetVidBut_Click",
            [this] { GetVidBut_Click(); });
    onEvent(state, page_.GetVidBut2, &QPushButton::clicked, this, "GetVidBut2_Click",
            [this] { GetVidBut_Click(); });
}

void VideoConfig::registerDecoders() {
    context_.receiver.registerDecoder(vocab::VideoConfiguration::kCode, [this] { decodeVideo(); });
    context_.receiver.registerDecoder(vocab::LegacyVideo::kCode, [this] { decodeLegacyVideo(); });
    context_.receiver.addRefreshHook([this] { enableFramesForUnitType(); });
}

void VideoConfig::VidOption_Click(int index) {
    if (!context_.state.UserClickEnabled) {
        return;
    }
    videoMode_ = static_cast<Byte>((videoMode_ & ~maskOf(vc::kRoute)) | index);
    sendVideo(videoMode_);
}

void VideoConfig::BlankCheck_Click() {
    if (!context_.state.UserClickEnabled) {
        return;
    }
    videoMode_ = withBit(videoMode_, vc::kBlankOutput2, page_.BlankCheck[0]->isChecked());
    videoMode_ = withBit(videoMode_, vc::kBlankOutput1, page_.BlankCheck[1]->isChecked());
    sendVideo(videoMode_);
}

void VideoConfig::PALCheck_Click() {
    if (!context_.state.UserClickEnabled) {
        return;
    }
    videoMode_ = withBit(videoMode_, vc::kPal, page_.PALCheck->isChecked());
    sendVideo(videoMode_);
}

void VideoConfig::CamPwrCheck_Click() {
    if (!context_.state.UserClickEnabled) {
        return;
    }
    for (std::size_t camera = 0; camera < kPower.size(); ++camera) {
        videoPower_ = withBit(videoPower_, kPower[camera], page_.CamPwrCheck[camera]->isChecked());
    }
    sendVideo(videoMode_);
}

void VideoConfig::StoreInitBut_Click() {
    // Only the copy sent carries the store bit.
    sendVideo(withBit(videoMode_, vc::kStore, true));
}

void VideoConfig::GetVidBut_Click() {
    sendMessage(context_.state, context_.link, vocab::readRequest<vocab::VideoConfiguration>());
}

void VideoConfig::AuxCheck_Click() {
    if (!context_.state.UserClickEnabled) {
        return;
    }
    std::vector<Byte> message = vocab::blank<vocab::AuxOutputs>();
    Byte outputs = 0;
    for (std::size_t i = 0; i < page_.AuxCheck.size(); ++i) {
        outputs = withBit(outputs, vocab::aux_outputs::kOutput[i], page_.AuxCheck[i]->isChecked());
    }
    vocab::put(message, vocab::aux_outputs::kOutputs, outputs);
    sendMessage(context_.state, context_.link, message);
}

void VideoConfig::LVidOption_Click(int index) {
    if (!context_.state.UserClickEnabled) {
        return;
    }
    legacyVideo_ = withBit(legacyVideo_, legacy::kSelectionLow, index == 0);
    legacyVideo_ = withBit(legacyVideo_, legacy::kSelectionHigh, index == 1);
    sendLegacy();
}

void VideoConfig::LCamPwrCheck_Click() {
    if (!context_.state.UserClickEnabled) {
        return;
    }
    for (std::size_t camera = 0; camera < kLegacyPower.size(); ++camera) {
        legacyVideo_ =
            withBit(legacyVideo_, kLegacyPower[camera], page_.LCamPwrCheck[camera]->isChecked());
    }
    sendLegacy();
}

void VideoConfig::PALCheck2_Click() {
    if (!context_.state.UserClickEnabled) {
        return;
    }
    // The three-byte form, with camera 1's power on whatever the boxes say.
    std::vector<Byte> message = vocab::blank<vocab::VideoConfiguration>();
    vocab::put(message, vc::kModeByte, legacyModeByte());
    vocab::put(message, vc::kPower, maskOf(vc::kCamera1Power));
    sendMessage(context_.state, context_.link, message);
}

void VideoConfig::InitVModeBut_Click() {
    if (!context_.state.UserClickEnabled) {
        return;
    }
    // The short, older form on purpose: the power byte of the mode command
    // is not part of it.
    std::vector<Byte> message(vocab::VideoConfiguration::kShortest, 0);
    vocab::begin<vocab::VideoConfiguration>(message);
    vocab::put(message, vc::kModeByte, withBit(legacyModeByte(), vc::kStore, true));
    sendMessage(context_.state, context_.link, message);
}

Byte VideoConfig::legacyModeByte() const {
    Byte mode = 0;
    mode = withBit(mode, vc::kLegacyDisplayOn, page_.OSDOnCheck->isChecked());
    mode = withBit(mode, vc::kPal, page_.PALCheck2->isChecked());
    return mode;
}

void VideoConfig::sendVideo(Byte mode) {
    std::vector<Byte> message = vocab::blank<vocab::VideoConfiguration>();
    vocab::put(message, vc::kModeByte, mode);
    vocab::put(message, vc::kPower, videoPower_);
    sendMessage(context_.state, context_.link, message);
}

void VideoConfig::sendLegacy() {
    std::vector<Byte> message = vocab::blank<vocab::LegacyVideo>();
    vocab::put(message, legacy::kSettingsByte, legacyVideo_);
    sendMessage(context_.state, context_.link, message);
}

void VideoConfig::decodeVideo() {
    ControlsFromReply quiet(context_.state);
    const ByteTable& rx = context_.state.RxBuffer;
    videoMode_ = static_cast<Byte>(vocab::get(rx, vc::kSettingBits));
    videoPower_ = static_cast<Byte>(vocab::get(rx, vc::kPower) & kPowerKept);
    page_.VidOption[vocab::get(rx, vc::kRoute)]->setChecked(true);
    const bool blank2 = vocab::isSet(videoMode_, vc::kBlankOutput2);
    const bool blank1 = vocab::isSet(videoMode_, vc::kBlankOutput1);
    page_.BlankCheck[0]->setChecked(blank2);
    page_.BlankCheck[1]->setChecked(blank1);
    page_.LVidOption[legacyOptionOf(blank2, blank1)]->setChecked(true);
    const bool pal = vocab::isSet(videoMode_, vc::kPal);
    page_.PALCheck->setChecked(pal);
    page_.PALCheck2->setChecked(pal);
    for (std::size_t camera = 0; camera < kPower.size(); ++camera) {
        const bool on = vocab::isSet(videoPower_, kPower[camera]);
        page_.CamPwrCheck[camera]->setChecked(on);
        page_.LCamPwrCheck[camera]->setChecked(on);
    }
}

void VideoConfig::decodeLegacyVideo() {
    ControlsFromReply quiet(context_.state);
    legacyVideo_ =
        static_cast<Byte>(vocab::get(context_.state.RxBuffer, legacy::kSettingsByte) & kLegacyKept);
    page_
        .LVidOption[legacyOptionOf(vocab::isSet(legacyVideo_, legacy::kSelectionLow),
                                   vocab::isSet(legacyVideo_, legacy::kSelectionHigh))]
        ->setChecked(true);
    for (std::size_t camera = 0; camera < kLegacyPower.size(); ++camera) {
        page_.LCamPwrCheck[camera]->setChecked(vocab::isSet(legacyVideo_, kLegacyPower[camera]));
    }
}

void VideoConfig::enableFramesForUnitType() {
    const Byte type = context_.status.UnitVariant();
    page_.VidConfigFrame->setEnabled(type == 0);
    page_.VideoFrame->setEnabled(type > 1);
}

}  // namespace halvex
