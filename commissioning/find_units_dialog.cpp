#include "commissioning/find_units_dialog.h"

#include <QHBoxLayout>
#include <QHeaderView>
#include <QVBoxLayout>

namespace halvex::commissioning {

namespace {
QTableWidgetItem* cell(const QString& text) {
    auto* item = new QTableWidgetItem(text);
    item->setFlags(Qt::ItemIsSelectable | Qt::ItemIsEnabled);
    return item;
}
}  // namespace

QString controllerTypeText(int type) {
    switch (type) {
        case 0:
            return QStringLiteral("0 standard");
        case 1:
            return QStringLiteral("1 no camera 2 or video");
        default:
            return QStringLiteral("%1 legacy video").arg(type);
    }
}

FindUnitsDialog::FindUnitsDialog(QWidget* parent) : QDialog(parent) {
    setObjectName(QStringLiteral("FindUnitsDialog"));
    setWindowTitle(QStringLiteral("Find Units"));
    setWindowModality(Qt::WindowModal);
    auto* layout = new QVBoxLayout(this);
    FindStatus = new QLabel(
        QStringLiteral("Asking addresses 1 to 99 in turn, then 0 if nobody answers..."), this);
    FindStatus->setObjectName(QStringLiteral("FindStatus"));
    FindStatus->setWordWrap(true);
    FindProgress = new QProgressBar(this);
    FindProgress->setObjectName(QStringLiteral("FindProgress"));
    FindProgress->setRange(0, kLastUnitAddress + 1);
    FindProgress->setValue(0);

    FoundList = new QTableWidget(0, 4, this);
    FoundList->setObjectName(QStringLiteral("FoundList"));
    FoundList->setHorizontalHeaderLabels(
        {QStringLiteral("Address"), QStringLiteral("Controller type"), QStringLiteral("Firmware"),
         QStringLiteral("Clock date")});
    FoundList->verticalHeader()->hide();
    FoundList->horizontalHeader()->setStretchLastSection(true);
    FoundList->horizontalHeader()->setSectionResizeMode(QHeaderView::ResizeToContents);
    FoundList->setSelectionBehavior(QAbstractItemView::SelectRows);
    FoundList->setSelectionMode(QAbstractItemView::SingleSelection);
    FoundList->setToolTip(QStringLiteral("Double-click a unit to talk to it"));

    TalkToBut = new QPushButton(QStringLiteral("Talk To Unit"), this);
    TalkToBut->setObjectName(QStringLiteral("TalkToBut"));
    TalkToBut->setToolTip(QStringLiteral("Sets Talk To ID (CurrIDScroll) to the chosen unit"));
    TalkToBut->setEnabled(false);
    FindCloseBut = new QPushButton(QStringLiteral("Cancel"), this);
    FindCloseBut->setObjectName(QStringLiteral("FindCloseBut"));

    layout->addWidget(FindStatus);
    layout->addWidget(FindProgress);
    layout->addWidget(FoundList, 1);
    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(TalkToBut);
    buttons->addWidget(FindCloseBut);
    layout->addLayout(buttons);
    resize(FoundList->fontMetrics().averageCharWidth() * 64, sizeHint().height() + 120);

    connect(FindCloseBut, &QPushButton::clicked, this, &FindUnitsDialog::reject);
    connect(TalkToBut, &QPushButton::clicked, this, &FindUnitsDialog::choose);
    connect(FoundList, &QTableWidget::itemSelectionChanged, this, [this] {
        TalkToBut->setEnabled(!searching_ && !FoundList->selectedItems().isEmpty());
    });
    connect(FoundList, &QTableWidget::cellDoubleClicked, this, [this] {
        if (!searching_) {
            choose();
        }
    });

    progress_.report = [this](const QString&, int done, int total) {
        FindProgress->setRange(0, total);
        FindProgress->setValue(done);
    };
    progress_.cancelled = [this] { return cancelled_; };
}

void FindUnitsDialog::reject() {
    if (searching_) {
        // The search stops after the address it is asking; the dialog stays
        // to show what it found so far.
        cancelled_ = true;
        FindCloseBut->setEnabled(false);
        FindStatus->setText(QStringLiteral("Stopping..."));
        return;
    }
    QDialog::reject();
}

void FindUnitsDialog::showResult(const UnitSearch& search) {
    searching_ = false;
    FindCloseBut->setEnabled(true);
    FindCloseBut->setText(QStringLiteral("Close"));
    FoundList->setRowCount(0);
    for (const UnitIdentity& unit : search.found) {
        const int row = FoundList->rowCount();
        FoundList->insertRow(row);
        FoundList->setItem(row, 0, cell(QString::number(unit.address)));
        FoundList->setItem(row, 1, cell(controllerTypeText(unit.controllerType)));
        FoundList->setItem(row, 2, cell(QString::fromStdString(firmwareText(unit))));
        FoundList->setItem(row, 3, cell(QString::fromStdString(clockText(unit))));
    }
    QString status;
    if (search.portClosed) {
        status = QStringLiteral("The port closed during the search.");
    } else if (search.cancelled) {
        status = QStringLiteral("Search cancelled.");
    }
    if (search.found.empty()) {
        status += (status.isEmpty() ? QString() : QStringLiteral(" ")) +
                  QStringLiteral("No unit answered.");
    } else {
        status += (status.isEmpty() ? QString() : QStringLiteral(" ")) +
                  QStringLiteral("%1 found. Choose one and press Talk To Unit.")
                      .arg(search.found.size() == 1
                               ? QStringLiteral("One unit")
                               : QStringLiteral("%1 units").arg(search.found.size()));
        FoundList->selectRow(0);
    }
    if (!search.askedZero && !search.found.empty()) {
        status += QStringLiteral(
            " Address 0 was not asked: every unit answers it, as the broadcast address.");
    }
    FindStatus->setText(status);
    FindProgress->setValue(FindProgress->maximum());
}

void FindUnitsDialog::choose() {
    const auto selected = FoundList->selectedItems();
    if (selected.isEmpty()) {
        return;
    }
    emit unitChosen(FoundList->item(selected.front()->row(), 0)->text().toInt());
    accept();
}

}  // namespace halvex::commissioning
