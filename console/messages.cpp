#include "console/messages.h"

#include <QMessageBox>

#include "console/dialog_wait.h"

namespace halvex {

namespace {
QMessageBox* makeBox(QWidget* parent, const Message& message) {
    auto* box = new QMessageBox(QMessageBox::Warning, message.title, message.text,
                                QMessageBox::NoButton, parent);
    if (message.question) {
        box->setStandardButtons(QMessageBox::Ok | QMessageBox::Cancel);
        box->setDefaultButton(QMessageBox::Cancel);
    } else {
        box->setStandardButtons(QMessageBox::Ok);
    }
    return box;
}
}  // namespace

Messages::Messages(QWidget* parent, Presenter presenter)
    : parent_(parent), presenter_(std::move(presenter)) {}

void Messages::exclamation(const QString& title, const QString& text) const {
    const Message message{title, text, false};
    if (presenter_) {
        presenter_(parent_, message);
        return;
    }
    QMessageBox* box = makeBox(parent_, message);
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->open();
}

QCoro::Task<bool> Messages::confirm(QString title, QString text) const {
    const Message message{std::move(title), std::move(text), true};
    if (presenter_) {
        co_return presenter_(parent_, message);
    }
    QMessageBox* box = makeBox(parent_, message);
    const std::optional<int> button = co_await openAndWait(box);
    if (!button) {
        co_return false;
    }
    box->deleteLater();
    co_return *button == QMessageBox::Ok;
}

}  // namespace halvex
