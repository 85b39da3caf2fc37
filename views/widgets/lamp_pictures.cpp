#include "views/widgets/lamp_pictures.h"

#include <QPainter>
#include <QPixmap>
#include <QRadialGradient>

namespace halvex {

namespace {
QIcon lamp(const QColor& colour) {
    constexpr int kSize = 32;
    QPixmap pixmap(kSize, kSize);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    QRadialGradient glow(kSize * 0.38, kSize * 0.35, kSize * 0.6);
    glow.setColorAt(0.0, colour.lighter(170));
    glow.setColorAt(0.5, colour);
    glow.setColorAt(1.0, colour.darker(170));
    painter.setBrush(glow);
    painter.setPen(QPen(colour.darker(220), 1.5));
    painter.drawEllipse(QRectF(3, 3, kSize - 6, kSize - 6));
    return QIcon(pixmap);
}
}  // namespace

QIcon goodLinkPicture() {
    return lamp(QColor(40, 200, 70));
}
QIcon faultLinkPicture() {
    return lamp(QColor(220, 40, 40));
}
QIcon idleLinkPicture() {
    return lamp(QColor(150, 150, 150));
}

}  // namespace halvex
