#include "console/messages.h"

#include <QMessageBox>

namespace halvex {

namespace {
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

Messages::Messages(QWidget* parent, Presenter presenter)
    : parent_(parent), presenter_(presenter ? std::move(presenter) : Presenter(showBox)) {}

bool Messages::present(const Message& message) const {
    return presenter_(parent_, message);
}

void Messages::exclamation(const QString& title, const QString& text) const {
    present(Message{title, text, false});
}

bool Messages::confirm(const QString& title, const QString& text) const {
    return present(Message{title, text, true});
}

}  // namespace halvex
