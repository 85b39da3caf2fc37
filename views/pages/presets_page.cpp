#include "views/pages/presets_page.h"
#include "views/pages/page_parts.h"

#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QPixmap>
#include <QStyleOptionViewItem>
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
    heading_ = new QLabel(presetHeadingText(), box);
    heading_->setObjectName(QStringLiteral("PresetHeading"));
    heading_->setFont(fixedPitchFont());
    heading_->setContentsMargins(kHeadingIndent, 0, 0, 0);
    layout->addWidget(heading_);

    PresetList = new QListWidget(box);
    PresetList->setObjectName(QStringLiteral("PresetList"));
    PresetList->setFont(fixedPitchFont());
    PresetList->setToolTip(QStringLiteral(
        "Single Click A Preset For Modification Or Double-Click To Execute A Move To The Preset"));
    PresetList->setSelectionMode(QAbstractItemView::SingleSelection);
    PresetList->setIconSize(listIconSize());
    // Entries are taken out and put back as the unit reports them.
    connect(PresetList->model(), &QAbstractItemModel::rowsInserted, this,
            [this](const QModelIndex&, int first, int last) {
                for (int row = first; row <= last; ++row) {
                    showIcon(row);
                }
            });
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

void PresetsPage::setPresetIcon(int number, const QIcon& icon) {
    const bool hadAny = !icons_.empty();
    if (icon.isNull()) {
        icons_.erase(number);
    } else {
        icons_[number] = icon;
    }
    if (hadAny != !icons_.empty()) {
        showIcons();
    } else {
        showIcon(number);
    }
}

QIcon PresetsPage::presetIcon(int number) const {
    const auto found = icons_.find(number);
    return found != icons_.end() ? found->second : QIcon();
}

void PresetsPage::showIcons() {
    for (int row = 0; row < PresetList->count(); ++row) {
        showIcon(row);
    }
    heading_->setContentsMargins(kHeadingIndent + (icons_.empty() ? 0 : iconIndent(*PresetList)), 0,
                                 0, 0);
}

void PresetsPage::showIcon(int row) {
    QListWidgetItem* item = PresetList->item(row);
    if (item == nullptr) {
        return;
    }
    if (!icons_.empty()) {
        const auto found = icons_.find(row);
        item->setIcon(found != icons_.end() ? found->second : blankIcon());
    } else if (item->data(Qt::DecorationRole).isValid()) {
        // Even a null icon would make room for itself.
        item->setData(Qt::DecorationRole, QVariant());
    }
}

int PresetsPage::iconIndent(const QListWidget& list) {
    QStyleOptionViewItem option;
    option.initFrom(&list);
    option.rect = QRect(0, 0, 400, 40);
    option.font = list.font();
    option.fontMetrics = QFontMetrics(list.font());
    option.text = QStringLiteral("0");
    option.features = QStyleOptionViewItem::HasDisplay;
    option.decorationSize = list.iconSize();
    option.decorationPosition = QStyleOptionViewItem::Left;
    option.displayAlignment = Qt::AlignLeft | Qt::AlignVCenter;
    const QStyle* style = list.style();
    const int bare = style->subElementRect(QStyle::SE_ItemViewItemText, &option, &list).left();
    option.features |= QStyleOptionViewItem::HasDecoration;
    return style->subElementRect(QStyle::SE_ItemViewItemText, &option, &list).left() - bare;
}

QIcon PresetsPage::blankIcon() {
    QPixmap blank(listIconSize());
    blank.fill(Qt::transparent);
    return QIcon(blank);
}

}  // namespace halvex
