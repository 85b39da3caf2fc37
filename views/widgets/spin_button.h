#pragma once

#include <QToolButton>
#include <QWidget>

namespace halvex {

// A pair of small arrow buttons, one above the other, that report "up" and
// "down" clicks and hold no value of their own. The arrows are child buttons
// named "up" and "down".
class SpinButton : public QWidget {
    Q_OBJECT
  public:
    explicit SpinButton(QWidget* parent = nullptr);

    QToolButton* upButton() const { return up_; }
    QToolButton* downButton() const { return down_; }

  signals:
    void SpinUp();
    void SpinDown();

  private:
    QToolButton* up_;
    QToolButton* down_;
};

}  // namespace halvex
