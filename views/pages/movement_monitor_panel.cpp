#include "views/pages/movement_monitor_panel.h"
#include "views/pages/page_parts.h"

#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QVBoxLayout>

namespace halvex {

namespace {
QLabel* makeFigure(const char* name, const char* text, QWidget* parent) {
    auto* label = new QLabel(QString::fromLatin1(text), parent);
    label->setObjectName(QString::fromLatin1(name));
    label->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    label->setMinimumWidth(64);
    return label;
}
}  // namespace

MovementMonitorPanel::MovementMonitorPanel(QWidget* parent) : QWidget(parent) {
    setObjectName(QStringLiteral("MovementMonitorPanel"));
    auto* outer = new QVBoxLayout(this);
    outer->setContentsMargins(0, 0, 0, 0);
    auto* box = new QGroupBox(QStringLiteral("Movement Monitor"), this);
    outer->addWidget(box);
    auto* layout = new QVBoxLayout(box);

    // Headings over the eight-character columns of the log lines. A size
    // smaller than the page's text keeps a whole line in view beside the
    // other columns of the page.
    QFont logFont = fixedPitchFont();
    logFont.setPointSizeF(QFont().pointSizeF() * 0.9);
    auto* heading =
        new QLabel(QStringLiteral("  To Pan From Pan Pan Move   To Tilt FromTilt TiltMove"), box);
    heading->setFont(logFont);
    heading->setContentsMargins(4, 0, 0, 0);
    layout->addWidget(heading);

    MoveList = new QListWidget(box);
    MoveList->setObjectName(QStringLiteral("MoveList"));
    MoveList->setFont(logFont);
    layout->addWidget(MoveList, 1);

    auto* figures = new QGridLayout;
    figures->setHorizontalSpacing(12);
    figures->addWidget(new QLabel(QStringLiteral("Largest"), box), 0, 1, Qt::AlignRight);
    figures->addWidget(new QLabel(QStringLiteral("Average"), box), 0, 2, Qt::AlignRight);
    figures->addWidget(new QLabel(QStringLiteral("Pan"), box), 1, 0);
    figures->addWidget(new QLabel(QStringLiteral("Tilt"), box), 2, 0);
    Label6 = makeFigure("Label6", "0.00", box);
    Label1_24 = makeFigure("Label1_24", "0.000", box);
    Label1_22 = makeFigure("Label1_22", "0.00", box);
    Label1_25 = makeFigure("Label1_25", "0.000", box);
    figures->addWidget(Label6, 1, 1);
    figures->addWidget(Label1_24, 1, 2);
    figures->addWidget(Label1_22, 2, 1);
    figures->addWidget(Label1_25, 2, 2);
    MoveCountLabel = makeFigure("MoveCountLabel", "0 Moves", box);
    figures->addWidget(MoveCountLabel, 0, 3, 1, 1, Qt::AlignRight);
    figures->setColumnStretch(3, 1);
    layout->addLayout(figures);

    auto* buttons = new QHBoxLayout;
    MoveMonBut = new QPushButton(QStringLiteral("Start Monitor"), box);
    MoveMonBut->setObjectName(QStringLiteral("MoveMonBut"));
    MoveClearBut = new QPushButton(QStringLiteral("Clear"), box);
    MoveClearBut->setObjectName(QStringLiteral("MoveClearBut"));
    buttons->addWidget(MoveMonBut);
    buttons->addWidget(MoveClearBut);
    buttons->addStretch(1);
    layout->addLayout(buttons);
}

}  // namespace halvex
