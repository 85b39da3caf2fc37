#include "views/widgets/lens_jog_box.h"

#include <QLinearGradient>
#include <QPainter>
#include <algorithm>

#include "views/widgets/instrument_light.h"

namespace halvex {

namespace {

// Colours by day; instrumentLight() decides how they show.
const QColor kTrackTop(0x2a, 0x34, 0x40);
const QColor kTrackBottom(0x17, 0x1d, 0x24);
const QColor kOutline(0x3c, 0x4b, 0x5a);
const QColor kScale(0x6c, 0xb4, 0xe0);

// "+" at the end that drives the motor forward, "-" at the other.
void drawSign(QPainter& painter, const QPointF& centre, double size, bool plus,
              const QColor& colour) {
    painter.setPen(QPen(colour, std::max(1.5, size * 0.3), Qt::SolidLine, Qt::RoundCap));
    painter.drawLine(centre - QPointF(size * 0.5, 0), centre + QPointF(size * 0.5, 0));
    if (plus) {
        painter.drawLine(centre - QPointF(0, size * 0.5), centre + QPointF(0, size * 0.5));
    }
}

}  // namespace

LensJogBox::LensJogBox(QWidget* parent)
    : PointerPad(kUnitWidth, kUnitHeight, {kUnitWidth / 2.0, kUnitCentreY}, parent) {
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Preferred);
}

void LensJogBox::hideEvent(QHideEvent* event) {
    if (pointerHeld()) {
        const QPointF at = pointerUnits();
        emit mouseReleased(Qt::NoButton, Qt::NoButton, at.x(), at.y());
    }
    PointerPad::hideEvent(event);
}

void LensJogBox::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF area = padRect().adjusted(0.5, 0.5, 0.5, 0.5);
    if (area.width() < 4.0 || area.height() < 8.0) {
        return;  // too small to draw anything recognisable
    }
    const double radius = std::min(area.width() * 0.25, 6.0);
    const double middleY = restPixel().y() + 0.5;  // on a pixel centre, so the line is crisp
    const QColor trackEdge = markingColour(kTrackBottom);
    const QColor scale = markingColour(kScale);
    const QColor marker = signalColour(kJogMarker);

    QLinearGradient track(area.topLeft(), area.topRight());
    track.setColorAt(0.0, trackEdge);
    track.setColorAt(0.5, markingColour(kTrackTop));
    track.setColorAt(1.0, trackEdge);
    painter.setPen(QPen(markingColour(kOutline), 1.0));
    painter.setBrush(track);
    painter.drawRoundedRect(area, radius, radius);

    // Ticks every tenth of the travel on each side, the rest line in full.
    QColor tick = scale;
    tick.setAlpha(90);
    painter.setPen(QPen(tick, 1.0));
    const double tickLength = area.width() * 0.18;
    for (int i = 1; i < 10; ++i) {
        const double y = area.top() + area.height() * i / 10.0;
        painter.drawLine(QPointF(area.left() + 2.0, y), QPointF(area.left() + 2.0 + tickLength, y));
        painter.drawLine(QPointF(area.right() - 2.0 - tickLength, y),
                         QPointF(area.right() - 2.0, y));
    }

    if (pointerHeld()) {
        const double pointerY = clampedPointerPixel().y();
        QColor fill = marker;
        fill.setAlpha(110);
        const QRectF band(QPointF(area.left() + 3.0, std::min(middleY, pointerY)),
                          QPointF(area.right() - 3.0, std::max(middleY, pointerY)));
        painter.setPen(Qt::NoPen);
        painter.setBrush(fill);
        painter.drawRect(band);
        painter.setPen(QPen(marker, 2.0, Qt::SolidLine, Qt::RoundCap));
        painter.drawLine(QPointF(area.left() + 2.0, pointerY),
                         QPointF(area.right() - 2.0, pointerY));
    }

    painter.setPen(QPen(scale, 1.5));
    painter.drawLine(QPointF(area.left() + 2.0, middleY), QPointF(area.right() - 2.0, middleY));

    const double sign = std::clamp(area.width() * 0.3, 3.0, 8.0);
    drawSign(painter, {area.center().x(), area.top() + sign + 3.0}, sign, true, scale);
    drawSign(painter, {area.center().x(), area.bottom() - sign - 3.0}, sign, false, scale);
}

}  // namespace halvex
