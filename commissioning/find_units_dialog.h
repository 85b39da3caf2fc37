#pragma once

#include <QDialog>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QTableWidget>

#include "commissioning/unit_finder.h"

namespace halvex::commissioning {

// "Find Units": the search's progress, then the units that answered, one of
// which the operator may choose to talk to.
class FindUnitsDialog : public QDialog {
    Q_OBJECT
  public:
    explicit FindUnitsDialog(QWidget* parent);

    const Progress& progress() const { return progress_; }
    // The search has ended: lists what it found and lets the operator choose.
    void showResult(const UnitSearch& search);

    QLabel* FindStatus;
    QProgressBar* FindProgress;
    QTableWidget* FoundList;
    QPushButton* TalkToBut;
    QPushButton* FindCloseBut;

  signals:
    void unitChosen(int address);

  protected:
    void reject() override;

  private:
    void choose();

    Progress progress_;
    bool searching_ = true;
    bool cancelled_ = false;
};

// "0 standard", "1 no camera 2 or video", ...
QString controllerTypeText(int type);

}  // namespace halvex::commissioning
