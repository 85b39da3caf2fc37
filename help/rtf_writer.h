#pragma once

// The document side of the help reader: runs of characters with their format,
// paragraphs with theirs, and the font and colour tables they refer to.

#include <QColor>
#include <QString>
#include <QTextCursor>
#include <map>
#include <vector>

class QTextCharFormat;
class QTextDocument;

namespace halvex::rtf {

inline constexpr int kDefaultHalfPoints = 24;  // RTF's 12 pt

struct CharState {
    bool bold = false;
    bool italic = false;
    bool underline = false;
    bool strike = false;
    int font = -1;  // -1: the document's default font
    int halfPoints = kDefaultHalfPoints;
    int colour = 0;  // 0: the viewer's own text colour

    bool operator==(const CharState&) const = default;
};

struct ParaState {
    int leftTwips = 0;
    int rightTwips = 0;
    int firstTwips = 0;
    int beforeTwips = 0;
    int afterTwips = 0;
    Qt::Alignment alignment = Qt::AlignLeft;
};

class DocumentWriter {
  public:
    // Appends to `document`, which the caller has emptied.
    explicit DocumentWriter(QTextDocument& document) : cursor_(&document) {}

    void append(QChar c, const CharState& chars);
    // A paragraph takes the format in force where it ends.
    void endParagraph(const ParaState& para);
    void finish(const ParaState& para);

    void setDefaultFont(int index) { defaultFont_ = index; }
    void defineFont(int index, const QString& family, bool fixedPitch);
    // The next entry of the colour table; an invalid colour stands for "auto".
    void defineColour(const QColor& colour);

  private:
    struct Font {
        QString family;
        bool fixedPitch = false;
    };

    void flush();
    QTextCharFormat charFormat(const CharState& chars) const;

    QTextCursor cursor_;
    QString text_;
    CharState textState_;
    int defaultFont_ = 0;
    std::map<int, Font> fonts_;
    std::vector<QColor> colours_;
};

}  // namespace halvex::rtf
