#include "live_video/video_aim.h"

#include <cmath>

#include "live_video/video_pane.h"
#include "protocol/fault_guard.h"
#include "protocol/vocabulary_lenses.h"

namespace halvex {

VideoAim::VideoAim(Session& session, VideoPane& pane, int output,
                   std::function<FieldOfView(int camera)> fieldOf,
                   std::function<void(const QString&)> tell, QObject* parent)
    : QObject(parent),
      session_(session),
      pane_(&pane),
      output_(output),
      fieldOf_(std::move(fieldOf)),
      tell_(std::move(tell)) {
    connect(&session, &Session::positionReported, this, &VideoAim::showOverlay);
    connect(&session, &Session::lensReported, this, &VideoAim::showOverlay);
    connect(&session, &Session::softLimitReported, this, &VideoAim::showOverlay);
    connect(&session, &Session::videoReported, this, &VideoAim::showCaption);
    connect(&pane, &VideoPane::centreRequested, this, &VideoAim::centreOn);
    connect(&pane, &VideoPane::boxRequested, this, &VideoAim::fillWith);
    connect(&pane, &VideoPane::zoomRequested, this, &VideoAim::zoomBy);
    showCaption();
    showOverlay();
}

int VideoAim::camera() const {
    return routeOf(session_.status().Video.route).camera.at(static_cast<std::size_t>(output_));
}

int VideoAim::zoomLens() const {
    return vocab::lenses::zoomOf(camera());
}

PictureGeometry VideoAim::geometry() const {
    PictureGeometry picture;
    picture.fieldDegrees = fieldOf_(camera()).degreesAt(
        session_.status().Lens.at(static_cast<std::size_t>(zoomLens())));
    const QImage& frame = pane_->frame();
    if (!frame.isNull()) {
        picture.aspect = static_cast<double>(frame.height()) / frame.width();
    }
    return picture;
}

std::array<int, 4> VideoAim::lensesWithZoom(int zoom) const {
    std::array<int, 4> lenses{};
    const LensPositions& now = session_.status().Lens;
    std::copy(now.begin(), now.end(), lenses.begin());
    lenses.at(static_cast<std::size_t>(zoomLens())) = zoom;
    return lenses;
}

void VideoAim::centreOn(QPointF point) {
    if (marker_) {
        marker_(point);
        return;
    }
    const QPointF by = geometry().anglesTo(point);
    const UnitStatus& status = session_.status();
    target_ = QPointF(status.CurrentPan + by.x(), status.CurrentTilt + by.y());
    targetReached_ = false;
    carryOut("VideoPane_Click", session_.moveBy(by.x(), by.y(), Requester::Program));
    showOverlay();
}

void VideoAim::fillWith(QRectF box) {
    const PictureGeometry picture = geometry();
    const QPointF by = picture.anglesTo(box.center());
    const UnitStatus& status = session_.status();
    const PanTiltTarget to{status.CurrentPan + by.x(), status.CurrentTilt + by.y()};
    const int zoom = fieldOf_(camera()).zoomFor(picture.fieldFilledBy(box));
    target_ = QPointF(to.pan, to.tilt);
    targetReached_ = false;
    carryOut("VideoPane_Box",
             session_.moveToWithLenses(to, lensesWithZoom(zoom), Requester::Program));
    showOverlay();
}

void VideoAim::zoomBy(int notches) {
    const PictureGeometry picture = geometry();
    const double field = picture.fieldDegrees * std::pow(kZoomPerNotch, notches);
    const FieldOfView lens = fieldOf_(camera());
    int zoom = lens.zoomFor(field);
    // A notch always moves the lens, however coarse the table is there.
    const int now = session_.status().Lens.at(static_cast<std::size_t>(zoomLens()));
    if (zoom == now) {
        zoom = std::clamp(now + (notches > 0 ? 1 : -1), vocab::lenses::kLowest,
                          vocab::lenses::kHighest);
    }
    PanTiltTarget hold;
    hold.holdPan = hold.holdTilt = true;
    carryOut("VideoPane_Wheel",
             session_.moveToWithLenses(hold, lensesWithZoom(zoom), Requester::Program));
}

void VideoAim::showCaption() {
    // The caption is drawn on the picture; the pane's name stays its own.
    if (pane_) {
        pane_->setAccessibleName(
            QStringLiteral("%1, camera %2").arg(pane_->caption()).arg(camera() + 1));
    }
}

void VideoAim::showOverlay() {
    if (!pane_) {
        return;
    }
    const UnitStatus& status = session_.status();
    const PictureGeometry picture = geometry();
    VideoOverlay overlay;
    overlay.readout = QStringLiteral("Pan %1  Tilt %2  Zoom %3")
                          .arg(QString::number(status.CurrentPan, 'f', 2))
                          .arg(QString::number(status.CurrentTilt, 'f', 2))
                          .arg(status.Lens.at(static_cast<std::size_t>(zoomLens())));
    overlay.limitLeft = picture.acrossAt(status.PanMinLimit - status.CurrentPan);
    overlay.limitRight = picture.acrossAt(status.PanMaxLimit - status.CurrentPan);
    overlay.limitTop = picture.downAt(status.TiltMaxLimit - status.CurrentTilt);
    overlay.limitBottom = picture.downAt(status.TiltMinLimit - status.CurrentTilt);
    if (target_) {
        // The move has ended once the unit reports itself still after
        // answering it.
        if (targetReached_ && !status.Moving()) {
            target_.reset();
        } else {
            const auto across = picture.acrossAt(target_->x() - status.CurrentPan);
            const auto down = picture.downAt(target_->y() - status.CurrentTilt);
            if (across && down) {
                overlay.target = QPointF(*across, *down);
            }
        }
    }
    pane_->setOverlay(std::move(overlay));
}

void VideoAim::carryOut(const char* handler, QCoro::Task<Outcome> operation) {
    launch(session_.state(), handler, reportOutcome(std::move(operation)));
}

QCoro::Task<> VideoAim::reportOutcome(QCoro::Task<Outcome> operation) {
    const QPointer<VideoAim> alive(this);
    const Outcome outcome = co_await std::move(operation);
    if (!alive) {
        co_return;
    }
    if (outcome.isDone()) {
        targetReached_ = true;
        co_return;
    }
    target_.reset();
    showOverlay();
    if (pane_) {
        pane_->showNotice(outcome.text());
        tell_(QStringLiteral("%1: %2").arg(pane_->caption(), outcome.text()));
    }
}

}  // namespace halvex
