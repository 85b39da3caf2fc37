#include "window/help_box.h"

#include <QVBoxLayout>

#include "help/rtf_reader.h"
#include "window/window_placement.h"

namespace halvex {

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
    RichTextBox1->moveCursor(QTextCursor::Start);
    setWindowTitle(title);
    show();
    raise();
    activateWindow();
    return true;
}

}  // namespace halvex
