#include "commissioning/progress_dialog.h"

#include <QHBoxLayout>
#include <QVBoxLayout>

namespace halvex::commissioning {

ProgressDialog::ProgressDialog(const QString& title, QWidget* parent) : QDialog(parent) {
    setObjectName(QStringLiteral("CommissioningProgressDialog"));
    setWindowTitle(title);
    setWindowModality(Qt::WindowModal);
    auto* layout = new QVBoxLayout(this);
    CommissioningStep = new QLabel(this);
    CommissioningStep->setObjectName(QStringLiteral("CommissioningStep"));
    CommissioningStep->setMinimumWidth(CommissioningStep->fontMetrics().averageCharWidth() * 48);
    CommissioningProgress = new QProgressBar(this);
    CommissioningProgress->setObjectName(QStringLiteral("CommissioningProgress"));
    CommissioningCancelBut = new QPushButton(QStringLiteral("Cancel"), this);
    CommissioningCancelBut->setObjectName(QStringLiteral("CommissioningCancelBut"));
    layout->addWidget(CommissioningStep);
    layout->addWidget(CommissioningProgress);
    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(CommissioningCancelBut);
    layout->addLayout(buttons);
    connect(CommissioningCancelBut, &QPushButton::clicked, this, &ProgressDialog::reject);

    progress_.report = [this](const QString& step, int done, int total) {
        CommissioningStep->setText(step);
        CommissioningProgress->setRange(0, total);
        CommissioningProgress->setValue(done);
    };
    progress_.cancelled = [this] { return cancelled_; };
}

void ProgressDialog::reject() {
    cancelled_ = true;
    CommissioningCancelBut->setEnabled(false);
    CommissioningStep->setText(QStringLiteral("Stopping..."));
}

}  // namespace halvex::commissioning
