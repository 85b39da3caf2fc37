#pragma once

#include <QApplication>
#include <QMouseEvent>
#include <QObject>
#include <QPointF>
#include <QTest>
#include <vector>

#include "views/widgets/pointer_pad.h"

namespace halvex {

// Records what a PointerPad reports, one entry per signal, in order.
struct PointerReport {
    enum Kind { Press, Move, Release } kind;
    Qt::MouseButton button;
    Qt::MouseButtons buttons;
    QPointF units;
};

class PointerSpy {
  public:
    explicit PointerSpy(PointerPad& pad) {
        QObject::connect(&pad, &PointerPad::mousePressed,
                         [this](auto b, auto held, double x, double y) {
                             reports.push_back({PointerReport::Press, b, held, {x, y}});
                         });
        QObject::connect(&pad, &PointerPad::mouseMoved,
                         [this](auto b, auto held, double x, double y) {
                             reports.push_back({PointerReport::Move, b, held, {x, y}});
                         });
        QObject::connect(&pad, &PointerPad::mouseReleased,
                         [this](auto b, auto held, double x, double y) {
                             reports.push_back({PointerReport::Release, b, held, {x, y}});
                         });
    }

    std::vector<PointerReport> reports;
};

// Presses and releases a button at one pixel. QTest reads the pixel (0, 0)
// as "the widget's centre", so the top left corner gets real events instead.
inline void clickAt(QWidget& widget, QPoint pixel, Qt::MouseButton button = Qt::LeftButton) {
    if (!pixel.isNull()) {
        QTest::mousePress(&widget, button, Qt::NoModifier, pixel);
        QTest::mouseRelease(&widget, button, Qt::NoModifier, pixel);
        return;
    }
    const QPointF global = widget.mapToGlobal(QPointF(pixel));
    QMouseEvent press(QEvent::MouseButtonPress, QPointF(pixel), global, button, button,
                      Qt::NoModifier);
    QApplication::sendEvent(&widget, &press);
    QMouseEvent release(QEvent::MouseButtonRelease, QPointF(pixel), global, button, Qt::NoButton,
                        Qt::NoModifier);
    QApplication::sendEvent(&widget, &release);
}

}  // namespace halvex
