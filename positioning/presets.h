#pragma once

#include <QObject>

#include "console/console_context.h"
#include "protocol/rerun_guard.h"
#include "session/preset_table.h"

namespace halvex {

class PresetsPage;

// Keeps the unit's presets: decodes the preset replies into the tables and
// the list, reloads them, and sends the move, store and clear commands of
// the "Presets" page.
class Presets : public QObject {
    Q_OBJECT
  public:
    Presets(ConsoleContext& context, PresetsPage& page, QObject* parent = nullptr);

    // Registers the decoder of the preset records.
    void registerDecoders();

    // Asks for presets 0..31 one at a time, each after the previous reply.
    QCoro::Task<> reload();

    // Reply handler of the preset records.
    void decodeReply();

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
    // Tells the other pages what the preset list now shows.
    void publishListEntries();
    QCoro::Task<> reloadOnce();

    ConsoleContext& context_;
    PresetsPage& page_;
    RerunGuard reloading_;
};

}  // namespace halvex
