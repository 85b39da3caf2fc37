#include "views/widgets/jog_box.h"

#include <QPainter>
#include <QPainterPath>
#include <QRadialGradient>
#include <algorithm>
#include <cmath>

#include "views/widgets/instrument_light.h"
#include "views/widgets/widget_accessibility.h"

namespace halvex {

namespace {

// Colours by day; instrumentLight() decides how they show.
const QColor kFaceInner(0x2a, 0x34, 0x40);
const QColor kFaceOuter(0x17, 0x1d, 0x24);
const QColor kRing(0x3c, 0x4b, 0x5a);
const QColor kCrossHair(0x6c, 0xb4, 0xe0);

// A small solid arrow head pointing from the centre towards tip.
void drawArrowHead(QPainter& painter, const QPointF& tip, const QPointF& direction, double size,
                   const QColor& colour) {
    const QPointF back = tip - direction * size;
    const QPointF side(-direction.y() * size * 0.6, direction.x() * size * 0.6);
    QPainterPath path;
    path.moveTo(tip);
    path.lineTo(back + side);
    path.lineTo(back - side);
    path.closeSubpath();
    painter.fillPath(path, colour);
}

}  // namespace

JogBox::JogBox(QWidget* parent)
    : PointerPad(kUnitSpan, kUnitSpan, {kUnitCentre, kUnitCentre}, parent) {
    QSizePolicy policy(QSizePolicy::Preferred, QSizePolicy::Preferred);
    policy.setHeightForWidth(true);
    setSizePolicy(policy);
}

QRectF JogBox::padRect() const {
    const int side = std::min(width(), height());
    const double left = (width() - side) / 2;
    const double top = (height() - side) / 2;
    return QRectF(left, top, std::max(0, side - 1), std::max(0, side - 1));
}

void JogBox::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF area = padRect().adjusted(0.5, 0.5, 0.5, 0.5);
    if (area.width() < 4.0) {
        return;  // too small to draw anything recognisable
    }
    // Half a pixel on, so that one-pixel lines through the centre stay crisp.
    const QPointF centre = restPixel() + QPointF(0.5, 0.5);
    drawTarget(painter, area, centre);
    if (pointerHeld()) {
        drawMarker(painter, centre, clampedPointerPixel());
    } else if (!jogVector_.isNull()) {
        const double half = padRect().width() / 2.0;
        drawMarker(painter, centre,
                   centre + QPointF(jogVector_.x() * half, -jogVector_.y() * half));
    }
}

void JogBox::setJogVector(const QPointF& vector) {
    const QPointF clamped(std::clamp(vector.x(), -1.0, 1.0), std::clamp(vector.y(), -1.0, 1.0));
    if (clamped != jogVector_) {
        jogVector_ = clamped;
        update();
        announceValueChange(this);
    }
}

void JogBox::drawTarget(QPainter& painter, const QRectF& area, const QPointF& centre) const {
    const double side = area.width();
    const double radius = std::max(2.0, side * 0.06);
    const QColor ring = markingColour(kRing);
    const QColor crossHairInk = markingColour(kCrossHair);
    const QColor faceOuter = markingColour(kFaceOuter);

    QRadialGradient face(centre, side * 0.75);
    face.setColorAt(0.0, markingColour(kFaceInner));
    face.setColorAt(1.0, faceOuter);
    painter.setPen(QPen(ring, 1.0));
    painter.setBrush(face);
    painter.drawRoundedRect(area, radius, radius);

    // Rings at a quarter, half and three quarters of full speed.
    painter.setBrush(Qt::NoBrush);
    for (double fraction : {0.25, 0.5, 0.75}) {
        const double r = side * 0.5 * fraction;
        painter.setPen(QPen(ring, 1.0, fraction == 0.5 ? Qt::SolidLine : Qt::DotLine));
        painter.drawEllipse(centre, r, r);
    }

    // Cross-hair through the centre, edge to edge.
    QColor crossHair = crossHairInk;
    crossHair.setAlpha(150);
    painter.setPen(QPen(crossHair, 1.0));
    painter.drawLine(QPointF(area.left() + radius * 0.5, centre.y()),
                     QPointF(area.right() - radius * 0.5, centre.y()));
    painter.drawLine(QPointF(centre.x(), area.top() + radius * 0.5),
                     QPointF(centre.x(), area.bottom() - radius * 0.5));

    // Arrow heads near the edges say that the cross-hair is a direction.
    const double inset = side * 0.04;
    const double head = std::max(3.0, side * 0.035);
    drawArrowHead(painter, {centre.x(), area.top() + inset}, {0, -1}, head, crossHairInk);
    drawArrowHead(painter, {centre.x(), area.bottom() - inset}, {0, 1}, head, crossHairInk);
    drawArrowHead(painter, {area.left() + inset, centre.y()}, {-1, 0}, head, crossHairInk);
    drawArrowHead(painter, {area.right() - inset, centre.y()}, {1, 0}, head, crossHairInk);

    // The centre is where the platform stands still.
    const double hub = std::max(2.0, side * 0.035);
    painter.setPen(QPen(crossHairInk, 1.5));
    painter.setBrush(faceOuter);
    painter.drawEllipse(centre, hub, hub);
}

void JogBox::drawMarker(QPainter& painter, const QPointF& centre, const QPointF& marker) const {
    const double side = padRect().width();
    const QColor ink = signalColour(kJogMarker);
    QColor trail = ink;
    trail.setAlpha(170);
    painter.setPen(QPen(trail, std::max(1.5, side * 0.01), Qt::SolidLine, Qt::RoundCap));
    painter.drawLine(centre, marker);

    const double radius = std::max(3.0, side * 0.03);
    QColor halo = ink;
    halo.setAlpha(60);
    painter.setPen(Qt::NoPen);
    painter.setBrush(halo);
    painter.drawEllipse(marker, radius * 2.0, radius * 2.0);
    painter.setBrush(ink);
    painter.drawEllipse(marker, radius, radius);
}

}  // namespace halvex
