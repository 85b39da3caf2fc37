#include "video/video_config.h"

#include "console/controls_from_reply.h"
#include "console/handler_wiring.h"
#include "views/pages/video_page.h"

namespace halvex {

namespace {
// What each legacy option sets, LVidOption(0) first.
constexpr std::array kLegacyOptions = {LegacyVideoSelection::Undefined,
                                       LegacyVideoSelection::VideoSelect,
                                       LegacyVideoSelection::BlankVideo};

// The legacy option that a video report's blanking stands for: output 2
// blanked is "Undefined", output 1 alone "Video Sel", neither "Blank Video".
int legacyOptionOf(bool blankOutput2, bool blankOutput1) {
    if (blankOutput2) {
        return 0;
    }
    return blankOutput1 ? 1 : 2;
}

int legacyOptionOf(LegacyVideoSelection selection) {
    switch (selection) {
        case LegacyVideoSelection::VideoSelect:
            return 1;
        case LegacyVideoSelection::BlankVideo:
            return 2;
        default:
            return 0;
    }
}

std::array<bool, 2> checked(const std::array<QCheckBox*, 2>& boxes) {
    return {boxes[0]->isChecked(), boxes[1]->isChecked()};
}
}  // namespace

VideoConfig::VideoConfig(ConsoleContext& context, VideoPage& page, QObject* parent)
    : QObject(parent), context_(context), page_(page) {
    connectControls();
    connect(&context_.session, &Session::videoReported, this, &VideoConfig::showVideo);
    connect(&context_.session, &Session::legacyVideoReported, this, &VideoConfig::showLegacyVideo);
    context_.receiver.addRefreshHook([this] { enableFramesForUnitType(); });
}

void VideoConfig::connectControls() {
    FormState& state = context_.state;
    // Check boxes and option buttons act on every change of their value, as
    // when a reply sets them; UserClickEnabled keeps those quiet.
    for (int i = 0; i < VideoPage::kRoutes; ++i) {
        onEvent(state, page_.VidOption[i], &QRadioButton::toggled, this, "VidOption_Click",
                [this, i](bool on) { return VidOption_Click(i, on); });
    }
    for (QCheckBox* box : page_.BlankCheck) {
        onEvent(state, box, &QCheckBox::toggled, this, "BlankCheck_Click",
                [this] { return BlankCheck_Click(); });
    }
    onEvent(state, page_.PALCheck, &QCheckBox::toggled, this, "PALCheck_Click",
            [this] { return PALCheck_Click(); });
    for (QCheckBox* box : page_.CamPwrCheck) {
        onEvent(state, box, &QCheckBox::toggled, this, "CamPwrCheck_Click",
                [this] { return CamPwrCheck_Click(); });
    }
    for (QCheckBox* box : page_.AuxCheck) {
        onEvent(state, box, &QCheckBox::toggled, this, "AuxCheck_Click",
                [this] { return AuxCheck_Click(); });
    }
    for (int i = 0; i < 3; ++i) {
        onEvent(state, page_.LVidOption[i], &QRadioButton::toggled, this, "LVidOption_Click",
                [this, i](bool on) { return LVidOption_Click(i, on); });
    }
    for (QCheckBox* box : page_.LCamPwrCheck) {
        onEvent(state, box, &QCheckBox::toggled, this, "LCamPwrCheck_Click",
                [this] { return LCamPwrCheck_Click(); });
    }
    onEvent(state, page_.PALCheck2, &QCheckBox::toggled, this, "PALCheck2_Click",
            [this] { return PALCheck2_Click(); });
    onEvent(state, page_.OSDOnCheck, &QCheckBox::toggled, this, "OSDOnCheck_Click",
            [this] { return PALCheck2_Click(); });
    onEvent(state, page_.StoreInitBut, &QPushButton::clicked, this, "StoreInitBut_Click",
            [this] { return StoreInitBut_Click(); });
    onEvent(state, page_.InitVModeBut, &QPushButton::clicked, this, "InitVModeBut_Click",
            [this] { return InitVModeBut_Click(); });
    onEvent(state, page_.GetVidBut, &QPushButton::clicked, this, "GetVidBut_Click",
            [this] { return GetVidBut_Click(); });
    onEvent(state, page_.GetVidBut2, &QPushButton::clicked, this, "GetVidBut2_Click",
            [this] { return GetVidBut_Click(); });
}

QCoro::Task<> VideoConfig::VidOption_Click(int index, bool on) {
    if (!on || !context_.state.UserClickEnabled) {
        co_return;
    }
    video_.route = index;
    co_await sendVideo();
}

QCoro::Task<> VideoConfig::BlankCheck_Click() {
    if (!context_.state.UserClickEnabled) {
        co_return;
    }
    video_.blankOutput2 = page_.BlankCheck[0]->isChecked();
    video_.blankOutput1 = page_.BlankCheck[1]->isChecked();
    co_await sendVideo();
}

QCoro::Task<> VideoConfig::PALCheck_Click() {
    if (!context_.state.UserClickEnabled) {
        co_return;
    }
    video_.pal = page_.PALCheck->isChecked();
    co_await sendVideo();
}

QCoro::Task<> VideoConfig::CamPwrCheck_Click() {
    if (!context_.state.UserClickEnabled) {
        co_return;
    }
    video_.cameraPower = checked(page_.CamPwrCheck);
    co_await sendVideo();
}

QCoro::Task<> VideoConfig::StoreInitBut_Click() {
    const Outcome outcome =
        co_await context_.session.storeVideoAsInitial(video_, Requester::Operator);
    outcome.raiseRangeFault();
}

QCoro::Task<> VideoConfig::GetVidBut_Click() {
    co_await context_.session.readVideo(Requester::Operator);
}

QCoro::Task<> VideoConfig::AuxCheck_Click() {
    if (!context_.state.UserClickEnabled) {
        co_return;
    }
    AuxOutputStates outputs{};
    for (std::size_t i = 0; i < page_.AuxCheck.size(); ++i) {
        outputs[i] = page_.AuxCheck[i]->isChecked();
    }
    co_await context_.session.setAuxOutputs(outputs, Requester::Operator);
}

QCoro::Task<> VideoConfig::LVidOption_Click(int index, bool on) {
    if (!on || !context_.state.UserClickEnabled) {
        co_return;
    }
    legacyVideo_.selection = kLegacyOptions[static_cast<std::size_t>(index)];
    co_await sendLegacyVideo();
}

QCoro::Task<> VideoConfig::LCamPwrCheck_Click() {
    if (!context_.state.UserClickEnabled) {
        co_return;
    }
    legacyVideo_.cameraPower = checked(page_.LCamPwrCheck);
    co_await sendLegacyVideo();
}

QCoro::Task<> VideoConfig::PALCheck2_Click() {
    if (!context_.state.UserClickEnabled) {
        co_return;
    }
    co_await context_.session.setLegacyVideoMode(legacyMode(), Requester::Operator);
}

QCoro::Task<> VideoConfig::InitVModeBut_Click() {
    if (!context_.state.UserClickEnabled) {
        co_return;
    }
    co_await context_.session.storeLegacyVideoModeAsInitial(legacyMode(), Requester::Operator);
}

LegacyVideoMode VideoConfig::legacyMode() const {
    return {page_.OSDOnCheck->isChecked(), page_.PALCheck2->isChecked()};
}

QCoro::Task<> VideoConfig::sendVideo() {
    const Outcome outcome = co_await context_.session.setVideo(video_, Requester::Operator);
    outcome.raiseRangeFault();
}

QCoro::Task<> VideoConfig::sendLegacyVideo() {
    co_await context_.session.setLegacyVideo(legacyVideo_, Requester::Operator);
}

void VideoConfig::showVideo(const VideoSettings& video) {
    video_ = video;
    ControlsFromReply quiet(context_.state);
    page_.VidOption[static_cast<std::size_t>(video.route)]->setChecked(true);
    page_.BlankCheck[0]->setChecked(video.blankOutput2);
    page_.BlankCheck[1]->setChecked(video.blankOutput1);
    page_.LVidOption[legacyOptionOf(video.blankOutput2, video.blankOutput1)]->setChecked(true);
    page_.PALCheck->setChecked(video.pal);
    page_.PALCheck2->setChecked(video.pal);
    for (std::size_t camera = 0; camera < video.cameraPower.size(); ++camera) {
        page_.CamPwrCheck[camera]->setChecked(video.cameraPower[camera]);
        page_.LCamPwrCheck[camera]->setChecked(video.cameraPower[camera]);
    }
}

void VideoConfig::showLegacyVideo(const LegacyVideoSettings& video) {
    legacyVideo_ = video;
    ControlsFromReply quiet(context_.state);
    page_.LVidOption[legacyOptionOf(video.selection)]->setChecked(true);
    for (std::size_t camera = 0; camera < video.cameraPower.size(); ++camera) {
        page_.LCamPwrCheck[camera]->setChecked(video.cameraPower[camera]);
    }
}

void VideoConfig::enableFramesForUnitType() {
    const Byte type = context_.status.UnitVariant();
    page_.VidConfigFrame->setEnabled(type == 0);
    page_.VideoFrame->setEnabled(type > 1);
}

}  // namespace halvex
