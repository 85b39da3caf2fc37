#include "console/dialog_wait.h"

#include <QCoreApplication>
#include <QDialog>
#include <QPointer>
#include <QUrl>
#include <coroutine>
#include <memory>

namespace halvex {

namespace {

// Resumes the coroutine that awaits a dialog once the dialog has finished or
// has been deleted, whichever comes first. Both are queued on the
// application: the click that finished the dialog, or the deletion of the
// window, is over before the coroutine goes on.
class DialogEnd {
  public:
    explicit DialogEnd(QDialog* dialog) : dialog_(dialog) {}

    bool await_ready() const noexcept { return dialog_.isNull(); }

    void await_suspend(std::coroutine_handle<> waiting) {
        // Shared with both connections: a second queued call finds the wait
        // over, even once the coroutine's frame is gone.
        const std::shared_ptr<End> end = end_;
        const auto finish = [end, waiting](std::optional<int> code) {
            if (end->over) {
                return;
            }
            end->over = true;
            QObject::disconnect(end->finished);
            QObject::disconnect(end->deleted);
            end->code = code;
            waiting.resume();
        };
        QObject* application = QCoreApplication::instance();
        end->finished = QObject::connect(
            dialog_, &QDialog::finished, application, [finish](int code) { finish(code); },
            Qt::QueuedConnection);
        end->deleted = QObject::connect(
            dialog_, &QObject::destroyed, application, [finish] { finish(std::nullopt); },
            Qt::QueuedConnection);
    }

    // A dialog deleted after it finished went with its window all the same.
    std::optional<int> await_resume() const { return dialog_.isNull() ? std::nullopt : end_->code; }

  private:
    struct End {
        bool over = false;
        std::optional<int> code;
        QMetaObject::Connection finished;
        QMetaObject::Connection deleted;
    };

    QPointer<QDialog> dialog_;
    std::shared_ptr<End> end_ = std::make_shared<End>();
};

}  // namespace

QCoro::Task<std::optional<int>> openAndWait(QDialog* dialog) {
    dialog->open();
    const std::optional<int> code = co_await DialogEnd(dialog);
    co_return code;
}

QCoro::Task<QString> chooseFile(QWidget* parent, QString caption, QString suggested, QString filter,
                                QFileDialog::AcceptMode mode) {
    // The directory, the selection and the name filter as the static
    // functions set them.
    auto* dialog = new QFileDialog(parent, caption, suggested, filter);
    dialog->setFileMode(mode == QFileDialog::AcceptSave ? QFileDialog::AnyFile
                                                        : QFileDialog::ExistingFile);
    dialog->setAcceptMode(mode);
    dialog->setSupportedSchemes({QStringLiteral("file")});
    const std::optional<int> result = co_await openAndWait(dialog);
    if (!result) {
        co_return QString();
    }
    const QUrl chosen = *result == QDialog::Accepted ? dialog->selectedUrls().value(0) : QUrl();
    dialog->deleteLater();
    co_return chosen.isLocalFile() || chosen.isEmpty() ? chosen.toLocalFile() : chosen.toString();
}

}  // namespace halvex
