#include "video/on_screen_display.h"

#include <QTextBoundaryFinder>
#include <algorithm>

#include "console/controls_from_reply.h"
#include "console/handler_wiring.h"
#include "protocol/senders.h"
#include "protocol/vocabulary.h"
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

constexpr int kLines = 12;

// The angle and name displays share their layout: the message of either
// from its controls (the name display has no sign box).
template <class M>
std::vector<Byte> displayMessage(const QScrollBar* line, const QCheckBox* on, const QCheckBox* sign,
                                 bool store) {
    using D = vocab::DisplaySetting<M>;
    std::vector<Byte> message = vocab::blank<M>();
    // The bar's value as the whole byte, the bits added to it: a value past
    // a byte is a range fault.
    Byte setting = checkedByte(line->value());
    const auto add = [&setting](vocab::Bit<M> bit, bool set) {
        if (set) {
            setting = vocab::withBit(setting, bit, true);
        }
    };
    add(D::kOn, on->isChecked());
    add(D::kSigned, sign != nullptr && sign->isChecked());
    add(D::kStore, store);
    vocab::put(message, D::kSetting, setting);
    return message;
}

// Line numbers the page cannot show come back as line 0.
template <class M>
int lineOf(const ByteTable& rx) {
    const auto line = static_cast<int>(vocab::get(rx, vocab::DisplaySetting<M>::kLine));
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
    context_.receiver.registerDecoder(vocab::AngleDisplay::kCode, [this] { decodeAngleDisplay(); });
    context_.receiver.registerDecoder(vocab::NameDisplay::kCode, [this] { decodeNameDisplay(); });
}

void OnScreenDisplay::AngleDisplay_Change(bool store) {
    if (!context_.state.UserClickEnabled) {
        return;
    }
    sendMessage(context_.state, context_.link,
                displayMessage<vocab::AngleDisplay>(page_.AngLineScroll, page_.AngDisCheck,
                                                    page_.AngSgnCheck, store));
}

void OnScreenDisplay::NameDisplay_Change(bool store) {
    if (!context_.state.UserClickEnabled) {
        return;
    }
    sendMessage(
        context_.state, context_.link,
        displayMessage<vocab::NameDisplay>(page_.NumLineScroll, page_.NumDisCheck, nullptr, store));
}

void OnScreenDisplay::NameSaveBut_Click() {
    if (!context_.state.UserClickEnabled) {
        return;
    }
    // The unit is not known to answer it; nobody waits for a reply.
    sendMessage(context_.state, context_.link, siteNameMessage(page_.NameText->text()));
}

std::vector<Byte> OnScreenDisplay::siteNameMessage(const QString& text) {
    namespace site = vocab::site_name;
    std::vector<Byte> message = vocab::blank<vocab::SiteName>();
    std::fill(message.begin() + site::kText, message.begin() + site::kText + site::kTextLength,
              Byte{' '});
    // Characters as the operator sees them: a letter with its accents or an
    // emoji is one character, however many codes it takes.
    const QString composed = text.normalized(QString::NormalizationForm_C);
    QTextBoundaryFinder characters(QTextBoundaryFinder::Grapheme, composed);
    int start = 0;
    for (int at = site::kText; at < site::kText + site::kTextLength; ++at) {
        const int end = characters.toNextBoundary();
        if (end < 0) {
            break;
        }
        message[static_cast<std::size_t>(at)] = siteNameByte(composed.mid(start, end - start));
        start = end;
    }
    return message;
}

void OnScreenDisplay::decodeAngleDisplay() {
    ControlsFromReply quiet(context_.state);
    using D = vocab::angle_display;
    const ByteTable& rx = context_.state.RxBuffer;
    const auto setting = static_cast<Byte>(vocab::get(rx, D::kSetting));
    page_.AngDisCheck->setChecked(vocab::isSet(setting, D::kOn));
    page_.AngSgnCheck->setChecked(vocab::isSet(setting, D::kSigned));
    page_.AngLineScroll->setValue(lineOf<vocab::AngleDisplay>(rx));
}

void OnScreenDisplay::decodeNameDisplay() {
    ControlsFromReply quiet(context_.state);
    const ByteTable& rx = context_.state.RxBuffer;
    const auto setting = static_cast<Byte>(vocab::get(rx, vocab::name_display::kSetting));
    page_.NumDisCheck->setChecked(vocab::isSet(setting, vocab::name_display::kOn));
    page_.NumLineScroll->setValue(lineOf<vocab::NameDisplay>(rx));
}

}  // namespace halvex
