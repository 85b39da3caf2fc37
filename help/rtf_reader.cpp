#include "help/rtf_reader.h"

#include <QFile>
#include <QFileInfo>
#include <QTextDocument>
#include <algorithm>
#include <string>
#include <vector>

#include "help/rtf_words.h"
#include "help/rtf_writer.h"

namespace halvex {

namespace {

using rtf::CharState;
using rtf::ParaState;
using rtf::Word;

constexpr int kMaxFontNameLength = 200;
constexpr int kMaxWordLength = 32;
constexpr int kMaxParameterDigits = 10;

enum class Destination { Text, FontTable, ColourTable, Skip };

struct GroupState {
    CharState chars;
    ParaState para;
    Destination destination = Destination::Text;
    int unicodeSkip = 1;
};

class Reader {
  public:
    Reader(const QByteArray& rtf, QTextDocument& document) : in_(rtf), writer_(document) {}

    void run() {
        while (pos_ < in_.size() && !finished_) {
            const auto byte = static_cast<std::uint8_t>(in_[pos_]);
            switch (byte) {
                case '{':
                    ++pos_;
                    openGroup();
                    break;
                case '}':
                    ++pos_;
                    closeGroup();
                    break;
                case '\\':
                    ++pos_;
                    readControl();
                    break;
                case '\r':
                case '\n':
                    ++pos_;
                    break;
                default:
                    ++pos_;
                    textByte(byte);
                    break;
            }
        }
        writer_.finish(state_.para);
    }

  private:
    void openGroup() {
        pendingSkip_ = 0;
        if (saved_.size() < static_cast<std::size_t>(kMaxRtfGroupDepth)) {
            saved_.push_back(state_);
        } else {
            ++overflowDepth_;
        }
    }

    void closeGroup() {
        pendingSkip_ = 0;
        if (overflowDepth_ > 0) {
            --overflowDepth_;
            return;
        }
        if (saved_.empty()) {
            finished_ = true;
            return;
        }
        if (state_.destination == Destination::FontTable) {
            finishFontEntry();
        }
        state_ = saved_.back();
        saved_.pop_back();
        // The document ends with the group that began it.
        finished_ = saved_.empty();
    }

    void readControl() {
        if (pos_ >= in_.size()) {
            return;
        }
        const char first = in_[pos_];
        if (isLetter(first)) {
            readWord();
            return;
        }
        ++pos_;
        if (first == '\'') {
            readHexByte();
            return;
        }
        if (consumeSkip()) {
            return;
        }
        switch (first) {
            case '\\':
            case '{':
            case '}':
                character(QChar(static_cast<char16_t>(first)));
                break;
            case '~':
                character(u'\u00A0');
                break;
            case '_':
                character(u'\u2011');
                break;
            case '*':
                state_.destination = Destination::Skip;
                break;
            case '\r':
            case '\n':
                paragraph();
                break;
            default:  // \- optional hyphen, \| \: index marks, unknown symbols
                break;
        }
    }

    void readWord() {
        std::string name;
        while (pos_ < in_.size() && isLetter(in_[pos_])) {
            if (name.size() < static_cast<std::size_t>(kMaxWordLength)) {
                name.push_back(in_[pos_]);
            }
            ++pos_;
        }
        bool hasParameter = false;
        long long parameter = 0;
        bool negative = false;
        if (pos_ + 1 < in_.size() && in_[pos_] == '-' && isDigit(in_[pos_ + 1])) {
            negative = true;
            ++pos_;
        }
        int digits = 0;
        while (pos_ < in_.size() && isDigit(in_[pos_])) {
            if (digits++ < kMaxParameterDigits) {
                parameter = parameter * 10 + (in_[pos_] - '0');
            }
            hasParameter = true;
            ++pos_;
        }
        if (pos_ < in_.size() && in_[pos_] == ' ') {
            ++pos_;
        }
        parameter = std::clamp(negative ? -parameter : parameter, -2147483648LL, 2147483647LL);
        applyWord(rtf::lookUpWord(name), hasParameter, static_cast<int>(parameter));
    }

    void applyWord(rtf::WordMeaning meaning, bool hasParameter, int parameter) {
        const bool on = !hasParameter || parameter != 0;
        CharState& chars = state_.chars;
        ParaState& para = state_.para;
        // \bin data is raw bytes wherever it stands, even in a skipped group.
        if (meaning.word == Word::Binary) {
            pos_ += std::min<qsizetype>(std::max(parameter, 0), in_.size() - pos_);
            return;
        }
        if (consumeSkip()) {
            return;
        }
        switch (meaning.word) {
            case Word::FontTable:
                state_.destination = Destination::FontTable;
                break;
            case Word::ColourTable:
                state_.destination = Destination::ColourTable;
                colour_ = {};
                break;
            case Word::SkippedDestination:
                state_.destination = Destination::Skip;
                break;
            case Word::DefaultFont:
                writer_.setDefaultFont(parameter);
                break;
            case Word::Font:
                if (state_.destination == Destination::FontTable) {
                    fontIndex_ = parameter;
                    fontName_.clear();
                    fontFixedPitch_ = false;
                } else {
                    chars.font = parameter;
                }
                break;
            case Word::FontFamilyModern:
                fontFixedPitch_ = true;
                break;
            case Word::Red:
            case Word::Green:
            case Word::Blue:
                colourComponent(meaning.word, parameter);
                break;
            case Word::Paragraph:
                paragraph();
                break;
            case Word::ParagraphDefaults:
                para = ParaState{};
                break;
            case Word::Line:
                character(QChar::LineSeparator);
                break;
            case Word::Tab:
                character(u'\t');
                break;
            case Word::LeftIndent:
                para.leftTwips = parameter;
                break;
            case Word::RightIndent:
                para.rightTwips = parameter;
                break;
            case Word::FirstLineIndent:
                para.firstTwips = parameter;
                break;
            case Word::SpaceBefore:
                para.beforeTwips = parameter;
                break;
            case Word::SpaceAfter:
                para.afterTwips = parameter;
                break;
            case Word::AlignLeft:
                para.alignment = Qt::AlignLeft;
                break;
            case Word::AlignRight:
                para.alignment = Qt::AlignRight;
                break;
            case Word::AlignCentre:
                para.alignment = Qt::AlignHCenter;
                break;
            case Word::AlignJustify:
                para.alignment = Qt::AlignJustify;
                break;
            case Word::Plain:
                chars = CharState{};
                break;
            case Word::Bold:
                chars.bold = on;
                break;
            case Word::Italic:
                chars.italic = on;
                break;
            case Word::Underline:
                chars.underline = on;
                break;
            case Word::UnderlineNone:
                chars.underline = false;
                break;
            case Word::Strike:
                chars.strike = on;
                break;
            case Word::FontSize:
                chars.halfPoints =
                    hasParameter && parameter > 0 ? parameter : rtf::kDefaultHalfPoints;
                break;
            case Word::Colour:
                chars.colour = parameter;
                break;
            case Word::Unicode:
                unicode(parameter);
                break;
            case Word::UnicodeSkip:
                state_.unicodeSkip = std::clamp(parameter, 0, 10);
                break;
            case Word::Symbol:
                character(QChar(meaning.symbol));
                break;
            case Word::FontFamilyOther:
            case Word::Binary:
            case Word::Unknown:
                break;
        }
    }

    void readHexByte() {
        int value = 0;
        for (int i = 0; i < 2; ++i) {
            const int digit = pos_ < in_.size() ? hexValue(in_[pos_]) : -1;
            if (digit < 0) {
                return;
            }
            value = value * 16 + digit;
            ++pos_;
        }
        if (!consumeSkip()) {
            character(rtf::windows1252(static_cast<std::uint8_t>(value)));
        }
    }

    void textByte(std::uint8_t byte) {
        if (consumeSkip()) {
            return;
        }
        if (byte == '\t') {
            character(u'\t');
        } else if (byte >= 0x20) {
            character(rtf::windows1252(byte));
        }
    }

    // RTF stores negative values for characters above U+7FFF.
    void unicode(int parameter) {
        const int unit = parameter < 0 ? parameter + 65536 : parameter;
        pendingSkip_ = state_.unicodeSkip;
        if (unit <= 0 || unit > 0xFFFF) {
            return;
        }
        const QChar c(static_cast<char16_t>(unit));
        if (c.isHighSurrogate()) {
            highSurrogate_ = c;
            return;
        }
        if (c.isLowSurrogate()) {
            if (!highSurrogate_.isNull() && state_.destination == Destination::Text) {
                appendText(highSurrogate_);
                appendText(c);
            }
            highSurrogate_ = QChar();
            return;
        }
        character(c);
    }

    // The characters standing in for a \u character in readers without
    // Unicode are dropped; a control word or symbol counts as one of them.
    bool consumeSkip() {
        if (pendingSkip_ <= 0) {
            return false;
        }
        --pendingSkip_;
        return true;
    }

    void character(QChar c) {
        highSurrogate_ = QChar();
        switch (state_.destination) {
            case Destination::Text:
                appendText(c);
                break;
            case Destination::FontTable:
                fontNameCharacter(c);
                break;
            case Destination::ColourTable:
                if (c == u';') {
                    finishColourEntry();
                }
                break;
            case Destination::Skip:
                break;
        }
    }

    void appendText(QChar c) { writer_.append(c, state_.chars); }

    void paragraph() {
        if (state_.destination == Destination::Text) {
            writer_.endParagraph(state_.para);
        }
    }

    void fontNameCharacter(QChar c) {
        if (c == u';') {
            finishFontEntry();
        } else if (fontName_.size() < kMaxFontNameLength) {
            fontName_.append(c);
        }
    }

    void finishFontEntry() {
        writer_.defineFont(fontIndex_, fontName_.trimmed(), fontFixedPitch_);
        fontName_.clear();
        fontFixedPitch_ = false;
    }

    void colourComponent(Word word, int value) {
        const int component = std::clamp(value, 0, 255);
        colour_.set = true;
        if (word == Word::Red) {
            colour_.red = component;
        } else if (word == Word::Green) {
            colour_.green = component;
        } else {
            colour_.blue = component;
        }
    }

    void finishColourEntry() {
        writer_.defineColour(colour_.set ? QColor(colour_.red, colour_.green, colour_.blue)
                                         : QColor());
        colour_ = {};
    }

    static bool isLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }
    static bool isDigit(char c) { return c >= '0' && c <= '9'; }
    static int hexValue(char c) {
        if (isDigit(c)) {
            return c - '0';
        }
        if (c >= 'a' && c <= 'f') {
            return c - 'a' + 10;
        }
        if (c >= 'A' && c <= 'F') {
            return c - 'A' + 10;
        }
        return -1;
    }

    struct PendingColour {
        bool set = false;
        int red = 0;
        int green = 0;
        int blue = 0;
    };

    const QByteArray& in_;
    qsizetype pos_ = 0;
    bool finished_ = false;
    rtf::DocumentWriter writer_;

    GroupState state_;
    std::vector<GroupState> saved_;
    int overflowDepth_ = 0;
    int pendingSkip_ = 0;
    QChar highSurrogate_;

    int fontIndex_ = 0;
    QString fontName_;
    bool fontFixedPitch_ = false;
    PendingColour colour_;
};

}  // namespace

bool readRtf(const QByteArray& rtf, QTextDocument& document) {
    if (!rtf.startsWith("{\\rtf")) {
        return false;
    }
    // Undo steps for a document nobody edits would only cost memory.
    const bool undo = document.isUndoRedoEnabled();
    document.setUndoRedoEnabled(false);
    document.clear();
    Reader(rtf, document).run();
    document.setUndoRedoEnabled(undo);
    return true;
}

bool loadRtfFile(const QString& path, QTextDocument& document, QString* error) {
    const auto fail = [&](const QString& reason) {
        if (error) {
            *error =
                QStringLiteral("The help file \"%1\" %2").arg(QFileInfo(path).fileName(), reason);
        }
        return false;
    };
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        return fail(QStringLiteral("could not be read: %1.").arg(file.errorString()));
    }
    const QByteArray bytes = file.read(kMaxRtfBytes + 1);
    if (file.error() != QFileDevice::NoError) {
        return fail(QStringLiteral("could not be read: %1.").arg(file.errorString()));
    }
    if (bytes.size() > kMaxRtfBytes) {
        return fail(QStringLiteral("is larger than 16 MB and was not read."));
    }
    if (!readRtf(bytes, document)) {
        return fail(QStringLiteral("is not an RTF document."));
    }
    return true;
}

}  // namespace halvex
