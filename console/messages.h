#pragma once

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

// The console's message boxes, parented on its window. Whoever builds the
// window may hand in another presenter (a test records what would be shown).
class Messages {
  public:
    // Returns true for OK.
    using Presenter = std::function<bool(QWidget* parent, const Message& message)>;

    explicit Messages(QWidget* parent, Presenter presenter = {});

    void exclamation(const QString& title, const QString& text) const;
    // OK/Cancel with Cancel as the default; true when OK was chosen.
    bool confirm(const QString& title, const QString& text) const;

  private:
    bool present(const Message& message) const;

    QWidget* parent_;
    Presenter presenter_;
};

}  // namespace halvex
