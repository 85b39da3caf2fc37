#pragma once

#include <QObject>

#include "console/console_context.h"
#include "session/preset_table.h"

namespace halvex {

class PresetsPage;

// The "Presets" page: shows the session's preset table in the list, and
// calls its move, store, reload and clear operations.
class Presets : public QObject {
    Q_OBJECT
  public:
    Presets(ConsoleContext& context, PresetsPage& page, QObject* parent = nullptr);

    // Asks for presets 0..31 one at a time, each after the previous reply,
    // then selects the first entry.
    QCoro::Task<> reload();

    void PresetList_Click();
    // Each completes when the unit has answered. The preset is the selected
    // row; with none (-1) the handler stops on a range fault, as the unit's
    // byte cannot carry it.
    QCoro::Task<> PresetList_DblClick();
    QCoro::Task<> SavePreBut_Click();
    QCoro::Task<> SaveCurPreBut_Click();
    QCoro::Task<> AddAuxBut_Click();
    QCoro::Task<> ClearPreBut_Click();

  private:
    void connectControls();
    // A preset record from the unit, into the list at its number.
    void showPreset(int number);
    // Tells the other pages what the preset list now shows.
    void publishListEntries();

    ConsoleContext& context_;
    PresetsPage& page_;
};

}  // namespace halvex
