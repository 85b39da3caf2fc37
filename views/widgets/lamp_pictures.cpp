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

// Drawn once: the lamp changes with every fault and good reply. Kept for the
// life of the program (never destroyed after the application object).
QIcon goodLinkPicture() {
    static const QIcon* const picture = new QIcon(lamp(QColor(40, 200, 70)));
    return *picture;
}
QIcon faultLinkPicture() {
    static const QIcon* const picture = new QIcon(lamp(QColor(220, 40, 40)));
    return *picture;
}
QIcon idleLinkPicture() {
    static const QIcon* const picture = new QIcon(lamp(QColor(150, 150, 150)));
    return *picture;
}

}  // namespace halvex
