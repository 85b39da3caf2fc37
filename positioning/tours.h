#pragma once

#include <QCoro/QCoroTask>
#include <QObject>
#include <functional>

#include "console/console_context.h"

namespace halvex {

class ToursPage;

// Edits and starts the unit's three tours from the "Tours" page: loads the
// selected tour step by step, adds, inserts, replaces and deletes steps,
// executes and clears a tour, and ends the executing look on a fault.
class Tours : public QObject {
    Q_OBJECT
  public:
    // `videoBlank` tells whether tour moves blank the video (may be empty).
    Tours(ConsoleContext& context, ToursPage& page, std::function<bool()> videoBlank,
          QObject* parent = nullptr);

    // Ends the executing look on a limit fault, checked after every reply.
    void registerTourEndCheck();

    int SelectedTour() const;

    // Reloads tour i: its captions, its step count, then each step.
    QCoro::Task<> TourSel_Click(int index);
    QCoro::Task<> ScriptPreList_DblClick();
    QCoro::Task<> ScriptList_DblClick();
    QCoro::Task<> ExecScriptBut_Click();
    QCoro::Task<> ClearScriptBut_Click();
    QCoro::Task<> Command3_Click();
    void WaitScroll_Change();

    // Checks the selector of the selected tour without loading it.
    void prepareSelector();
    // Ends the executing look of the page, when a tour is executing.
    void endTourDisplay();
    // Copies the preset list into the preset choices.
    void refillPresetChoices();

  private:
    void connectControls();
    void showStep(int index);
    void showExecuting(int tour);
    void showCleared(int tour);
    void checkTourEnd();
    void showTourCaptions();
    void setEditingEnabled(bool enabled);
    // Inserts or replaces at the selected step, then reloads the tour.
    QCoro::Task<> editAtSelection(QString title, QString text,
                                  std::function<QCoro::Task<Outcome>(int position)> edit);
    // A tour number from a reply; only 0..2 name a selector.
    static int checkedTour(int tour);

    ConsoleContext& context_;
    ToursPage& page_;
    std::function<bool()> videoBlank_;
    bool tourExecuting_ = false;
};

}  // namespace halvex
