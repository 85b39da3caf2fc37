#include "video/video_config.h"

#include "console/controls_from_reply.h"
#include "console/handler_wiring.h"
#include "protocol/senders.h"
#include "views/pages/video_page.h"

namespace halvex {

namespace {
constexpr int kPalBit = 3;
constexpr int kBlankVout2Bit = 4;  // BlankCheck(0)
constexpr int kBlankVout1Bit = 5;  // BlankCheck(1)
constexpr int kStoreBit = 6;
constexpr Byte kRouteBits = 0x07;
constexpr int kCamera1PowerBit = 2;
constexpr int kCamera2PowerBit = 3;
constexpr int kOsdOnBit = 0;

Byte withBit(Byte value, int bit, bool set) {
    return set ? SetBit(value, bit) : ClearBit(value, bit);
}

// The legacy option that two selection bits stand for: bit 0 alone is
// "Undefined", bit 1 alone "Video Sel", neither "Blank Video"; both set
// reads as the first.
int legacyOptionOf(bool bit0, bool bit1) {
    if (bit0) {
        return 0;
    }
    return bit1 ? 1 : 2;
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
    context_.receiver.registerDecoder(kVideo, [this] { decodeVideo(); });
    context_.receiver.registerDecoder(kLegacyVideo, [this] { decodeLegacyVideo(); });
    context_.receiver.addRefreshHook([this] { enableFramesForUnitType(); });
}

void VideoConfig::VidOption_Click(int index) {
    if (!context_.state.UserClickEnabled) {
        return;
    }
    videoMode_ = static_cast<Byte>((videoMode_ & ~kRouteBits) | index);
    sendVideo(videoMode_);
}

void VideoConfig::BlankCheck_Click() {
    if (!context_.state.UserClickEnabled) {
        return;
    }
    videoMode_ = withBit(videoMode_, kBlankVout2Bit, page_.BlankCheck[0]->isChecked());
    videoMode_ = withBit(videoMode_, kBlankVout1Bit, page_.BlankCheck[1]->isChecked());
    sendVideo(videoMode_);
}

void VideoConfig::PALCheck_Click() {
    if (!context_.state.UserClickEnabled) {
        return;
    }
    videoMode_ = withBit(videoMode_, kPalBit, page_.PALCheck->isChecked());
    sendVideo(videoMode_);
}

void VideoConfig::CamPwrCheck_Click() {
    if (!context_.state.UserClickEnabled) {
        return;
    }
    videoPower_ = withBit(videoPower_, kCamera1PowerBit, page_.CamPwrCheck[0]->isChecked());
    videoPower_ = withBit(videoPower_, kCamera2PowerBit, page_.CamPwrCheck[1]->isChecked());
    sendVideo(videoMode_);
}

void VideoConfig::StoreInitBut_Click() {
    // Only the copy sent carries the store bit.
    sendVideo(SetBit(videoMode_, kStoreBit));
}

void VideoConfig::GetVidBut_Click() {
    sendMessage(context_.state, context_.link, {kVideo, 0x80, 0x00});
}

void VideoConfig::AuxCheck_Click() {
    if (!context_.state.UserClickEnabled) {
        return;
    }
    Byte aux = 0;
    for (std::size_t i = 0; i < page_.AuxCheck.size(); ++i) {
        aux = withBit(aux, static_cast<int>(i), page_.AuxCheck[i]->isChecked());
    }
    sendMessage(context_.state, context_.link, {kAux, aux});
}

void VideoConfig::LVidOption_Click(int index) {
    if (!context_.state.UserClickEnabled) {
        return;
    }
    legacyVideo_ = withBit(legacyVideo_, 0, index == 0);
    legacyVideo_ = withBit(legacyVideo_, 1, index == 1);
    sendLegacy();
}

void VideoConfig::LCamPwrCheck_Click() {
    if (!context_.state.UserClickEnabled) {
        return;
    }
    legacyVideo_ = withBit(legacyVideo_, kCamera1PowerBit, page_.LCamPwrCheck[0]->isChecked());
    legacyVideo_ = withBit(legacyVideo_, kCamera2PowerBit, page_.LCamPwrCheck[1]->isChecked());
    sendLegacy();
}

void VideoConfig::PALCheck2_Click() {
    if (!context_.state.UserClickEnabled) {
        return;
    }
    sendMessage(context_.state, context_.link, {kVideo, legacyModeByte(), 4});
}

void VideoConfig::InitVModeBut_Click() {
    if (!context_.state.UserClickEnabled) {
        return;
    }
    // Two bytes on purpose: the 4 of the mode command is not part of it.
    sendMessage(context_.state, context_.link, {kVideo, SetBit(legacyModeByte(), kStoreBit)});
}

Byte VideoConfig::legacyModeByte() const {
    Byte mode = 0;
    mode = withBit(mode, kOsdOnBit, page_.OSDOnCheck->isChecked());
    mode = withBit(mode, kPalBit, page_.PALCheck2->isChecked());
    return mode;
}

void VideoConfig::sendVideo(Byte mode) {
    sendMessage(context_.state, context_.link, {kVideo, mode, videoPower_});
}

void VideoConfig::sendLegacy() {
    sendMessage(context_.state, context_.link, {kLegacyVideo, legacyVideo_});
}

void VideoConfig::decodeVideo() {
    ControlsFromReply quiet(context_.state);
    const ByteTable& rx = context_.state.RxBuffer;
    videoMode_ = rx[1] & 0x3F;  // neither the store bit nor the read bit
    videoPower_ = rx[2] & 0x0C;
    page_.VidOption[videoMode_ & kRouteBits]->setChecked(true);
    const bool blank2 = BitIsSet(videoMode_, kBlankVout2Bit);
    const bool blank1 = BitIsSet(videoMode_, kBlankVout1Bit);
    page_.BlankCheck[0]->setChecked(blank2);
    page_.BlankCheck[1]->setChecked(blank1);
    page_.LVidOption[legacyOptionOf(blank2, blank1)]->setChecked(true);
    const bool pal = BitIsSet(videoMode_, kPalBit);
    page_.PALCheck->setChecked(pal);
    page_.PALCheck2->setChecked(pal);
    for (int camera = 0; camera < 2; ++camera) {
        const bool on = BitIsSet(videoPower_, kCamera1PowerBit + camera);
        page_.CamPwrCheck[camera]->setChecked(on);
        page_.LCamPwrCheck[camera]->setChecked(on);
    }
}

void VideoConfig::decodeLegacyVideo() {
    ControlsFromReply quiet(context_.state);
    legacyVideo_ = context_.state.RxBuffer[1] & 0x0F;
    page_.LVidOption[legacyOptionOf(BitIsSet(legacyVideo_, 0), BitIsSet(legacyVideo_, 1))]
        ->setChecked(true);
    page_.LCamPwrCheck[0]->setChecked(BitIsSet(legacyVideo_, kCamera1PowerBit));
    page_.LCamPwrCheck[1]->setChecked(BitIsSet(legacyVideo_, kCamera2PowerBit));
}

void VideoConfig::enableFramesForUnitType() {
    const Byte type = context_.status.UnitVariant();
    page_.VidConfigFrame->setEnabled(type == 0);
    page_.VideoFrame->setEnabled(type > 1);
}

}  // namespace halvex
