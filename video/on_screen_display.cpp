#include "video/on_screen_display.h"

#include <QTextBoundaryFinder>

#include "console/controls_from_reply.h"
#include "console/handler_wiring.h"
#include "protocol/senders.h"
#include "views/pages/video_page.h"

namespace halvex {

namespace {
Byte siteNameByte(const QString& character) {
    // The low byte of a character's code, when it is a printable one; a
    // character made of several codes has no one code to send.
    const QList<uint> codes = character.toUcs4();
    const uint value = codes.size() == 1 ? codes.front() & 0xFF : 0;
    return static_cast<Byte>(value >= 32 && value <= 127 ? value : ' ');
}

constexpr int kDisplayOnBit = 4;
constexpr int kSignedBit = 5;
constexpr int kStoreBit = 6;
constexpr Byte kLineBits = 0x0F;
constexpr int kLines = 12;

Byte settingByte(const QScrollBar* line, const QCheckBox* on, const QCheckBox* sign, bool store) {
    Byte setting = checkedByte(line->value());
    if (on->isChecked()) {
        setting = SetBit(setting, kDisplayOnBit);
    }
    if (sign != nullptr && sign->isChecked()) {
        setting = SetBit(setting, kSignedBit);
    }
    if (store) {
        setting = SetBit(setting, kStoreBit);
    }
    return setting;
}

// Line numbers the page cannot show come back as line 0.
int lineOf(Byte setting) {
    const int line = setting & kLineBits;
    return line >= kLines ? 0 : line;
}
}  // namespace

OnScreenDisplay::OnScreenDisplay(ConsoleContext& context, VideoPage& page, QObject* parent)
    : QObject(parent), context_(context), page_(page) {
    connectControls();
}

void OnScreenDisplay::connectControls() {
    FormState& state = context_.state;
    const auto angleChange = [this] { AngleDisplay_Change(false); };
    const auto nameChange = [this] { NameDisplay_Change(false); };
    onEvent(state, page_.AngDisCheck, &QCheckBox::toggled, this, "AngDisCheck_Click", angleChange);
    onEvent(state, page_.AngSgnCheck, &QCheckBox::toggled, this, "AngSgnCheck_Click", angleChange);
    onEvent(state, page_.AngLineScroll, &QScrollBar::valueChanged, this, "AngLineScroll_Change",
            angleChange);
    onEvent(state, page_.AngStorBut, &QPushButton::clicked, this, "AngStorBut_Click",
            [this] { AngleDisplay_Change(true); });
    onEvent(state, page_.NumDisCheck, &QCheckBox::toggled, this, "NumDisCheck_Click", nameChange);
    onEvent(state, page_.NumLineScroll, &QScrollBar::valueChanged, this, "NumLineScroll_Change",
            nameChange);
    onEvent(state, page_.NameStoreBut, &QPushButton::clicked, this, "NameStoreBut_Click",
            [this] { NameDisplay_Change(true); });
    onEvent(state, page_.NameSaveBut, &QPushButton::clicked, this, "NameSaveBut_Click",
            [this] { NameSaveBut_Click(); });
}

void OnScreenDisplay::registerDecoders() {
    context_.receiver.registerDecoder(kAngleDisplay, [this] { decodeAngleDisplay(); });
    context_.receiver.registerDecoder(kNameDisplay, [this] { decodeNameDisplay(); });
}

void OnScreenDisplay::AngleDisplay_Change(bool store) {
    if (!context_.state.UserClickEnabled) {
        return;
    }
    sendMessage(context_.state, context_.link,
                {kAngleDisplay,
                 settingByte(page_.AngLineScroll, page_.AngDisCheck, page_.AngSgnCheck, store)});
}

void OnScreenDisplay::NameDisplay_Change(bool store) {
    if (!context_.state.UserClickEnabled) {
        return;
    }
    sendMessage(
        context_.state, context_.link,
        {kNameDisplay, settingByte(page_.NumLineScroll, page_.NumDisCheck, nullptr, store)});
}

void OnScreenDisplay::NameSaveBut_Click() {
    if (!context_.state.UserClickEnabled) {
        return;
    }
    // The unit is not known to answer it; nobody waits for a reply.
    sendMessage(context_.state, context_.link, siteNameMessage(page_.NameText->text()));
}

std::vector<Byte> OnScreenDisplay::siteNameMessage(const QString& text) {
    std::vector<Byte> message{kSiteName};
    // Twelve characters as the operator sees them: a letter with its accents
    // or an emoji is one character, however many codes it takes.
    const QString composed = text.normalized(QString::NormalizationForm_C);
    QTextBoundaryFinder characters(QTextBoundaryFinder::Grapheme, composed);
    int start = 0;
    while (message.size() < 1 + kNameLength) {
        const int end = characters.toNextBoundary();
        if (end < 0) {
            break;
        }
        message.push_back(siteNameByte(composed.mid(start, end - start)));
        start = end;
    }
    message.resize(1 + kNameLength, ' ');
    return message;
}

void OnScreenDisplay::decodeAngleDisplay() {
    ControlsFromReply quiet(context_.state);
    const Byte setting = context_.state.RxBuffer[1];
    page_.AngDisCheck->setChecked(BitIsSet(setting, kDisplayOnBit));
    page_.AngSgnCheck->setChecked(BitIsSet(setting, kSignedBit));
    page_.AngLineScroll->setValue(lineOf(setting));
}

void OnScreenDisplay::decodeNameDisplay() {
    ControlsFromReply quiet(context_.state);
    const Byte setting = context_.state.RxBuffer[1];
    page_.NumDisCheck->setChecked(BitIsSet(setting, kDisplayOnBit));
    page_.NumLineScroll->setValue(lineOf(setting));
}

}  // namespace halvex
