#include "commissioning/commissioning_menu.h"

#include <QFileDialog>
#include <QFileInfo>
#include <QPointer>
#include <algorithm>
#include <iterator>
#include <memory>

#include "commissioning/find_units_dialog.h"
#include "commissioning/progress_dialog.h"
#include "commissioning/restore_dialog.h"
#include "commissioning/settings_files.h"
#include "commissioning/unit_reader.h"
#include "commissioning/unit_restore.h"
#include "console/dialog_wait.h"
#include "console/handler_wiring.h"
#include "protocol/vocabulary.h"

namespace halvex::commissioning {

namespace {

const QString kFilter = QStringLiteral("Unit settings (*.txt);;All files (*)");

QAction* addAction(QMenu* menu, const char* name, const char* caption, const char* tip) {
    QAction* action = menu->addAction(QString::fromLatin1(caption));
    action->setObjectName(QString::fromLatin1(name));
    action->setToolTip(QString::fromLatin1(tip));
    action->setStatusTip(action->toolTip());
    return action;
}

QCoro::Task<QString> chooseWithDialog(QWidget* window, bool save, QString suggested) {
    if (save) {
        return chooseFile(window, QStringLiteral("Save Unit Settings"), std::move(suggested),
                          kFilter, QFileDialog::AcceptSave);
    }
    return chooseFile(window, QStringLiteral("Restore Unit Settings"), QString(), kFilter,
                      QFileDialog::AcceptOpen);
}

QCoro::Task<bool> confirmWithDialog(RestoreDialog& dialog) {
    const std::optional<int> result = co_await openAndWait(&dialog);
    co_return result == QDialog::Accepted;
}

// Opened over the window for the length of a job. On the heap, not in the
// job's frame: the window deletes its children, should it go first.
std::unique_ptr<ProgressDialog> showProgress(const QString& title, QWidget* window) {
    auto dialog = std::make_unique<ProgressDialog>(title, window);
    dialog->open();
    return dialog;
}

}  // namespace

CommissioningMenu::CommissioningMenu(ConsoleContext& context, QMenu* unitMenu,
                                     CommissioningHooks hooks, QObject* parent)
    : QObject(parent), context_(context), hooks_(std::move(hooks)) {
    setObjectName(QStringLiteral("CommissioningMenu"));
    chooseFile_ = [window = context.window](bool save, QString suggested) {
        return chooseWithDialog(window, save, std::move(suggested));
    };
    confirm_ = confirmWithDialog;

    unitMenu->addSeparator();
    QAction* find = addAction(unitMenu, "MenuFindUnits", "&Find Units...",
                              "Ask every address on the line which unit answers");
    QAction* save = addAction(unitMenu, "MenuSaveUnit", "&Save Unit Settings...",
                              "Read everything the unit holds into a settings file");
    QAction* restore = addAction(unitMenu, "MenuRestoreUnit", "Res&tore Unit Settings...",
                                 "Write a settings file's values to this unit");
    FormState& state = context_.state;
    onEvent(state, find, &QAction::triggered, this, "FindUnits_Click",
            [this] { return FindUnits_Click(); });
    onEvent(state, save, &QAction::triggered, this, "SaveUnit_Click",
            [this] { return SaveUnit_Click(); });
    onEvent(state, restore, &QAction::triggered, this, "RestoreUnit_Click",
            [this] { return RestoreUnit_Click(); });
}

bool CommissioningMenu::online(const QString& title) {
    if (context_.state.Online && context_.link.portOpen() && !hooks_.busy()) {
        return true;
    }
    context_.messages.exclamation(
        title, QStringLiteral("The console is not connected. Press Start to connect to the unit "
                              "first."));
    return false;
}

QCoro::Task<> CommissioningMenu::refreshTourPage() {
    emit context_.events.tourSelectorPrepareRequested();
    co_await context_.events.selectedTourLoad();
}

QCoro::Task<> CommissioningMenu::FindUnits_Click() {
    if (hooks_.busy()) {
        hooks_.showStatus(QStringLiteral("Find Units waits until the connection has finished."));
        co_return;
    }
    const bool opened = !context_.link.portOpen();
    if (opened && !hooks_.openLine()) {
        co_return;
    }
    QPointer<FindUnitsDialog> dialog = new FindUnitsDialog(context_.window);
    dialog->open();
    UnitSearch search;
    {
        UnitLine line(context_.session, probeWaitMs_);
        search = co_await findUnits(line, dialog->progress());
        if (!opened && line.portOpen()) {
            // The firmware caption of the Setup page showed the units asked.
            co_await line.ask(vocab::blank<vocab::FirmwareRequest>());
        }
    }
    if (opened) {
        hooks_.closeLine();
    }
    if (dialog == nullptr) {
        co_return;
    }
    dialog->showResult(search);
    connect(dialog, &FindUnitsDialog::unitChosen, this, [this](int address) {
        guarded(context_.state, "TalkToBut_Click", [&] { context_.session.talkTo(address); });
    });
    connect(dialog, &QDialog::finished, dialog, &QObject::deleteLater);
}

QCoro::Task<> CommissioningMenu::SaveUnit_Click() {
    const QString title = QStringLiteral("Save Unit Settings");
    if (!online(title)) {
        co_return;
    }
    const QString path =
        co_await chooseFile_(true, QStringLiteral("unit-%1.txt").arg(context_.state.UnitId));
    if (path.isEmpty()) {
        co_return;
    }
    UnitRead read = co_await readWithProgress(title);
    if (read.cancelled) {
        hooks_.showStatus(QStringLiteral("Save Unit Settings cancelled: nothing was saved."));
        co_return;
    }
    if (!read.settings) {
        context_.messages.exclamation(QStringLiteral("Could Not Save Unit Settings"),
                                      read.problem + QStringLiteral(" Nothing was saved."));
        co_return;
    }
    read.settings->saved = savedNow();
    const QString error = saveSettingsFile(path, *read.settings);
    if (!error.isEmpty()) {
        context_.messages.exclamation(QStringLiteral("Could Not Save Unit Settings"), error);
        co_return;
    }
    hooks_.showStatus(QStringLiteral("Saved the settings of %1 to %2.")
                          .arg(unitDescription(read.settings->identity), path));
}

QCoro::Task<UnitRead> CommissioningMenu::readWithProgress(QString title) {
    UnitRead read;
    {
        const std::unique_ptr<ProgressDialog> progress = showProgress(title, context_.window);
        UnitLine line(context_.session);
        read = co_await readUnit(line, progress->progress());
    }
    co_await refreshTourPage();
    co_return read;
}

QCoro::Task<> CommissioningMenu::RestoreUnit_Click() {
    const QString title = QStringLiteral("Restore Unit Settings");
    if (!online(title)) {
        co_return;
    }
    const QString path = co_await chooseFile_(false, QString());
    if (path.isEmpty()) {
        co_return;
    }
    const QString refusedTitle = QStringLiteral("Could Not Restore Unit Settings");
    const SettingsFileRead file = loadSettingsFile(path);
    if (!file.settings) {
        context_.messages.exclamation(refusedTitle, file.problem);
        co_return;
    }

    UnitRead read = co_await readWithProgress(title);
    if (read.cancelled) {
        hooks_.showStatus(QStringLiteral("Restore Unit Settings cancelled: nothing was written."));
        co_return;
    }
    if (!read.settings) {
        context_.messages.exclamation(refusedTitle,
                                      read.problem + QStringLiteral(" Nothing was written."));
        co_return;
    }
    const QString refusal = restoreRefusal(*file.settings, *read.settings);
    if (!refusal.isEmpty()) {
        context_.messages.exclamation(refusedTitle,
                                      refusal + QStringLiteral(" Nothing was written."));
        co_return;
    }
    const QString fileName = QFileInfo(path).fileName();
    const RestorePlan plan = planRestore(*file.settings, *read.settings, hooks_.factoryOpen());
    if (plan.writes() == 0) {
        std::vector<Difference> factory;
        std::copy_if(
            plan.rows.begin(), plan.rows.end(), std::back_inserter(factory),
            [](const Difference& row) { return row.group != nullptr && row.group->factory; });
        if (factory.empty()) {
            hooks_.showStatus(
                QStringLiteral("The unit already holds every value of %1.").arg(fileName));
        } else {
            context_.messages.exclamation(
                title, QStringLiteral("Nothing was written: only factory settings differ, and they "
                                      "are written only while the factory area is open: %1.")
                           .arg(rowList(factory)));
        }
        co_return;
    }
    const QPointer<RestoreDialog> dialog = new RestoreDialog(fileName, plan, context_.window);
    const bool confirmed = co_await confirm_(*dialog);
    if (dialog == nullptr) {
        co_return;  // gone with the window, and this menu with it
    }
    delete dialog;
    if (!confirmed) {
        hooks_.showStatus(QStringLiteral("Restore cancelled: nothing was written."));
        co_return;
    }

    RestoreResult result;
    {
        const std::unique_ptr<ProgressDialog> progress = showProgress(title, context_.window);
        UnitLine line(context_.session);
        result = co_await restoreUnit(line, plan, progress->progress());
    }
    co_await refreshTourPage();
    if (!result.finished) {
        context_.messages.exclamation(
            title,
            (result.cancelled ? QStringLiteral("The restore was stopped.") : result.problem) +
                QStringLiteral(" The unit holds part of the file's settings."));
    } else if (!result.notTaken.empty()) {
        context_.messages.exclamation(title,
                                      QStringLiteral("The unit did not take %1 of the values: %2.")
                                          .arg(result.notTaken.size())
                                          .arg(rowList(result.notTaken)));
    } else if (!result.notWritten.empty()) {
        context_.messages.exclamation(
            title, QStringLiteral("Restored, except the factory settings, which are written only "
                                  "while the factory area is open: %1.")
                       .arg(rowList(result.notWritten)));
    } else {
        hooks_.showStatus(QStringLiteral("Restored %1 onto unit %2; read back, the unit holds "
                                         "every value of the file.")
                              .arg(fileName)
                              .arg(plan.unit.identity.address));
    }
}

}  // namespace halvex::commissioning
