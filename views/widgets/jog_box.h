#pragma once

#include "views/widgets/pointer_pad.h"

namespace halvex {

// The square pan/tilt jog target. It reports the mouse in a 0..512 unit box
// on both axes, (0, 0) at the top left corner and y growing downwards; the
// centre of the target sits at 255 on both axes. It draws a cross-hair
// target and, while a button is held, a marker at the pointer with a line
// from the centre showing which way and how far the operator is pushing.
// Turning positions into speeds is left to whoever listens to the signals.
// Whoever steers (the mouse, the keyboard, a game controller), the box shows
// the speeds being sent as the same marker and line (jogVector).
class JogBox : public PointerPad {
    Q_OBJECT
    // Pan and tilt speed as fractions of full speed, -1..1, right and up positive.
    Q_PROPERTY(QPointF jogVector READ jogVector WRITE setJogVector)

  public:
    static constexpr double kUnitSpan = 512.0;
    static constexpr double kUnitCentre = 255.0;

    explicit JogBox(QWidget* parent = nullptr);

    // The largest square centred in the widget, from its first to its last pixel.
    QRectF padRect() const override;

    bool hasHeightForWidth() const override { return true; }
    int heightForWidth(int width) const override { return width; }
    QSize sizeHint() const override { return {220, 220}; }
    QSize minimumSizeHint() const override { return {96, 96}; }

    QPointF jogVector() const { return jogVector_; }
    void setJogVector(const QPointF& vector);

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    void drawTarget(QPainter& painter, const QRectF& area, const QPointF& centre) const;
    void drawMarker(QPainter& painter, const QPointF& centre, const QPointF& marker) const;

    QPointF jogVector_;
};

}  // namespace halvex
