#include "help/rtf_writer.h"

#include <QTextBlockFormat>
#include <QTextCharFormat>
#include <algorithm>

namespace halvex::rtf {

namespace {

// Tables of a damaged file could otherwise grow with every entry it holds.
constexpr std::size_t kMaxFonts = 1000;
constexpr std::size_t kMaxColours = 1000;
// Indents and spacing are kept within a page width (22 inches), so a damaged
// value cannot push text miles off the viewer.
constexpr int kMaxTwips = 22 * 1440;

// Twips (1/1440 inch) to the document's pixels (1/96 inch).
double pixels(int twips) {
    return std::clamp(twips, -kMaxTwips, kMaxTwips) / 15.0;
}

QTextBlockFormat blockFormat(const ParaState& para) {
    QTextBlockFormat format;
    format.setLeftMargin(pixels(para.leftTwips));
    format.setRightMargin(pixels(para.rightTwips));
    format.setTextIndent(pixels(para.firstTwips));
    format.setTopMargin(pixels(para.beforeTwips));
    format.setBottomMargin(pixels(para.afterTwips));
    format.setAlignment(para.alignment);
    return format;
}

}  // namespace

void DocumentWriter::append(QChar c, const CharState& chars) {
    if (!(chars == textState_)) {
        flush();
        textState_ = chars;
    }
    text_.append(c);
}

void DocumentWriter::endParagraph(const ParaState& para) {
    flush();
    cursor_.setBlockFormat(blockFormat(para));
    cursor_.insertBlock();
}

void DocumentWriter::finish(const ParaState& para) {
    flush();
    cursor_.setBlockFormat(blockFormat(para));
}

void DocumentWriter::defineFont(int index, const QString& family, bool fixedPitch) {
    if (family.isEmpty() || (fonts_.size() >= kMaxFonts && !fonts_.count(index))) {
        return;
    }
    fonts_[index] = {family, fixedPitch};
}

void DocumentWriter::defineColour(const QColor& colour) {
    if (colours_.size() < kMaxColours) {
        colours_.push_back(colour);
    }
}

void DocumentWriter::flush() {
    if (!text_.isEmpty()) {
        cursor_.insertText(text_, charFormat(textState_));
        text_.clear();
    }
}

QTextCharFormat DocumentWriter::charFormat(const CharState& chars) const {
    QTextCharFormat format;
    format.setFontWeight(chars.bold ? QFont::Bold : QFont::Normal);
    format.setFontItalic(chars.italic);
    format.setFontUnderline(chars.underline);
    format.setFontStrikeOut(chars.strike);
    format.setFontPointSize(std::clamp(chars.halfPoints, 2, 400) / 2.0);
    const auto font = fonts_.find(chars.font < 0 ? defaultFont_ : chars.font);
    if (font != fonts_.end()) {
        format.setFontFamilies({font->second.family});
        format.setFontFixedPitch(font->second.fixedPitch);
    }
    if (chars.colour > 0 && chars.colour < static_cast<int>(colours_.size()) &&
        colours_[static_cast<std::size_t>(chars.colour)].isValid()) {
        format.setForeground(colours_[static_cast<std::size_t>(chars.colour)]);
    }
    return format;
}

}  // namespace halvex::rtf
