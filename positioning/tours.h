#pragma once

#include <QObject>
#include <functional>

#include "console/console_context.h"
#include "console/rerun_guard.h"
#include "protocol/vocabulary_tours.h"

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

    // Registers the tour reply decoders and the tour-end check.
    void registerDecoders();

    int SelectedTour() const { return selectedTour_; }

    // Reloads tour i: its captions, its step count, then each step.
    QCoro::Task<> TourSel_Click(int index);
    QCoro::Task<> ScriptPreList_DblClick();
    QCoro::Task<> ScriptList_DblClick();
    void ExecScriptBut_Click();
    void ClearScriptBut_Click();
    void Command3_Click();
    void WaitScroll_Change();

    // Checks the selector of the selected tour without loading it.
    void prepareSelector();
    // Ends the executing look of the page, when a tour is executing.
    void endTourDisplay();
    // Copies the preset list into the preset choices.
    void refillPresetChoices();

  private:
    void connectControls();
    QCoro::Task<> loadTour(int index);
    void decodeCount();
    void decodeStep();
    void decodeExecute();
    void decodeClear();
    void checkTourEnd();
    void showTourCaptions();
    void setEditingEnabled(bool enabled);
    // A new step as the page has it chosen.
    // The step's two bytes: the preset plus its camera's bits, the dwell
    // plus the blank bit, each a sum that must fit its byte.
    struct StepChoice {
        Byte presetByte = 0;
        Byte dwellByte = 0;
    };
    template <class M, int At>
    static std::vector<Byte> stepMessage(vocab::Field<M> tourField, Byte tour,
                                         vocab::StepRecord<M, At> record, const StepChoice& choice);
    // Inserts or replaces at the selected step, then reloads the tour.
    template <class M, int At>
    QCoro::Task<> editAtSelection(vocab::Field<M> tourField, vocab::Field<M> stepField,
                                  vocab::StepRecord<M, At> record, QString title, QString text,
                                  StepChoice choice);
    // A tour number from a reply; only 0..2 name a selector.
    static int checkedTour(int tour);

    ConsoleContext& context_;
    ToursPage& page_;
    std::function<bool()> videoBlank_;
    RerunGuard loading_;
    int selectedTour_ = 0;
    int tourStepCount_ = 0;
    bool tourExecuting_ = false;
};

}  // namespace halvex
