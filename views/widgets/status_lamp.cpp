#include "views/widgets/status_lamp.h"

#include <QPainter>
#include <QRadialGradient>
#include <algorithm>

#include "views/widgets/instrument_light.h"
#include "views/widgets/widget_accessibility.h"

namespace halvex {

StatusLamp::StatusLamp(QWidget* parent) : QWidget(parent) {
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

void StatusLamp::setColor(const QColor& color) {
    if (color == color_) {
        return;
    }
    color_ = color;
    update();
    emit colorChanged(color_);
    announceValueChange(this);
}

void StatusLamp::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    // The lamp stays round whatever shape the widget is given.
    const double diameter = std::min(width(), height()) - 2.0;
    if (diameter < 2.0) {
        return;
    }
    const QPointF centre = QRectF(rect()).center();
    const double radius = diameter / 2.0;
    const QColor shown = signalColour(color_);

    // Body: the lamp's colour, shading slightly darker towards the rim.
    QRadialGradient body(centre - QPointF(radius * 0.25, radius * 0.25), radius * 1.2);
    body.setColorAt(0.0, shown.lighter(115));
    body.setColorAt(0.7, shown);
    body.setColorAt(1.0, shown.darker(150));
    painter.setPen(QPen(shown.darker(220), std::max(1.0, radius * 0.12)));
    painter.setBrush(body);
    painter.drawEllipse(centre, radius, radius);

    // A soft reflection in the upper left, as on a domed lens.
    const QPointF glint = centre - QPointF(radius * 0.3, radius * 0.35);
    QRadialGradient highlight(glint, radius * 0.55);
    highlight.setColorAt(0.0, markingColour(QColor(255, 255, 255, 170)));
    highlight.setColorAt(1.0, markingColour(QColor(255, 255, 255, 0)));
    painter.setPen(Qt::NoPen);
    painter.setBrush(highlight);
    painter.drawEllipse(glint, radius * 0.55, radius * 0.45);
}

}  // namespace halvex
