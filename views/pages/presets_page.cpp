#include "views/pages/presets_page.h"
#include "views/pages/page_parts.h"

#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QVBoxLayout>

#include "session/preset_table.h"
#include "views/widgets/led_display.h"

namespace halvex {

PresetsPage::PresetsPage(QWidget* parent) : QWidget(parent) {
    setObjectName(QStringLiteral("PresetsPage"));
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(12, 12, 12, 12);
    layout->setSpacing(12);
    layout->addWidget(buildListBox(), 3);
    layout->addWidget(buildEditBox(), 2);
}

QWidget* PresetsPage::buildListBox() {
    auto* box = new QGroupBox(QStringLiteral("Presets In The Unit"), this);
    auto* layout = new QVBoxLayout(box);
    auto* heading = new QLabel(presetHeadingText(), box);
    heading->setObjectName(QStringLiteral("PresetHeading"));
    heading->setFont(fixedPitchFont());
    // The list's frame and margin shift its text a little to the right.
    heading->setContentsMargins(4, 0, 0, 0);
    layout->addWidget(heading);

    PresetList = new QListWidget(box);
    PresetList->setObjectName(QStringLiteral("PresetList"));
    PresetList->setFont(fixedPitchFont());
    PresetList->setToolTip(QStringLiteral(
        "Single Click A Preset For Modification Or Double-Click To Execute A Move To The Preset"));
    PresetList->setSelectionMode(QAbstractItemView::SingleSelection);
    layout->addWidget(PresetList, 1);

    ClearPreBut = namedButton(
        QStringLiteral("ClearPreBut"), QStringLiteral("Clear All Preset Entries To 0/0"),
        QStringLiteral("Zero All Preset List Entries (About 3 Seconds)"), box);
    layout->addWidget(ClearPreBut);
    return box;
}

QWidget* PresetsPage::buildEditBox() {
    auto* column = new QWidget(this);
    auto* layout = new QVBoxLayout(column);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(12);

    auto* angles = new QGroupBox(QStringLiteral("Selected Preset"), column);
    auto* grid = new QGridLayout(angles);
    grid->setHorizontalSpacing(10);
    grid->setVerticalSpacing(8);
    PanPreLED = angleLed(QStringLiteral("PanPreLED"), angles);
    TiltPreLED = angleLed(QStringLiteral("TiltPreLED"), angles);
    const AngleStepRow panSteps = makeAngleStepRow(QStringLiteral("PanPreBut"), angles);
    const AngleStepRow tiltSteps = makeAngleStepRow(QStringLiteral("TiltPreBut"), angles);
    PanPreBut = panSteps.buttons;
    TiltPreBut = tiltSteps.buttons;
    grid->addWidget(new QLabel(QStringLiteral("Pan"), angles), 0, 0);
    grid->addWidget(PanPreLED, 0, 1);
    grid->addWidget(panSteps.row, 0, 2);
    grid->addWidget(new QLabel(QStringLiteral("Tilt"), angles), 1, 0);
    grid->addWidget(TiltPreLED, 1, 1);
    grid->addWidget(tiltSteps.row, 1, 2);
    grid->setColumnStretch(3, 1);

    SavePreBut = namedButton(
        QStringLiteral("SavePreBut"), QStringLiteral("Save Coordinates As Preset"),
        QStringLiteral("Save The Above Coordinates To The Currently Selected Preset"), angles);
    grid->addWidget(SavePreBut, 2, 0, 1, 3);
    layout->addWidget(angles);

    auto* store = new QGroupBox(QStringLiteral("From The Current Position"), column);
    auto* storeLayout = new QVBoxLayout(store);
    SaveCurPreBut = namedButton(
        QStringLiteral("SaveCurPreBut"), QStringLiteral("Save Current Position As Preset"),
        QStringLiteral(
            "Save The Current Platform And Zoom/Focus Positions To The Currently Selected Preset"),
        store);
    AddAuxBut = namedButton(
        QStringLiteral("AddAuxBut"), QStringLiteral("Add Zoom/Focus To Preset"),
        QStringLiteral("Add The Current Zoom/Focus Positions To The Currently Selected Preset"),
        store);
    storeLayout->addWidget(SaveCurPreBut);
    storeLayout->addWidget(AddAuxBut);
    layout->addWidget(store);
    layout->addStretch(1);
    return column;
}

}  // namespace halvex
