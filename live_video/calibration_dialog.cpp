#include "live_video/calibration_dialog.h"

#include <QDialogButtonBox>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QVBoxLayout>
#include <cmath>

#include "live_video/calibration.h"
#include "live_video/video_aim.h"
#include "protocol/fault_guard.h"
#include "protocol/vocabulary_lenses.h"
#include "session/session.h"

namespace halvex {

namespace {
// A mark this close to the centre gives too short a pan to measure by.
constexpr double kLeastPan = 0.05;
}  // namespace

CalibrationDialog::CalibrationDialog(Session& session, std::array<VideoAim*, 2> aims, int camera,
                                     FieldOfView lens, QWidget* parent)
    : QDialog(parent),
      session_(session),
      aims_{aims[0], aims[1]},
      camera_(camera),
      lens_(std::move(lens)) {
    setObjectName(QStringLiteral("CalibrationDialog"));
    setWindowTitle(QStringLiteral("Calibrate Camera %1").arg(camera + 1));
    auto* layout = new QVBoxLayout(this);
    step_ = new QLabel(this);
    step_->setObjectName(QStringLiteral("CalibrationStep"));
    step_->setWordWrap(true);
    step_->setMinimumWidth(360);
    layout->addWidget(step_);
    points_ = new QListWidget(this);
    points_->setObjectName(QStringLiteral("CalibrationPoints"));
    layout->addWidget(points_, 1);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Cancel, this);
    save_ = buttons->addButton(QStringLiteral("Save"), QDialogButtonBox::AcceptRole);
    save_->setObjectName(QStringLiteral("CalibrationSave"));
    save_->setEnabled(false);
    connect(save_, &QPushButton::clicked, this, &CalibrationDialog::save);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    layout->addWidget(buttons);
    for (const FieldOfView::Point& point : lens_.points()) {
        points_->addItem(QStringLiteral("zoom %1: %2 degrees (as kept)")
                             .arg(point.zoom)
                             .arg(QString::number(point.degrees, 'f', 2)));
    }
}

CalibrationDialog::~CalibrationDialog() {
    listen(false);
}

QString CalibrationDialog::step() const {
    return step_->text();
}

void CalibrationDialog::showEvent(QShowEvent* event) {
    listen(true);
    first_.reset();
    showStep(aimShowingCamera() == nullptr
                 ? QStringLiteral("Camera %1 is on neither output: route it to one on the "
                                  "Video page.")
                       .arg(camera_ + 1)
                 : QStringLiteral("Aim camera %1 at a small, sharp feature away from the centre, "
                                  "then click it in the picture.")
                       .arg(camera_ + 1));
    QDialog::showEvent(event);
}

void CalibrationDialog::hideEvent(QHideEvent* event) {
    listen(false);
    QDialog::hideEvent(event);
}

void CalibrationDialog::listen(bool on) {
    for (const QPointer<VideoAim>& aim : aims_) {
        if (aim != nullptr) {
            aim->setMarker(on ? std::function<void(QPointF)>([this](QPointF p) { mark(p); })
                              : std::function<void(QPointF)>());
        }
    }
}

VideoAim* CalibrationDialog::aimShowingCamera() const {
    for (const QPointer<VideoAim>& aim : aims_) {
        if (aim != nullptr && aim->camera() == camera_) {
            return aim.data();
        }
    }
    return nullptr;
}

int CalibrationDialog::zoom() const {
    return session_.status().Lens.at(static_cast<std::size_t>(vocab::lenses::zoomOf(camera_)));
}

void CalibrationDialog::showStep(const QString& text) {
    step_->setText(text);
}

void CalibrationDialog::mark(QPointF point) {
    if (panning_ || aimShowingCamera() == nullptr) {
        return;
    }
    const double across = point.x();
    if (!first_) {
        const double pan = mirroringPan(across, lens_.degreesAt(zoom()));
        if (std::abs(pan) < kLeastPan) {
            showStep(QStringLiteral("Click a feature further from the centre."));
            return;
        }
        first_ = FirstMark{across, session_.status().CurrentPan, zoom(), pan};
        launch(session_.state(), "Calibration_Pan", panAcross(pan));
        return;
    }
    const FirstMark first = *first_;
    first_.reset();
    const double panned = session_.status().CurrentPan - first.pan;
    const auto field = fieldFromMarks(first.across, across, panned);
    if (!field) {
        showStep(QStringLiteral("Those marks do not fit a pan of %1 degrees: click the feature "
                                "again to start this point afresh.")
                     .arg(QString::number(panned, 'f', 2)));
        return;
    }
    measured_[first.zoom] = *field;
    points_->addItem(
        QStringLiteral("zoom %1: %2 degrees").arg(first.zoom).arg(QString::number(*field, 'f', 2)));
    save_->setEnabled(measured_.size() >= 2);
    showStep(QStringLiteral("Camera %1: %2 degrees at zoom %3. Zoom elsewhere and click a "
                            "feature for another point, or Save.")
                 .arg(camera_ + 1)
                 .arg(QString::number(*field, 'f', 2))
                 .arg(first.zoom));
}

QCoro::Task<> CalibrationDialog::panAcross(double degrees) {
    const QPointer<CalibrationDialog> alive(this);
    panning_ = true;
    showStep(QStringLiteral("Panning %1 degrees...").arg(QString::number(degrees, 'f', 2)));
    const Outcome outcome = co_await session_.moveBy(degrees, 0.0, Requester::Program);
    if (!alive) {
        co_return;
    }
    panning_ = false;
    if (!outcome.isDone()) {
        first_.reset();
        showStep(QStringLiteral("The pan was not made (%1): click the feature again.")
                     .arg(outcome.text()));
        co_return;
    }
    showStep(QStringLiteral("When the platform has stopped, click the same feature again."));
}

void CalibrationDialog::save() {
    std::vector<FieldOfView::Point> points;
    for (const auto& [zoom, degrees] : measured_) {
        points.push_back({zoom, degrees});
    }
    const auto lens = FieldOfView::fromPoints(std::move(points));
    if (!lens) {
        showStep(
            QStringLiteral("These points do not make a lens: the field must narrow as the "
                           "zoom rises. Measure them again."));
        return;
    }
    emit calibrated(camera_, *lens);
    accept();
}

}  // namespace halvex
