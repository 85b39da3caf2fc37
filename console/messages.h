#pragma once

#include <QCoro/QCoroTask>
#include <QString>
#include <functional>

class QWidget;

namespace halvex {

// One modal message box: exclamation icon, a short title, one sentence.
struct Message {
    QString title;
    QString text;
    bool question = false;  // OK/Cancel rather than OK alone
};

// The console's message boxes, window-modal over its window. Whoever builds
// the window may hand in another presenter, which answers at once (a test
// records what would be shown).
class Messages {
  public:
    // Returns true for OK.
    using Presenter = std::function<bool(QWidget* parent, const Message& message)>;

    explicit Messages(QWidget* parent, Presenter presenter = {});

    // Shows the box and returns; the box goes when closed.
    void exclamation(const QString& title, const QString& text) const;
    // OK/Cancel with Cancel as the default; completes with true once OK has
    // been chosen. A box that went with the window counts as Cancel, and
    // then whatever the window owned is gone: on false the caller touches
    // nothing more.
    QCoro::Task<bool> confirm(QString title, QString text) const;

  private:
    QWidget* parent_;
    Presenter presenter_;
};

}  // namespace halvex
