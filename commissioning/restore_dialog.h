#pragma once

#include <QDialog>
#include <QLabel>
#include <QPushButton>
#include <QTableWidget>

#include "commissioning/unit_restore.h"

namespace halvex::commissioning {

// The confirmation before a restore: the file's values and the unit's side
// by side, what will not be written and why, and whether the platform will
// move. OK writes; Cancel, the default, writes nothing.
class RestoreDialog : public QDialog {
    Q_OBJECT
  public:
    RestoreDialog(const QString& fileName, const RestorePlan& plan, QWidget* parent);

    QLabel* RestoreSummary;
    QTableWidget* DifferenceTable;
    QLabel* MoveWarning;
    QPushButton* RestoreOkBut;
    QPushButton* RestoreCancelBut;
};

}  // namespace halvex::commissioning
