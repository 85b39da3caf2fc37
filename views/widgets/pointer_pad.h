#pragma once

#include <QPointF>
#include <QRectF>
#include <QWidget>

namespace halvex {

// A drawing area that reports mouse presses, moves and releases in its own
// unit coordinates instead of pixels, so that whoever listens does not care
// how large the area is on screen. The unit box runs from (0, 0) at the top
// left corner of padRect() to (unitWidth, unitHeight) at its bottom right,
// y growing downwards. The first and last pixel of each axis map exactly to
// the two ends, so both ends can be reached with the mouse.
//
// Each axis also has a rest position (the centre of a jog target, where the
// motor stands still). The middle pixel of the pad maps exactly onto it and
// the scale is linear on either side, so at any size there is a pixel row
// and column on which the pointer reads the rest position to the unit.
//
// Positions are reported as they are, not clamped: a pointer dragged out of
// the area while a button is held reports coordinates below 0 or above the
// span, which lets the listener tell "left the area" from "at the edge".
class PointerPad : public QWidget {
    Q_OBJECT
    Q_PROPERTY(double unitWidth READ unitWidth CONSTANT)
    Q_PROPERTY(double unitHeight READ unitHeight CONSTANT)
    Q_PROPERTY(QPointF restUnits READ restUnits CONSTANT)
    Q_PROPERTY(bool pointerHeld READ pointerHeld)
    Q_PROPERTY(QPointF pointerUnits READ pointerUnits)

  public:
    double unitWidth() const { return unitWidth_; }
    double unitHeight() const { return unitHeight_; }
    QPointF restUnits() const { return restUnits_; }

    // True while at least one mouse button is held over the pad.
    bool pointerHeld() const { return held_ != Qt::NoButton; }
    // Last pointer position in units (meaningful while pointerHeld()).
    QPointF pointerUnits() const { return pointerUnits_; }

    // The pixel area the units span: left/top are the first pixel, right/bottom the last.
    virtual QRectF padRect() const;

    // The pixel the rest position maps to: the middle of padRect(), on a whole pixel.
    QPointF restPixel() const;

    QPointF toUnits(const QPointF& widgetPos) const;
    QPointF toWidget(const QPointF& units) const;

  signals:
    // button: the button that caused the event (Qt::NoButton for a move);
    // buttons: the buttons held after the event, as Qt reports them.
    void mousePressed(Qt::MouseButton button, Qt::MouseButtons buttons, double unitX, double unitY);
    void mouseMoved(Qt::MouseButton button, Qt::MouseButtons buttons, double unitX, double unitY);
    void mouseReleased(Qt::MouseButton button, Qt::MouseButtons buttons, double unitX,
                       double unitY);

  protected:
    // restUnits must lie strictly inside the unit box on both axes.
    PointerPad(double unitWidth, double unitHeight, QPointF restUnits, QWidget* parent);

    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    // A pad hidden with a button down never sees the release; forget the press.
    void hideEvent(QHideEvent* event) override;

    // The pointer position clamped into the pad, in widget pixels, for drawing a marker.
    QPointF clampedPointerPixel() const;

  private:
    QPointF track(QMouseEvent* event);

    double unitWidth_;
    double unitHeight_;
    QPointF restUnits_;
    Qt::MouseButtons held_ = Qt::NoButton;
    QPointF pointerUnits_;
};

}  // namespace halvex
