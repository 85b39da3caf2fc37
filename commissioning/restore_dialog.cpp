#include "commissioning/restore_dialog.h"

#include <QHBoxLayout>
#include <QHeaderView>
#include <QScreen>
#include <QStyle>
#include <QVBoxLayout>
#include <algorithm>

#include "commissioning/settings_files.h"

namespace halvex::commissioning {

namespace {
QTableWidgetItem* cell(const std::string& text, bool written) {
    auto* item = new QTableWidgetItem(QString::fromStdString(text));
    item->setFlags(Qt::ItemIsSelectable | Qt::ItemIsEnabled);
    item->setToolTip(item->text());
    if (!written) {
        item->setForeground(QPalette().color(QPalette::Disabled, QPalette::Text));
    }
    return item;
}
}  // namespace

RestoreDialog::RestoreDialog(const QString& fileName, const RestorePlan& plan, QWidget* parent)
    : QDialog(parent) {
    setObjectName(QStringLiteral("RestoreDialog"));
    setWindowTitle(QStringLiteral("Restore Unit Settings"));
    auto* layout = new QVBoxLayout(this);

    const QString written = plan.writes() == static_cast<int>(plan.rows.size())
                                ? QStringLiteral("all of them")
                                : QStringLiteral("the %1 that can be written").arg(plan.writes());
    RestoreSummary = new QLabel(
        QStringLiteral("%1 holds the settings of %2, saved %3.\nThe unit at address %4 differs in "
                       "%5; OK writes %6, then reads everything back.")
            .arg(fileName, unitDescription(plan.file.identity),
                 QString::fromStdString(plan.file.saved))
            .arg(plan.unit.identity.address)
            .arg(valueCount(plan.rows.size()), written),
        this);
    RestoreSummary->setObjectName(QStringLiteral("RestoreSummary"));
    RestoreSummary->setWordWrap(true);

    DifferenceTable = new QTableWidget(static_cast<int>(plan.rows.size()), 4, this);
    DifferenceTable->setObjectName(QStringLiteral("DifferenceTable"));
    DifferenceTable->setHorizontalHeaderLabels(
        {QStringLiteral("Setting"), QStringLiteral("In the file"), QStringLiteral("In the unit"),
         QStringLiteral("Not written because")});
    DifferenceTable->verticalHeader()->hide();
    DifferenceTable->horizontalHeader()->setSectionResizeMode(QHeaderView::Interactive);
    DifferenceTable->horizontalHeader()->setStretchLastSection(true);
    DifferenceTable->setSelectionMode(QAbstractItemView::NoSelection);
    for (int row = 0; row < DifferenceTable->rowCount(); ++row) {
        const Difference& difference = plan.rows[static_cast<std::size_t>(row)];
        DifferenceTable->setItem(row, 0, cell(difference.label, difference.written));
        DifferenceTable->setItem(row, 1, cell(difference.inFile, difference.written));
        DifferenceTable->setItem(row, 2, cell(difference.inUnit, difference.written));
        DifferenceTable->setItem(row, 3, cell(difference.note, difference.written));
    }
    DifferenceTable->resizeColumnsToContents();
    const int widest = fontMetrics().averageCharWidth() * 28;
    for (int column = 1; column < 3; ++column) {
        DifferenceTable->setColumnWidth(column,
                                        std::min(DifferenceTable->columnWidth(column), widest));
    }

    MoveWarning = new QLabel(movesWarning(), this);
    MoveWarning->setObjectName(QStringLiteral("MoveWarning"));
    MoveWarning->setWordWrap(true);
    MoveWarning->setStyleSheet(QStringLiteral("font-weight: bold"));
    MoveWarning->setVisible(plan.moves());

    RestoreOkBut = new QPushButton(QStringLiteral("OK"), this);
    RestoreOkBut->setObjectName(QStringLiteral("RestoreOkBut"));
    RestoreOkBut->setAutoDefault(false);
    RestoreCancelBut = new QPushButton(QStringLiteral("Cancel"), this);
    RestoreCancelBut->setObjectName(QStringLiteral("RestoreCancelBut"));
    RestoreCancelBut->setDefault(true);
    RestoreOkBut->setEnabled(plan.writes() > 0);

    layout->addWidget(RestoreSummary);
    layout->addWidget(DifferenceTable, 1);
    auto* warning = new QHBoxLayout;
    auto* icon = new QLabel(this);
    icon->setPixmap(style()->standardIcon(QStyle::SP_MessageBoxWarning).pixmap(32, 32));
    icon->setVisible(plan.moves());
    warning->addWidget(icon, 0, Qt::AlignTop);
    warning->addWidget(MoveWarning, 1);
    layout->addLayout(warning);
    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(RestoreOkBut);
    buttons->addWidget(RestoreCancelBut);
    layout->addLayout(buttons);
    connect(RestoreOkBut, &QPushButton::clicked, this, &QDialog::accept);
    connect(RestoreCancelBut, &QPushButton::clicked, this, &QDialog::reject);
    // Wide enough for the values side by side, but never past a small screen.
    QSize wanted(fontMetrics().averageCharWidth() * 110, fontMetrics().height() * 30);
    if (const QScreen* shown = parent != nullptr ? parent->screen() : screen()) {
        wanted = wanted.boundedTo(shown->availableGeometry().size() * 0.9);
    }
    resize(wanted);
    RestoreCancelBut->setFocus();
}

}  // namespace halvex::commissioning
