#include "live_video/video_pane.h"

#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>
#include <QWheelEvent>
#include <cmath>

namespace halvex {

namespace {
// The picture's shape before the first frame: most encoders send 16:9.
constexpr double kFirstAspect = 9.0 / 16.0;
constexpr int kWheelStep = 120;  // one notch
constexpr int kCentreMark = 14;
constexpr int kTextMargin = 6;

// Colours over any picture, as #AARRGGBB: light lines with a dark edge
// under them.
const QColor kMarkColour("#dcffffff");
const QColor kShadeColour("#a0000000");
const QColor kLimitColour("#e6ffb020");   // amber
const QColor kTargetColour("#f0ff6030");  // orange-red
const QColor kBoxColour("#e660c8ff");     // sky blue
// Where the picture will be, before it comes.
const QColor kNoPictureColour("#18181c");

QRectF clippedToUnit(const QRectF& box) {
    return box.normalized().intersected(QRectF(0.0, 0.0, 1.0, 1.0));
}

// A line drawn twice, dark under light, so that it shows on sky and ground.
void drawVisibleLine(QPainter& painter, QPointF from, QPointF to, const QColor& colour,
                     Qt::PenStyle style = Qt::SolidLine) {
    painter.setPen(QPen(kShadeColour, 3.0));
    painter.drawLine(from, to);
    painter.setPen(QPen(colour, 1.5, style));
    painter.drawLine(from, to);
}

void drawBoxedText(QPainter& painter, const QRectF& area, Qt::Alignment alignment,
                   const QString& text) {
    const QFontMetricsF metrics(painter.font());
    const QSizeF size(metrics.horizontalAdvance(text) + 2 * kTextMargin,
                      metrics.height() + kTextMargin);
    QRectF box(QPointF(), size);
    if (alignment & Qt::AlignRight) {
        box.moveRight(area.right() - kTextMargin);
    } else if (alignment & Qt::AlignHCenter) {
        box.moveLeft(area.center().x() - size.width() / 2);
    } else {
        box.moveLeft(area.left() + kTextMargin);
    }
    if (alignment & Qt::AlignBottom) {
        box.moveBottom(area.bottom() - kTextMargin);
    } else if (alignment & Qt::AlignVCenter) {
        box.moveTop(area.center().y() - size.height() / 2);
    } else {
        box.moveTop(area.top() + kTextMargin);
    }
    painter.setPen(Qt::NoPen);
    painter.setBrush(kShadeColour);
    painter.drawRoundedRect(box, 4, 4);
    painter.setPen(kMarkColour);
    painter.drawText(box, Qt::AlignCenter, text);
}
}  // namespace

VideoPane::VideoPane(const QString& caption, QWidget* parent) : QWidget(parent), caption_(caption) {
    setFocusPolicy(Qt::NoFocus);
    setAttribute(Qt::WA_OpaquePaintEvent);
    setCursor(Qt::CrossCursor);
    setAccessibleName(caption);
    noticeExpiry_.setSingleShot(true);
    noticeExpiry_.setInterval(kNoticeMs);
    connect(&noticeExpiry_, &QTimer::timeout, this, [this] {
        notice_.clear();
        update();
    });
}

void VideoPane::setFrame(const QImage& frame) {
    frame_ = frame;
    update();
}

void VideoPane::clearFrame() {
    frame_ = QImage();
    update();
}

void VideoPane::setMessage(const QString& text) {
    message_ = text;
    setAccessibleDescription(text);
    update();
}

void VideoPane::setOverlay(VideoOverlay overlay) {
    overlay_ = std::move(overlay);
    update();
}

void VideoPane::showNotice(const QString& text) {
    notice_ = text;
    noticeExpiry_.start();
    update();
}

QRectF VideoPane::pictureRect() const {
    const double aspect =
        frame_.isNull() ? kFirstAspect : static_cast<double>(frame_.height()) / frame_.width();
    const QRectF area = rect();
    QSizeF size(area.width(), area.width() * aspect);
    if (size.height() > area.height()) {
        size = QSizeF(area.height() / aspect, area.height());
    }
    QRectF picture(QPointF(), size);
    picture.moveCenter(area.center());
    return picture;
}

QPointF VideoPane::toPicture(QPointF widgetPoint) const {
    const QRectF picture = pictureRect();
    return {(widgetPoint.x() - picture.left()) / picture.width(),
            (widgetPoint.y() - picture.top()) / picture.height()};
}

QPointF VideoPane::toWidget(QPointF picturePoint) const {
    const QRectF picture = pictureRect();
    return {picture.left() + picturePoint.x() * picture.width(),
            picture.top() + picturePoint.y() * picture.height()};
}

QSize VideoPane::sizeHint() const {
    return {480, 270};
}

QSize VideoPane::minimumSizeHint() const {
    return {160, 90};
}

void VideoPane::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.fillRect(rect(), Qt::black);
    const QRectF picture = pictureRect();
    if (frame_.isNull()) {
        painter.fillRect(picture, kNoPictureColour);
    } else {
        painter.setRenderHint(QPainter::SmoothPixmapTransform);
        painter.drawImage(picture, frame_);
    }
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setClipRect(picture);

    const auto across = [&](double fraction) {
        return picture.left() + fraction * picture.width();
    };
    const auto down = [&](double fraction) { return picture.top() + fraction * picture.height(); };
    for (const auto& edge : {overlay_.limitLeft, overlay_.limitRight}) {
        if (edge) {
            drawVisibleLine(painter, {across(*edge), picture.top()},
                            {across(*edge), picture.bottom()}, kLimitColour, Qt::DashLine);
        }
    }
    for (const auto& edge : {overlay_.limitTop, overlay_.limitBottom}) {
        if (edge) {
            drawVisibleLine(painter, {picture.left(), down(*edge)}, {picture.right(), down(*edge)},
                            kLimitColour, Qt::DashLine);
        }
    }

    if (hasPicture()) {
        const QPointF centre = picture.center();
        drawVisibleLine(painter, centre - QPointF(kCentreMark, 0), centre + QPointF(kCentreMark, 0),
                        kMarkColour);
        drawVisibleLine(painter, centre - QPointF(0, kCentreMark), centre + QPointF(0, kCentreMark),
                        kMarkColour);
    }
    if (overlay_.target) {
        const QPointF at = toWidget(*overlay_.target);
        painter.setPen(QPen(kShadeColour, 4.0));
        painter.setBrush(Qt::NoBrush);
        painter.drawEllipse(at, kCentreMark / 2.0, kCentreMark / 2.0);
        painter.setPen(QPen(kTargetColour, 2.0));
        painter.drawEllipse(at, kCentreMark / 2.0, kCentreMark / 2.0);
    }
    if (dragged_) {
        const QRectF box(toWidget(dragged_->topLeft()), toWidget(dragged_->bottomRight()));
        painter.setPen(QPen(kShadeColour, 3.0));
        painter.drawRect(box);
        painter.setPen(QPen(kBoxColour, 1.5, Qt::DashLine));
        painter.drawRect(box);
    }

    drawBoxedText(painter, picture, Qt::AlignLeft | Qt::AlignTop, caption_);
    if (!overlay_.readout.isEmpty()) {
        drawBoxedText(painter, picture, Qt::AlignLeft | Qt::AlignBottom, overlay_.readout);
    }
    if (!hasPicture() && !message_.isEmpty()) {
        drawBoxedText(painter, picture, Qt::AlignHCenter | Qt::AlignVCenter, message_);
    } else if (!message_.isEmpty()) {
        drawBoxedText(painter, picture, Qt::AlignRight | Qt::AlignTop, message_);
    }
    if (!notice_.isEmpty()) {
        drawBoxedText(painter, picture, Qt::AlignRight | Qt::AlignBottom, notice_);
    }
}

void VideoPane::mousePressEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton || !pictureRect().contains(event->position())) {
        pressedAt_.reset();
        return;
    }
    pressedAt_ = event->position();
    dragged_.reset();
}

void VideoPane::mouseMoveEvent(QMouseEvent* event) {
    if (!pressedAt_ || !(event->buttons() & Qt::LeftButton)) {
        return;
    }
    if (!dragged_ && (event->position() - *pressedAt_).manhattanLength() < kDragPixels) {
        return;
    }
    dragged_ = clippedToUnit(QRectF(toPicture(*pressedAt_), toPicture(event->position())));
    update();
}

void VideoPane::mouseReleaseEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton || !pressedAt_) {
        return;
    }
    pressedAt_.reset();
    if (dragged_) {
        const QRectF box = *dragged_;
        dragged_.reset();
        update();
        if (!box.isEmpty()) {
            emit boxRequested(box);
        }
        return;
    }
    if (pictureRect().contains(event->position())) {
        emit centreRequested(toPicture(event->position()));
    }
}

void VideoPane::wheelEvent(QWheelEvent* event) {
    // A touch pad sends the notch in small parts; they add up to steps.
    wheelRemainder_ += event->angleDelta().y();
    const int steps = wheelRemainder_ / kWheelStep;
    wheelRemainder_ -= steps * kWheelStep;
    if (steps != 0) {
        emit zoomRequested(steps);
    }
    event->accept();
}

}  // namespace halvex
