#pragma once

#include <QString>
#include <functional>

class QWidget;

namespace halvex {

// The console's modal message boxes: exclamation icon, a short title, one
// sentence. Tests replace the presenter to read what would have been shown.
struct Message {
    QString title;
    QString text;
    bool question = false;  // OK/Cancel rather than OK alone
};

class Messages {
  public:
    // Returns true for OK.
    using Presenter = std::function<bool(QWidget* parent, const Message& message)>;

    static void exclamation(QWidget* parent, const QString& title, const QString& text);
    // OK/Cancel with Cancel as the default; true when OK was chosen.
    static bool confirm(QWidget* parent, const QString& title, const QString& text);

    static void setPresenter(Presenter presenter);
    static void resetPresenter();

  private:
    static bool present(QWidget* parent, const Message& message);
};

}  // namespace halvex
