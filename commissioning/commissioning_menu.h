#pragma once

#include <QAction>
#include <QCoro/QCoroTask>
#include <QMenu>
#include <QObject>
#include <functional>

#include "commissioning/unit_line.h"
#include "commissioning/unit_reader.h"
#include "console/console_context.h"

namespace halvex::commissioning {

class RestoreDialog;

// What the window lends the commissioning menu.
struct CommissioningHooks {
    // The connection sequence is running: nothing else may use the line.
    std::function<bool()> busy;
    // Opens the chosen port for a search while offline; false after telling
    // the operator why not. closeLine() closes it again.
    std::function<bool()> openLine;
    std::function<void()> closeLine;
    // The factory area has been opened with its access code.
    std::function<bool()> factoryOpen;
    // A line in the status bar.
    std::function<void(const QString&)> showStatus;
};

// Unit > Find Units, Save Unit Settings and Restore Unit Settings.
class CommissioningMenu : public QObject {
    Q_OBJECT
  public:
    // Each address gets this long to answer a search.
    static constexpr int kProbeWaitMs = 150;

    CommissioningMenu(ConsoleContext& context, QMenu* unitMenu, CommissioningHooks hooks,
                      QObject* parent = nullptr);

    // Each runs its whole job, waits and all, on the one event loop.
    QCoro::Task<> FindUnits_Click();
    QCoro::Task<> SaveUnit_Click();
    QCoro::Task<> RestoreUnit_Click();

    // Picks the file to save to (`save`) or restore from; empty for none.
    using FileChooser = std::function<QCoro::Task<QString>(bool save, QString suggested)>;
    void setFileChooser(FileChooser chooser) { chooseFile_ = std::move(chooser); }
    // Shows the restore confirmation; true for OK. The restore goes on only
    // while the dialog is still there afterwards.
    using Confirmer = std::function<QCoro::Task<bool>(RestoreDialog& dialog)>;
    void setConfirmer(Confirmer confirmer) { confirm_ = std::move(confirmer); }
    void setProbeWaitMs(int ms) { probeWaitMs_ = ms; }

  private:
    bool online(const QString& title);
    // The pages follow the replies a save or restore reads; the tour page
    // needs its selected tour loaded again.
    QCoro::Task<> refreshTourPage();
    // Reads everything from the unit behind a progress dialog with this title.
    QCoro::Task<UnitRead> readWithProgress(QString title);

    ConsoleContext& context_;
    CommissioningHooks hooks_;
    FileChooser chooseFile_;
    Confirmer confirm_;
    int probeWaitMs_ = kProbeWaitMs;
};

}  // namespace halvex::commissioning
