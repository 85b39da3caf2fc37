#pragma once

#include <QCoro/QCoroTask>
#include <QFileDialog>
#include <QString>
#include <optional>

class QDialog;
class QWidget;

namespace halvex {

// Opens `dialog` over its window with QDialog::open(): window-modal, and no
// event loop of its own. Completes with the dialog's result code once it has
// finished, or with nothing when the dialog has been deleted by then, as it
// is with the window under it; the window's objects are then gone as well,
// and the caller must touch none of them. Either way the waiting coroutine
// goes on from the event loop, never from inside the dialog. The caller
// deletes a dialog that finished.
QCoro::Task<std::optional<int>> openAndWait(QDialog* dialog);

// The file the operator picks in a file dialog over `parent`, set up as
// QFileDialog's static getSaveFileName (AcceptSave) or getOpenFileName
// (AcceptOpen) sets up its own, but opened as openAndWait() opens a dialog.
// Empty when cancelled, or when the dialog went with its window.
QCoro::Task<QString> chooseFile(QWidget* parent, QString caption, QString suggested, QString filter,
                                QFileDialog::AcceptMode mode);

}  // namespace halvex
