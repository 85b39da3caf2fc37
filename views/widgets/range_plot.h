#pragma once

#include <QElapsedTimer>
#include <QImage>
#include <QPointF>
#include <QString>
#include <QTimer>
#include <QWidget>
#include <map>
#include <optional>
#include <vector>

#include "views/widgets/motion_trail.h"
#include "views/widgets/plot_frame.h"

namespace halvex {

struct PlotPreset {
    int number = 0;
    PlotAngles at;
};

struct PlotTourStep {
    int preset = 0;
    PlotAngles at;
    int dwellSeconds = 0;

    bool operator==(const PlotTourStep&) const = default;
};

// The unit's whole range at a glance, pan across and tilt up: the hard
// limits, the soft limits with the zone outside them shaded, the presets,
// the chosen tour's path, where the platform points, its target and its
// trail. It knows nothing of the unit: it is told what to show, and says
// what the operator asks for (a move, a preset, saving one), for whoever
// drives the unit to carry out or refuse.
class RangePlot : public QWidget {
    Q_OBJECT
    Q_PROPERTY(QPointF position READ positionPoint)
    Q_PROPERTY(QPointF target READ targetPoint)
    Q_PROPERTY(bool moving READ moving)
    Q_PROPERTY(double zoom READ zoom)
    Q_PROPERTY(QString notice READ notice)
  public:
    // A marker within this many pixels of the pointer is under it.
    static constexpr double kPickRadius = 8.0;
    static constexpr int kNoticeMs = 6000;
    // The presets the unit keeps, offered for saving the position to.
    static constexpr int kPresetChoices = 32;

    explicit RangePlot(QWidget* parent = nullptr);

    void setHardLimits(const PlotLimits& limits);
    void setSoftLimits(const PlotLimits& limits);
    // A unit that pans for ever: pan wraps at ±180 and has no limits.
    void setPanWraps(bool wraps);
    void setPresets(std::vector<PlotPreset> presets);
    void setTour(std::vector<PlotTourStep> steps);
    void setPosition(PlotAngles at);
    void setTarget(PlotAngles at);
    void setMoving(bool moving);
    // A short message drawn on the plot, such as why a move was refused.
    void showNotice(const QString& text);
    // What the preset looks at, shown under its marker's tool tip; a null
    // picture takes it away.
    void setPresetPicture(int number, const QImage& picture);

    const PlotLimits& hardLimits() const { return hard_; }
    const PlotLimits& softLimits() const { return soft_; }
    bool panWraps() const { return panWraps_; }
    const std::vector<PlotPreset>& presets() const { return presets_; }
    const std::vector<PlotTourStep>& tour() const { return tour_; }
    const MotionTrail& trail() const { return trail_; }
    // 0/0 until the first report.
    PlotAngles position() const { return position_.value_or(PlotAngles{}); }
    // Pan as x, tilt as y, for the properties.
    QPointF positionPoint() const { return {position().pan, position().tilt}; }
    QPointF targetPoint() const {
        return target_ ? QPointF(target_->pan, target_->tilt) : QPointF();
    }
    std::optional<PlotAngles> target() const { return target_; }
    bool moving() const { return moving_; }
    double zoom() const { return frame_.zoom(); }
    QString notice() const { return notice_; }
    const PlotFrame& frame() const { return frame_; }

    // The preset whose marker lies under `pixel`, if any.
    std::optional<int> presetAt(QPointF pixel) const;
    // The angles under `pixel`, pan wrapped into ±180 for a unit that pans
    // for ever; nothing outside the plotted range.
    std::optional<PlotAngles> anglesAt(QPointF pixel) const;
    // The preset nearest to where the platform points.
    std::optional<PlotPreset> nearestPreset() const;
    // What the plot shows, in words, for assistive technology.
    QString summary() const;
    // The tool tip over `pixel`: the preset under it and its picture, as
    // rich text when it has one; empty away from the markers.
    QString toolTipAt(QPointF pixel) const;

    QSize sizeHint() const override { return {420, 260}; }
    QSize minimumSizeHint() const override { return {240, 160}; }

  signals:
    void moveRequested(double pan, double tilt);
    void presetRequested(int number);
    void savePositionRequested(int number);

  protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    bool event(QEvent* event) override;

  private:
    // The range drawn: the hard limits, or all of pan for a wrapping unit.
    PlotLimits plottedRange() const;
    void refit();
    void ageTrail();
    // The marker under `pixel`: the nearest within reach.
    const PlotPreset* markerAt(QPointF pixel) const;
    bool nearTarget(QPointF pixel) const;
    void requestMoveAt(QPointF pixel);
    void changed();

    PlotLimits hard_;
    PlotLimits soft_;
    bool panWraps_ = false;
    std::vector<PlotPreset> presets_;
    std::vector<PlotTourStep> tour_;
    std::optional<PlotAngles> position_;
    std::optional<PlotAngles> target_;
    bool moving_ = false;
    MotionTrail trail_;
    QElapsedTimer clock_;
    QTimer fading_;
    QString notice_;
    QTimer noticeExpiry_;
    PlotFrame frame_;
    // Each preset's picture as an <img> a tool tip can show.
    std::map<int, QString> pictureTags_;

    // Pointer handling: where a press started, whether the target marker is
    // being dragged (and where to), and a double click's release to ignore.
    std::optional<QPointF> pressedAt_;
    std::optional<QPointF> draggedTo_;
    bool draggingTarget_ = false;
    bool swallowRelease_ = false;
};

}  // namespace halvex
