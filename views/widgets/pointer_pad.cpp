#include "views/widgets/pointer_pad.h"

#include <QHideEvent>
#include <QMouseEvent>
#include <algorithm>
#include <cmath>

namespace halvex {

namespace {

// One axis of the pad: pixels first..last, with the rest unit at pixel rest.
// Each side is measured from its own end, so the end pixels give exactly 0
// and span. A pad too small to have pixels on one side counts that side as
// one pixel wide, so nothing divides by zero.
struct Axis {
    double first;
    double rest;
    double last;
    double restUnit;
    double span;

    double lowPixels() const { return std::max(rest - first, 1.0); }
    double highPixels() const { return std::max(last - rest, 1.0); }

    double toUnit(double pixel) const {
        return pixel <= rest ? (pixel - first) * restUnit / lowPixels()
                             : span - (last - pixel) * (span - restUnit) / highPixels();
    }
    double toPixel(double unit) const {
        return unit <= restUnit ? first + unit * lowPixels() / restUnit
                                : last - (span - unit) * highPixels() / (span - restUnit);
    }
};

}  // namespace

PointerPad::PointerPad(double unitWidth, double unitHeight, QPointF restUnits, QWidget* parent)
    : QWidget(parent), unitWidth_(unitWidth), unitHeight_(unitHeight), restUnits_(restUnits) {
    setCursor(Qt::CrossCursor);
    // Reached with Tab like every control, so assistive technology can read it.
    setFocusPolicy(Qt::TabFocus);
}

QRectF PointerPad::padRect() const {
    return QRectF(0.0, 0.0, std::max(0, width() - 1), std::max(0, height() - 1));
}

QPointF PointerPad::restPixel() const {
    const QRectF pad = padRect();
    return {pad.left() + std::floor(pad.width() / 2.0), pad.top() + std::floor(pad.height() / 2.0)};
}

QPointF PointerPad::toUnits(const QPointF& widgetPos) const {
    const QRectF pad = padRect();
    const QPointF rest = restPixel();
    const Axis x{pad.left(), rest.x(), pad.right(), restUnits_.x(), unitWidth_};
    const Axis y{pad.top(), rest.y(), pad.bottom(), restUnits_.y(), unitHeight_};
    return {x.toUnit(widgetPos.x()), y.toUnit(widgetPos.y())};
}

QPointF PointerPad::toWidget(const QPointF& units) const {
    const QRectF pad = padRect();
    const QPointF rest = restPixel();
    const Axis x{pad.left(), rest.x(), pad.right(), restUnits_.x(), unitWidth_};
    const Axis y{pad.top(), rest.y(), pad.bottom(), restUnits_.y(), unitHeight_};
    return {x.toPixel(units.x()), y.toPixel(units.y())};
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

void PointerPad::hideEvent(QHideEvent* event) {
    held_ = Qt::NoButton;
    QWidget::hideEvent(event);
}

}  // namespace halvex
