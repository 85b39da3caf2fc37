#include "window/data_watch.h"

#include <QCoreApplication>
#include <QFont>
#include <QFontDatabase>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QVBoxLayout>

#include "window/window_placement.h"

namespace halvex {

// Kept as it stands: some codes the console uses cannot be watched.
const std::array<int, DataWatch::kCodeCount> DataWatch::WatchCodes = {
    49,  50,  51,  52,  53,  54,  55,  64,  65,  66,  67,  80,  81,  82,  83,  84,  85,
    86,  96,  97,  98,  99,  100, 101, 112, 113, 117, 128, 129, 130, 131, 132, 133, 144,
    145, 146, 147, 148, 149, 151, 152, 153, 155, 156, 157, 158, 159, 161, 162};

namespace {
QLineEdit* frameLine(const QString& name, QWidget* parent) {
    auto* line = new QLineEdit(parent);
    line->setObjectName(name);
    line->setReadOnly(true);
    line->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    line->setMinimumWidth(420);
    return line;
}
}  // namespace

DataWatch::DataWatch(QWidget* parent)
    : QWidget(parent, Qt::Window),
      TXData(frameLine(QStringLiteral("TXData"), this)),
      RXData(frameLine(QStringLiteral("RXData"), this)),
      CapTXData(frameLine(QStringLiteral("CapTXData"), this)),
      CapRXData(frameLine(QStringLiteral("CapRXData"), this)),
      SpinButton1(new SpinButton(this)),
      Label5(new QLabel(this)) {
    setObjectName(QStringLiteral("DataWatch"));
    setWindowTitle(QStringLiteral("Data Watch"));
    SpinButton1->setObjectName(QStringLiteral("SpinButton1"));
    SpinButton1->setFixedSize(22, 36);
    Label5->setObjectName(QStringLiteral("Label5"));
    Label5->setMinimumWidth(32);
    QFont codeFont = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    codeFont.setBold(true);
    codeFont.setPointSize(codeFont.pointSize() + 4);
    Label5->setFont(codeFont);

    auto* live = new QFormLayout;
    live->addRow(QStringLiteral("Sent"), TXData);
    live->addRow(QStringLiteral("Received"), RXData);

    auto* picker = new QHBoxLayout;
    picker->addWidget(new QLabel(QStringLiteral("Capture code"), this));
    picker->addWidget(Label5);
    picker->addWidget(SpinButton1);
    picker->addStretch();

    auto* captured = new QFormLayout;
    captured->addRow(QStringLiteral("Sent"), CapTXData);
    captured->addRow(QStringLiteral("Received"), CapRXData);

    auto* layout = new QVBoxLayout(this);
    layout->addLayout(live);
    layout->addSpacing(8);
    layout->addLayout(picker);
    layout->addLayout(captured);

    connect(SpinButton1, &SpinButton::SpinUp, this, &DataWatch::SpinButton1_SpinUp);
    connect(SpinButton1, &SpinButton::SpinDown, this, &DataWatch::SpinButton1_SpinDown);
    connect(TXData, &QLineEdit::textChanged, this,
            [this](const QString& line) { filterInto(line, CapTXData); });
    connect(RXData, &QLineEdit::textChanged, this,
            [this](const QString& line) { filterInto(line, CapRXData); });
    showWatchIndex();
    new WindowPlacement(*this, QStringLiteral("DataWatch"), sizeHint());
}

void DataWatch::showSentFrame(const QString& capture) {
    TXData->setText(capture);
}
void DataWatch::showReceivedFrame(const QString& capture) {
    RXData->setText(capture);
}

void DataWatch::SpinButton1_SpinUp() {
    WatchIndex = WatchIndex == kCodeCount - 1 ? 0 : WatchIndex + 1;
    showWatchIndex();
}

void DataWatch::SpinButton1_SpinDown() {
    WatchIndex = WatchIndex == 0 ? kCodeCount - 1 : WatchIndex - 1;
    showWatchIndex();
}

void DataWatch::showWatchIndex() {
    WatchCode = WatchCodes[static_cast<std::size_t>(WatchIndex)];
    Label5->setText(QString::number(WatchCode, 16).toUpper());
}

void DataWatch::filterInto(const QString& line, QLineEdit* capture) {
    // The code byte sits at characters 7 and 8 of "02 01 92 ...", as long as
    // the address needed no escape; frames with an escaped address are not
    // captured.
    if (line.size() > 5 && line.left(8).right(2) == Label5->text()) {
        capture->setText(line);
    }
}

}  // namespace halvex
