#include "views/widgets/lamp_pictures.h"

#include <QIconEngine>
#include <QPainter>
#include <QPixmap>
#include <QRadialGradient>

#include "views/widgets/instrument_light.h"

namespace halvex {

namespace {
// Draws the lamp afresh at whatever size the button asks for, in device
// pixels, so it stays sharp at every scale (a picture drawn once at one size
// would be blown up and blurred at 150 or 200 %), and in the current light.
class LampEngine : public QIconEngine {
  public:
    explicit LampEngine(const QColor& colour) : colour_(colour) {}

    void paint(QPainter* painter, const QRect& rect, QIcon::Mode, QIcon::State) override {
        const QColor colour = signalColour(colour_);
        const double side = std::min(rect.width(), rect.height());
        const QRectF lamp(rect.x() + (rect.width() - side) / 2.0 + side * 0.1,
                          rect.y() + (rect.height() - side) / 2.0 + side * 0.1, side * 0.8,
                          side * 0.8);
        painter->save();
        painter->setRenderHint(QPainter::Antialiasing);
        QRadialGradient glow(lamp.left() + lamp.width() * 0.35, lamp.top() + lamp.height() * 0.32,
                             lamp.width() * 0.75);
        glow.setColorAt(0.0, colour.lighter(170));
        glow.setColorAt(0.5, colour);
        glow.setColorAt(1.0, colour.darker(170));
        painter->setBrush(glow);
        painter->setPen(QPen(colour.darker(220), std::max(1.0, side / 20.0)));
        painter->drawEllipse(lamp);
        painter->restore();
    }

    QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State state) override {
        QPixmap pixmap(size);
        pixmap.fill(Qt::transparent);
        QPainter painter(&pixmap);
        paint(&painter, QRect(QPoint(0, 0), size), mode, state);
        return pixmap;
    }

    QIconEngine* clone() const override { return new LampEngine(colour_); }

  private:
    QColor colour_;
};
}  // namespace

// One engine each for the life of the program (never destroyed after the
// application object): the lamp changes with every fault and good reply.
QIcon goodLinkPicture() {
    static const QIcon* const picture = new QIcon(new LampEngine(QColor(40, 200, 70)));
    return *picture;
}
QIcon faultLinkPicture() {
    static const QIcon* const picture = new QIcon(new LampEngine(QColor(220, 40, 40)));
    return *picture;
}
QIcon idleLinkPicture() {
    static const QIcon* const picture = new QIcon(new LampEngine(QColor(150, 150, 150)));
    return *picture;
}

}  // namespace halvex
