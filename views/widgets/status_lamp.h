#pragma once

#include <QColor>
#include <QWidget>

namespace halvex {

// A round indicator lamp. It shows whatever colour it is given; the lit and
// dark colours of each lamp are chosen by its owner.
class StatusLamp : public QWidget {
    Q_OBJECT
    Q_PROPERTY(QColor color READ color WRITE setColor NOTIFY colorChanged)

  public:
    explicit StatusLamp(QWidget* parent = nullptr);

    QColor color() const { return color_; }

    QSize sizeHint() const override { return {18, 18}; }
    QSize minimumSizeHint() const override { return {10, 10}; }

  public slots:
    void setColor(const QColor& color);

  signals:
    void colorChanged(const QColor& color);

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    QColor color_{224, 224, 224};
};

}  // namespace halvex
