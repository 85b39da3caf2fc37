#pragma once

#include <QImage>
#include <QPointF>
#include <QRectF>
#include <QTimer>
#include <QWidget>
#include <optional>

namespace halvex {

// What the console draws over the picture: the pan, tilt and zoom read-out,
// the soft limits where they are in view, and the point a click sent the
// platform to until the move ends. Positions are fractions of the picture.
struct VideoOverlay {
    QString readout;
    std::optional<double> limitLeft;
    std::optional<double> limitRight;
    std::optional<double> limitTop;
    std::optional<double> limitBottom;
    std::optional<QPointF> target;
};

// One of the unit's video outputs, as the console receives it: the newest
// frame scaled into the pane with its shape kept, or a message when there
// is no picture. A click asks for the point to be brought to the centre,
// a dragged box for it to fill the picture, the wheel for zoom. The pane
// knows nothing of the unit; points and boxes are fractions of the picture.
// It takes no keyboard focus, so the keyboard jog works with the pointer
// over it.
class VideoPane : public QWidget {
    Q_OBJECT
    Q_PROPERTY(QString message READ message)
    Q_PROPERTY(bool hasPicture READ hasPicture)
    Q_PROPERTY(QString notice READ notice)
    Q_PROPERTY(QString readout READ readout)
  public:
    // A press that moves less than this far is a click, not a box.
    static constexpr int kDragPixels = 6;
    static constexpr int kNoticeMs = 6000;

    explicit VideoPane(const QString& caption, QWidget* parent = nullptr);

    void setFrame(const QImage& frame);
    void clearFrame();
    void setMessage(const QString& text);
    void setOverlay(VideoOverlay overlay);
    // Why a request was not carried out, shown over the picture a while.
    void showNotice(const QString& text);

    QString caption() const { return caption_; }
    QString message() const { return message_; }
    bool hasPicture() const { return !frame_.isNull(); }
    QString notice() const { return notice_; }
    QString readout() const { return overlay_.readout; }
    const VideoOverlay& overlay() const { return overlay_; }
    const QImage& frame() const { return frame_; }
    // Where the picture is drawn in the pane: the frame's shape, or 16:9
    // before the first frame.
    QRectF pictureRect() const;
    QPointF toPicture(QPointF widgetPoint) const;
    QPointF toWidget(QPointF picturePoint) const;
    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

  signals:
    void centreRequested(QPointF point);
    void boxRequested(QRectF box);
    void zoomRequested(int steps);

  protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;

  private:
    QString caption_;
    QImage frame_;
    QString message_;
    VideoOverlay overlay_;
    QString notice_;
    QTimer noticeExpiry_;
    std::optional<QPointF> pressedAt_;
    std::optional<QRectF> dragged_;
    int wheelRemainder_ = 0;
};

}  // namespace halvex
