#include "video/on_screen_display.h"

#include "console/controls_from_reply.h"
#include "console/handler_wiring.h"
#include "views/pages/video_page.h"

namespace halvex {

namespace {
constexpr int kLines = 12;

// Line numbers the page cannot show come back as line 0.
int shownLine(int line) {
    return line >= kLines ? 0 : line;
}
}  // namespace

OnScreenDisplay::OnScreenDisplay(ConsoleContext& context, VideoPage& page, QObject* parent)
    : QObject(parent), context_(context), page_(page) {
    connectControls();
    connect(&context_.session, &Session::angleDisplayReported, this,
            &OnScreenDisplay::showAngleDisplay);
    connect(&context_.session, &Session::nameDisplayReported, this,
            &OnScreenDisplay::showNameDisplay);
}

void OnScreenDisplay::connectControls() {
    FormState& state = context_.state;
    const auto angleChange = [this] { return AngleDisplay_Change(false); };
    const auto nameChange = [this] { return NameDisplay_Change(false); };
    onEvent(state, page_.AngDisCheck, &QCheckBox::toggled, this, "AngDisCheck_Click", angleChange);
    onEvent(state, page_.AngSgnCheck, &QCheckBox::toggled, this, "AngSgnCheck_Click", angleChange);
    onEvent(state, page_.AngLineScroll, &QScrollBar::valueChanged, this, "AngLineScroll_Change",
            angleChange);
    onEvent(state, page_.AngStorBut, &QPushButton::clicked, this, "AngStorBut_Click",
            [this] { return AngleDisplay_Change(true); });
    onEvent(state, page_.NumDisCheck, &QCheckBox::toggled, this, "NumDisCheck_Click", nameChange);
    onEvent(state, page_.NumLineScroll, &QScrollBar::valueChanged, this, "NumLineScroll_Change",
            nameChange);
    onEvent(state, page_.NameStoreBut, &QPushButton::clicked, this, "NameStoreBut_Click",
            [this] { return NameDisplay_Change(true); });
    onEvent(state, page_.NameSaveBut, &QPushButton::clicked, this, "NameSaveBut_Click",
            [this] { return NameSaveBut_Click(); });
}

QCoro::Task<> OnScreenDisplay::AngleDisplay_Change(bool store) {
    if (!context_.state.UserClickEnabled) {
        co_return;
    }
    const OsdSetting setting{page_.AngDisCheck->isChecked(), page_.AngSgnCheck->isChecked(),
                             page_.AngLineScroll->value()};
    Session& session = context_.session;
    auto sending = store ? session.storeAngleDisplayAsInitial(setting, Requester::Operator)
                         : session.setAngleDisplay(setting, Requester::Operator);
    const Outcome outcome = co_await std::move(sending);
    outcome.raiseRangeFault();
}

QCoro::Task<> OnScreenDisplay::NameDisplay_Change(bool store) {
    if (!context_.state.UserClickEnabled) {
        co_return;
    }
    // The name display has no sign to show.
    const OsdSetting setting{page_.NumDisCheck->isChecked(), false, page_.NumLineScroll->value()};
    Session& session = context_.session;
    auto sending = store ? session.storeNameDisplayAsInitial(setting, Requester::Operator)
                         : session.setNameDisplay(setting, Requester::Operator);
    const Outcome outcome = co_await std::move(sending);
    outcome.raiseRangeFault();
}

QCoro::Task<> OnScreenDisplay::NameSaveBut_Click() {
    if (!context_.state.UserClickEnabled) {
        co_return;
    }
    co_await context_.session.setSiteName(page_.NameText->text(), Requester::Operator);
}

void OnScreenDisplay::showAngleDisplay(const OsdSetting& setting) {
    ControlsFromReply quiet(context_.state);
    page_.AngDisCheck->setChecked(setting.on);
    page_.AngSgnCheck->setChecked(setting.signedAngles);
    page_.AngLineScroll->setValue(shownLine(setting.line));
}

void OnScreenDisplay::showNameDisplay(const OsdSetting& setting) {
    ControlsFromReply quiet(context_.state);
    page_.NumDisCheck->setChecked(setting.on);
    page_.NumLineScroll->setValue(shownLine(setting.line));
}

}  // namespace halvex
