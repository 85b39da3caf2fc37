#include "window/help_box.h"

#include <QEvent>
#include <QTextBlock>
#include <QTextCursor>
#include <QVBoxLayout>
#include <vector>

#include "help/rtf_reader.h"
#include "views/widgets/instrument_light.h"
#include "window/window_placement.h"

namespace halvex {

namespace {
// Where a piece of text keeps the colour the help file gave it.
constexpr int kFileColour = QTextFormat::UserProperty + 1;

// The help files colour some text themselves (headings, notes), dark on a
// white page. On a dark page that colour's lightness is turned over, dark
// blue becoming light blue; by night it takes the page's dim red, as all
// other text does.
QColor shownColour(const QColor& fileColour, const QPalette& palette) {
    if (instrumentLight() == InstrumentLight::Night) {
        return palette.color(QPalette::Text);
    }
    if (palette.color(QPalette::Base).lightnessF() >= 0.5) {
        return fileColour;
    }
    const QColor hsl = fileColour.toHsl();
    return QColor::fromHslF(hsl.hslHueF(), hsl.hslSaturationF(), 1.0 - hsl.lightnessF());
}

void fitTextColours(QTextDocument& document, const QPalette& palette) {
    struct Piece {
        int start;
        int end;
        QColor fileColour;
    };
    std::vector<Piece> pieces;
    for (QTextBlock block = document.begin(); block.isValid(); block = block.next()) {
        for (auto it = block.begin(); !it.atEnd(); ++it) {
            const QTextFragment fragment = it.fragment();
            const QTextCharFormat format = fragment.charFormat();
            QColor fileColour = format.property(kFileColour).value<QColor>();
            if (!fileColour.isValid() && format.hasProperty(QTextFormat::ForegroundBrush)) {
                fileColour = format.foreground().color();
            }
            if (fileColour.isValid()) {
                pieces.push_back(
                    {fragment.position(), fragment.position() + fragment.length(), fileColour});
            }
        }
    }
    // Changed only after the walk: a change may merge or split fragments.
    for (const Piece& piece : pieces) {
        QTextCursor cursor(&document);
        cursor.setPosition(piece.start);
        cursor.setPosition(piece.end, QTextCursor::KeepAnchor);
        QTextCharFormat change;
        change.setProperty(kFileColour, piece.fileColour);
        change.setForeground(shownColour(piece.fileColour, palette));
        cursor.mergeCharFormat(change);
    }
}
}  // namespace

HelpBox::HelpBox(QWidget* parent) : QWidget(parent) {
    setObjectName(QStringLiteral("HelpBox"));
    setWindowTitle(QStringLiteral("Camera Control And Configuration"));
    // The console ends with its main window, whether or not help is open.
    setAttribute(Qt::WA_QuitOnClose, false);
    RichTextBox1 = new QTextBrowser(this);
    RichTextBox1->setObjectName(QStringLiteral("RichTextBox1"));
    RichTextBox1->setOpenLinks(false);
    Command1 = new QPushButton(QStringLiteral("Close"), this);
    Command1->setObjectName(QStringLiteral("Command1"));
    connect(Command1, &QPushButton::clicked, this, [this] { Command1_Click(); });
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(RichTextBox1, 1);
    layout->addWidget(Command1, 0, Qt::AlignRight);
    new WindowPlacement(*this, QStringLiteral("Help"), QSize(640, 560));
}

bool HelpBox::showHelp(const QString& path, const QString& title, QString* error) {
    if (!loadRtfFile(path, *RichTextBox1->document(), error)) {
        return false;
    }
    fitTextColours(*RichTextBox1->document(), palette());
    RichTextBox1->moveCursor(QTextCursor::Start);
    setWindowTitle(title);
    show();
    raise();
    activateWindow();
    return true;
}

void HelpBox::changeEvent(QEvent* event) {
    QWidget::changeEvent(event);
    if (event->type() == QEvent::PaletteChange) {
        fitTextColours(*RichTextBox1->document(), palette());
    }
}

}  // namespace halvex
