#include "ui/messages.h"

#include <QMessageBox>

namespace halvex {

namespace {
Messages::Presenter& presenter() {
    static Messages::Presenter instance;
    return instance;
}

bool showBox(QWidget* parent, const Message& message) {
    QMessageBox box(QMessageBox::Warning, message.title, message.text, QMessageBox::NoButton,
                    parent);
    if (message.question) {
        box.setStandardButtons(QMessageBox::Ok | QMessageBox::Cancel);
        box.setDefaultButton(QMessageBox::Cancel);
    } else {
        box.setStandardButtons(QMessageBox::Ok);
    }
    return box.exec() == QMessageBox::Ok;
}
}  // namespace

bool Messages::present(QWidget* parent, const Message& message) {
    if (presenter()) {
        return presenter()(parent, message);
    }
    return showBox(parent, message);
}

void Messages::exclamation(QWidget* parent, const QString& title, const QString& text) {
    present(parent, Message{title, text, false});
}

bool Messages::confirm(QWidget* parent, const QString& title, const QString& text) {
    return present(parent, Message{title, text, true});
}

void Messages::setPresenter(Presenter p) {
    presenter() = std::move(p);
}
void Messages::resetPresenter() {
    presenter() = nullptr;
}

}  // namespace halvex
