#pragma once

#include <QObject>
#include <functional>

#include "console/console_context.h"
#include "console/rerun_guard.h"

namespace halvex {

class ToursPage;

// Edits and starts the unit's three tours from the "Tours" page: loads the
// selected tour step by step, adds, inserts, replaces and deletes steps,
// executes and clears a tour, and ends the executing look on a fault.
class Tours : public QObject {
    Q_OBJECT
  public:
    static constexpr Byte kExecute = 0x37;
    static constexpr Byte kClear = 0x50;
    static constexpr Byte kGetStep = 0x51;
    static constexpr Byte kAppend = 0x52;
    static constexpr Byte kInsert = 0x53;
    static constexpr Byte kDelete = 0x54;
    static constexpr Byte kReplace = 0x55;
    static constexpr Byte kSelect = 0x56;
    // A step position the unit does not have.
    static constexpr Byte kNoStep = 255;

    // `videoBlank` tells whether tour moves blank the video (may be empty).
    Tours(ConsoleContext& context, ToursPage& page, std::function<bool()> videoBlank,
          QObject* parent = nullptr);

    // Registers the tour reply decoders and the tour-end check.
    void registerDecoders();

    int SelectedTour() const { return selectedTour_; }

    // Reloads tour i: its captions, its step count, then each step.
    void TourSel_Click(int index);
    void ScriptPreList_DblClick();
    void ScriptList_DblClick();
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
    void loadTour(int index);
    void decodeCount();
    void decodeStep();
    void decodeExecute();
    void decodeClear();
    void checkTourEnd();
    void showTourCaptions();
    void setEditingEnabled(bool enabled);
    // Inserts or replaces at the selected step, then reloads the tour.
    void editAtSelection(Byte code, const QString& title, const QString& text, Byte preset,
                         Byte dwell);
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
