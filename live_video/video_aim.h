#pragma once

#include <QCoro/QCoroTask>
#include <QObject>
#include <QPointer>
#include <functional>
#include <optional>

#include "live_video/aiming.h"
#include "live_video/field_of_view.h"
#include "session/session.h"

namespace halvex {

class VideoPane;

// Aims the platform by one output's picture. The unit's route says which
// camera the output shows; that camera's lens zoom and field of view say
// what angle a point of the picture lies at. A click is one delta move that
// brings the point to the centre; a dragged box is one absolute move to the
// box's middle with that camera's zoom set so the box fills the picture; a
// wheel notch zooms in or out by a fixed ratio. Each goes through the
// session as a program's request, so it is refused offline, while the
// tables are read again, while the operator jogs and outside the soft
// limits; why shows on the pane and goes to `tell`. The pane's overlay
// shows the read-out, the soft limits in view and the clicked target until
// the move ends.
class VideoAim : public QObject {
    Q_OBJECT
  public:
    // One wheel notch narrows (or widens) the field by this ratio.
    static constexpr double kZoomPerNotch = 0.8;

    VideoAim(Session& session, VideoPane& pane, int output,
             std::function<FieldOfView(int camera)> fieldOf,
             std::function<void(const QString&)> tell, QObject* parent = nullptr);

    // The camera (0 or 1) that the unit's route puts on this output.
    int camera() const;
    // The output's picture as the camera sees it now.
    PictureGeometry geometry() const;
    // While set, a click marks a point of the picture for `marker` and
    // moves nothing (a calibration's marks).
    void setMarker(std::function<void(QPointF point)> marker) { marker_ = std::move(marker); }

  private:
    void centreOn(QPointF point);
    void fillWith(QRectF box);
    void zoomBy(int notches);
    void showOverlay();
    void showCaption();
    int zoomLens() const;
    std::array<int, 4> lensesWithZoom(int zoom) const;
    void carryOut(const char* handler, QCoro::Task<Outcome> operation);
    QCoro::Task<> reportOutcome(QCoro::Task<Outcome> operation);

    Session& session_;
    QPointer<VideoPane> pane_;
    int output_;
    std::function<FieldOfView(int camera)> fieldOf_;
    std::function<void(const QString&)> tell_;
    std::function<void(QPointF)> marker_;
    // Where a click or a box sent the platform, shown until the move ends.
    std::optional<QPointF> target_;
    bool targetReached_ = false;
};

}  // namespace halvex
