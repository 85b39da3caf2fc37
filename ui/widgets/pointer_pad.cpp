#include "ui/widgets/pointer_pad.h"

#include <QMouseEvent>
#include <algorithm>

namespace halvex {

PointerPad::PointerPad(double unitWidth, double unitHeight, QWidget* parent)
    : QWidget(parent), unitWidth_(unitWidth), unitHeight_(unitHeight) {
    setCursor(Qt::CrossCursor);
}

QRectF PointerPad::padRect() const {
    return QRectF(0.0, 0.0, std::max(0, width() - 1), std::max(0, height() - 1));
}

QPointF PointerPad::toUnits(const QPointF& widgetPos) const {
    const QRectF pad = padRect();
    // A pad one pixel wide has no span; treat it as one pixel so nothing divides by zero.
    const double spanX = std::max(pad.width(), 1.0);
    const double spanY = std::max(pad.height(), 1.0);
    return {(widgetPos.x() - pad.left()) * unitWidth_ / spanX,
            (widgetPos.y() - pad.top()) * unitHeight_ / spanY};
}

QPointF PointerPad::toWidget(const QPointF& units) const {
    const QRectF pad = padRect();
    return {pad.left() + units.x() * pad.width() / unitWidth_,
            pad.top() + units.y() * pad.height() / unitHeight_};
}

QPointF PointerPad::clampedPointerPixel() const {
    const QPointF units(std::clamp(pointerUnits_.x(), 0.0, unitWidth_),
                        std::clamp(pointerUnits_.y(), 0.0, unitHeight_));
    return toWidget(units);
}

QPointF PointerPad::track(QMouseEvent* event) {
    held_ = event->buttons();
    pointerUnits_ = toUnits(event->position());
    update();
    return pointerUnits_;
}

void PointerPad::mousePressEvent(QMouseEvent* event) {
    const QPointF units = track(event);
    emit mousePressed(event->button(), event->buttons(), units.x(), units.y());
}

void PointerPad::mouseMoveEvent(QMouseEvent* event) {
    const QPointF units = track(event);
    emit mouseMoved(event->button(), event->buttons(), units.x(), units.y());
}

void PointerPad::mouseReleaseEvent(QMouseEvent* event) {
    const QPointF units = track(event);
    emit mouseReleased(event->button(), event->buttons(), units.x(), units.y());
}

}  // namespace halvex
