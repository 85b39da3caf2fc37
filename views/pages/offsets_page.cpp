#include "views/pages/offsets_page.h"
#include "views/pages/page_parts.h"

#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QVBoxLayout>

#include "views/widgets/led_display.h"

namespace halvex {

namespace {
QPushButton* makeButton(const char* name, const char* caption, const char* tip, QWidget* parent) {
    return namedButton(QString::fromLatin1(name), QString::fromLatin1(caption),
                       QString::fromLatin1(tip), parent);
}

QLabel* makeReading(const char* name, QWidget* parent) {
    auto* label = new QLabel(parent);
    label->setObjectName(QString::fromLatin1(name));
    label->setFrameShape(QFrame::StyledPanel);
    label->setMinimumWidth(90);
    label->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    return label;
}

}  // namespace

OffsetsPage::OffsetsPage(QWidget* parent) : QWidget(parent) {
    setObjectName(QStringLiteral("OffsetsPage"));
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(12, 12, 12, 12);
    layout->setSpacing(12);
    Label2_6 = new QLabel(QStringLiteral("Angle Offsets Adjustment"), this);
    Label2_6->setObjectName(QStringLiteral("Label2_6"));
    QFont heading = Label2_6->font();
    heading.setBold(true);
    heading.setPointSizeF(heading.pointSizeF() * 1.2);
    Label2_6->setFont(heading);
    layout->addWidget(Label2_6);

    auto* row = new QHBoxLayout;
    row->setSpacing(12);
    row->addWidget(buildOffsetBox(), 3);
    row->addWidget(buildReadingsBox(), 2);
    layout->addLayout(row);
    layout->addStretch(1);
}

QWidget* OffsetsPage::buildOffsetBox() {
    auto* box = new QGroupBox(QStringLiteral("Offsets"), this);
    auto* grid = new QGridLayout(box);
    grid->setHorizontalSpacing(10);
    grid->setVerticalSpacing(8);

    PanCorLED = angleLed(QStringLiteral("PanCorLED"), box);
    TiltCorLED = angleLed(QStringLiteral("TiltCorLED"), box);
    const AngleStepRow panSteps = makeAngleStepRow(QStringLiteral("PanCorBut"), box);
    const AngleStepRow tiltSteps = makeAngleStepRow(QStringLiteral("TiltCorBut"), box);
    PanCorBut = panSteps.buttons;
    TiltCorBut = tiltSteps.buttons;
    ClrLEDBut_2 = makeButton("ClrLEDBut_2", "CL", nullptr, box);
    ClrLEDBut_3 = makeButton("ClrLEDBut_3", "CL", nullptr, box);
    for (QPushButton* clear : {ClrLEDBut_2, ClrLEDBut_3}) {
        clear->setFixedWidth(36);
    }
    grid->addWidget(new QLabel(QStringLiteral("Pan"), box), 0, 0);
    grid->addWidget(PanCorLED, 0, 1);
    grid->addWidget(panSteps.row, 0, 2);
    grid->addWidget(ClrLEDBut_2, 0, 3);
    grid->addWidget(new QLabel(QStringLiteral("Tilt"), box), 1, 0);
    grid->addWidget(TiltCorLED, 1, 1);
    grid->addWidget(tiltSteps.row, 1, 2);
    grid->addWidget(ClrLEDBut_3, 1, 3);
    grid->setColumnStretch(3, 1);

    GetAlignBut =
        makeButton("GetAlignBut", "Get Current Offsets", "Retrieve The Current Offset Values", box);
    ZeroOffBut = makeButton("ZeroOffBut", "Zero Offsets", "Clear Offset Values To Zero", box);
    SetCorBut = makeButton(
        "SetCorBut", "Set Angle Offsets",
        "Align Platform So The Centered Positions Are Offset By The Entered Values", box);
    AlignCorBut =
        makeButton("AlignCorBut", "Align To Coordinates",
                   "Align Platform So The Current Position Equals The Entered Values", box);
    AlignCenBut = makeButton("AlignCenBut", "Align To Center",
                             "Align Platform So The Current Position Equals 0/0", box);
    auto* buttons = new QGridLayout;
    buttons->addWidget(GetAlignBut, 0, 0);
    buttons->addWidget(ZeroOffBut, 0, 1);
    buttons->addWidget(SetCorBut, 1, 0);
    buttons->addWidget(AlignCorBut, 1, 1);
    buttons->addWidget(AlignCenBut, 2, 0, 1, 2);
    grid->addLayout(buttons, 2, 0, 1, 4);
    return box;
}

QWidget* OffsetsPage::buildReadingsBox() {
    auto* box = new QGroupBox(QStringLiteral("Resolvers And Encoders"), this);
    auto* grid = new QGridLayout(box);
    grid->setHorizontalSpacing(10);
    grid->addWidget(new QLabel(QStringLiteral("Pan"), box), 0, 1, Qt::AlignHCenter);
    grid->addWidget(new QLabel(QStringLiteral("Tilt"), box), 0, 2, Qt::AlignHCenter);

    Label1_18 = makeReading("Label1_18", box);
    Label1_19 = makeReading("Label1_19", box);
    Label39 = makeReading("Label39", box);
    Label40 = makeReading("Label40", box);
    Pindex = makeReading("Pindex", box);
    Tindex = makeReading("Tindex", box);
    grid->addWidget(new QLabel(QStringLiteral("Center"), box), 1, 0);
    grid->addWidget(Label1_18, 1, 1);
    grid->addWidget(Label1_19, 1, 2);
    grid->addWidget(new QLabel(QStringLiteral("Alignment"), box), 2, 0);
    grid->addWidget(Label39, 2, 1);
    grid->addWidget(Label40, 2, 2);
    grid->addWidget(new QLabel(QStringLiteral("Index"), box), 3, 0);
    grid->addWidget(Pindex, 3, 1);
    grid->addWidget(Tindex, 3, 2);

    GetCenBut =
        makeButton("GetCenBut", "Get Center Pos",
                   "Returns The Pan & Tilt Resolver Center Readings In Resolver Units", box);
    SetCenBut = makeButton(
        "SetCenBut", "Set Center Pos",
        "Sets The Current Platform Position As Center Position And Aligns The Resolvers", box);
    grid->addWidget(GetCenBut, 4, 0, 1, 3);
    grid->addWidget(SetCenBut, 5, 0, 1, 3);
    grid->setRowStretch(6, 1);
    return box;
}

}  // namespace halvex
