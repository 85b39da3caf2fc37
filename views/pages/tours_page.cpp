#include "views/pages/tours_page.h"
#include "views/pages/page_parts.h"
#include "views/pages/presets_page.h"

#include <QButtonGroup>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QVBoxLayout>

#include "session/preset_table.h"

namespace halvex {

namespace {

QLabel* makeHeading(const QString& text, QWidget* parent) {
    auto* label = new QLabel(text, parent);
    label->setFont(fixedPitchFont());
    label->setContentsMargins(kHeadingIndent, 0, 0, 0);
    return label;
}
}  // namespace

ToursPage::ToursPage(QWidget* parent) : QWidget(parent) {
    setObjectName(QStringLiteral("ToursPage"));
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(12, 12, 12, 12);
    layout->setSpacing(12);
    layout->addWidget(buildTourBox(), 1);
    layout->addWidget(buildChoiceBox(), 1);
}

QWidget* ToursPage::buildTourBox() {
    auto* box = new QGroupBox(QStringLiteral("Tour"), this);
    auto* layout = new QVBoxLayout(box);

    auto* selectors = new QHBoxLayout;
    auto* group = new QButtonGroup(box);
    for (int i = 0; i < kTours; ++i) {
        auto* button = new QRadioButton(QStringLiteral("Tour %1").arg(i + 1), box);
        button->setObjectName(indexed("TourSel", i));
        button->setToolTip(QStringLiteral("Select To Load And Work With Tour %1").arg(i + 1));
        group->addButton(button, i);
        selectors->addWidget(button);
        TourSel[static_cast<std::size_t>(i)] = button;
    }
    TourSel[0]->setChecked(true);
    selectors->addStretch(1);
    layout->addLayout(selectors);

    stepHeading_ = makeHeading(QStringLiteral("No   Preset Dwell      Blank Cam"), box);
    layout->addWidget(stepHeading_);
    ScriptList = new QListWidget(box);
    ScriptList->setObjectName(QStringLiteral("ScriptList"));
    ScriptList->setFont(fixedPitchFont());
    ScriptList->setIconSize(PresetsPage::listIconSize());
    // The steps are cleared and read again as a whole; a step added is
    // lined up with those that have pictures until it has its own.
    connect(ScriptList->model(), &QAbstractItemModel::modelReset, this, [this] {
        stepIcons_.clear();
        showStepIcons();
    });
    connect(ScriptList->model(), &QAbstractItemModel::rowsInserted, this,
            [this](const QModelIndex&, int first, int last) {
                for (int row = first; row <= last; ++row) {
                    showStepIcon(row);
                }
            });
    ScriptList->setToolTip(
        QStringLiteral("Single-Click To Select For Insert/Replace, Double-Click To Delete The  "
                       "Entry From The Tour"));
    layout->addWidget(ScriptList, 1);

    auto* buttons = new QGridLayout;
    ExecScriptBut =
        namedButton(QStringLiteral("ExecScriptBut"), QStringLiteral("Execute Tour 1"),
                    QStringLiteral("Execute The Selected Tour-Press Stop To Terminate"), box);
    ClearScriptBut = namedButton(QStringLiteral("ClearScriptBut"), QStringLiteral("Clear Tour 1"),
                                 QStringLiteral("Clear The Selected Tour"), box);
    Command3 =
        namedButton(QStringLiteral("Command3"), QStringLiteral("Tour Count"),
                    QStringLiteral("Retrieve Tour Count (255 Indicates A Corrupt Tour)"), box);
    Label23 = new QLabel(QStringLiteral("0"), box);
    Label23->setObjectName(QStringLiteral("Label23"));
    Label23->setFrameShape(QFrame::StyledPanel);
    Label23->setMinimumWidth(48);
    Label23->setAlignment(Qt::AlignCenter);
    buttons->addWidget(ExecScriptBut, 0, 0);
    buttons->addWidget(ClearScriptBut, 0, 1);
    buttons->addWidget(Command3, 1, 0);
    buttons->addWidget(Label23, 1, 1);
    TourHelpBut = namedButton(QStringLiteral("TourHelpBut"), QStringLiteral("Help"),
                              QStringLiteral("Tour Setup Help"), box);
    buttons->addWidget(TourHelpBut, 2, 1);
    layout->addLayout(buttons);
    return box;
}

QWidget* ToursPage::buildChoiceBox() {
    auto* column = new QWidget(this);
    auto* layout = new QVBoxLayout(column);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(12);

    auto* presets = new QGroupBox(QStringLiteral("Presets"), column);
    auto* presetLayout = new QVBoxLayout(presets);
    presetLayout->addWidget(makeHeading(presetHeadingText(), presets));
    ScriptPreList = new QListWidget(presets);
    ScriptPreList->setObjectName(QStringLiteral("ScriptPreList"));
    ScriptPreList->setFont(fixedPitchFont());
    ScriptPreList->setToolTip(
        QStringLiteral("Select Append/Insert/Replace, Set Dwell, Then Double-Click To Add A "
                       "Preset To The Tour"));
    presetLayout->addWidget(ScriptPreList, 1);
    layout->addWidget(presets, 1);

    auto* step = new QGroupBox(QStringLiteral("New Step"), column);
    auto* grid = new QGridLayout(step);
    grid->setHorizontalSpacing(16);
    auto* modes = new QButtonGroup(step);
    const char* const modeCaptions[] = {"Append", "Insert", "Replace"};
    auto* cameras = new QButtonGroup(step);
    const char* const cameraCaptions[] = {"Default Camera", "Camera 2", "Camera 3"};
    for (int i = 0; i < 3; ++i) {
        auto* mode = new QRadioButton(QString::fromLatin1(modeCaptions[i]), step);
        mode->setObjectName(indexed("Option1", i));
        modes->addButton(mode, i);
        grid->addWidget(mode, i, 0);
        Option1[static_cast<std::size_t>(i)] = mode;

        auto* camera = new QRadioButton(QString::fromLatin1(cameraCaptions[i]), step);
        camera->setObjectName(indexed("CamSel", i));
        cameras->addButton(camera, i);
        grid->addWidget(camera, i, 1);
        CamSel[static_cast<std::size_t>(i)] = camera;
    }
    Option1[0]->setChecked(true);
    CamSel[0]->setChecked(true);

    WaitScroll = new QScrollBar(Qt::Horizontal, step);
    WaitScroll->setObjectName(QStringLiteral("WaitScroll"));
    WaitScroll->setRange(0, kMaxDwell);
    WaitScroll->setPageStep(10);
    WaitLabel = new QLabel(step);
    WaitLabel->setObjectName(QStringLiteral("WaitLabel"));
    WaitLabel->setMinimumWidth(90);
    grid->addWidget(WaitScroll, 3, 0);
    grid->addWidget(WaitLabel, 3, 1);
    layout->addWidget(step);
    return column;
}

ToursPage::~ToursPage() {
    // The list empties itself as it goes, after the heading has gone.
    disconnect(ScriptList->model(), nullptr, this, nullptr);
}

void ToursPage::setStepIcon(int row, const QIcon& icon) {
    const bool hadAny = !stepIcons_.empty();
    if (icon.isNull()) {
        stepIcons_.erase(row);
    } else {
        stepIcons_[row] = icon;
    }
    if (hadAny != !stepIcons_.empty()) {
        showStepIcons();
    } else {
        showStepIcon(row);
    }
}

QIcon ToursPage::stepIcon(int row) const {
    const auto found = stepIcons_.find(row);
    return found != stepIcons_.end() ? found->second : QIcon();
}

void ToursPage::showStepIcons() {
    for (int row = 0; row < ScriptList->count(); ++row) {
        showStepIcon(row);
    }
    stepHeading_->setContentsMargins(
        kHeadingIndent + (stepIcons_.empty() ? 0 : PresetsPage::iconIndent(*ScriptList)), 0, 0, 0);
}

void ToursPage::showStepIcon(int row) {
    QListWidgetItem* item = ScriptList->item(row);
    if (item == nullptr) {
        return;
    }
    if (!stepIcons_.empty()) {
        const auto found = stepIcons_.find(row);
        item->setIcon(found != stepIcons_.end() ? found->second : PresetsPage::blankIcon());
    } else if (item->data(Qt::DecorationRole).isValid()) {
        // Even a null icon would make room for itself.
        item->setData(Qt::DecorationRole, QVariant());
    }
}

}  // namespace halvex
