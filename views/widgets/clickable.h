#pragma once

#include <QLabel>
#include <QLineEdit>

namespace halvex {

// A label the operator clicks to step through choices (the camera line
// labels). Still a QLabel to anyone who looks it up.
class ClickLabel : public QLabel {
    Q_OBJECT
  public:
    explicit ClickLabel(const QString& text, QWidget* parent = nullptr);

  signals:
    void clicked();

  protected:
    void mouseReleaseEvent(QMouseEvent* event) override;
};

// A text box that also reports double clicks (the transmit boxes clear on one).
class DoubleClickLineEdit : public QLineEdit {
    Q_OBJECT
  public:
    using QLineEdit::QLineEdit;

  signals:
    void doubleClicked();

  protected:
    void mouseDoubleClickEvent(QMouseEvent* event) override;
};

}  // namespace halvex
