#pragma once

#include <QDialog>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>

#include "commissioning/unit_line.h"

namespace halvex::commissioning {

// How far a save or restore is, with Cancel. Closing it cancels too; the
// job stops at its next step, and nothing moving is left moving.
class ProgressDialog : public QDialog {
    Q_OBJECT
  public:
    ProgressDialog(const QString& title, QWidget* parent);

    // Reports into this dialog and asks it whether the operator gave up.
    const Progress& progress() const { return progress_; }
    bool cancelled() const { return cancelled_; }

    QLabel* CommissioningStep;
    QProgressBar* CommissioningProgress;
    QPushButton* CommissioningCancelBut;

  protected:
    void reject() override;

  private:
    Progress progress_;
    bool cancelled_ = false;
};

}  // namespace halvex::commissioning
