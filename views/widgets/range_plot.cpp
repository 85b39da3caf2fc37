#include "views/widgets/range_plot.h"

#include <QBuffer>
#include <QContextMenuEvent>
#include <QHelpEvent>
#include <QMenu>
#include <QMouseEvent>
#include <QToolTip>
#include <QWheelEvent>
#include <cmath>
#include <limits>

#include "views/widgets/widget_accessibility.h"

namespace halvex {

namespace {

// Room around the plotted range for the scale's figures.
constexpr double kLeftMargin = 38.0;
constexpr double kRightMargin = 18.0;
constexpr double kTopMargin = 24.0;
constexpr double kBottomMargin = 22.0;
constexpr int kTrailFadeStepMs = 2000;
// The pointer may wander this far between press and release of a click.
constexpr double kClickSlop = 4.0;
constexpr double kWheelZoomStep = 1.25;

double wrapPan(double pan) {
    return pan - 360.0 * std::floor((pan + 180.0) / 360.0);
}

// The unit takes hundredths of a degree.
double hundredths(double degrees) {
    return std::round(degrees * 100.0) / 100.0;
}

QString anglesText(PlotAngles at) {
    return QStringLiteral("pan %1, tilt %2")
        .arg(QString::number(at.pan, 'f', 2), QString::number(at.tilt, 'f', 2));
}

}  // namespace

RangePlot::RangePlot(QWidget* parent) : QWidget(parent) {
    setObjectName(QStringLiteral("RangePlot"));
    setAccessibleName(QStringLiteral("Range Plot"));
    // The keyboard jogs wherever the pointer is: the plot takes no keys.
    setFocusPolicy(Qt::NoFocus);
    clock_.start();
    fading_.setInterval(kTrailFadeStepMs);
    connect(&fading_, &QTimer::timeout, this, &RangePlot::ageTrail);
    noticeExpiry_.setSingleShot(true);
    noticeExpiry_.setInterval(kNoticeMs);
    connect(&noticeExpiry_, &QTimer::timeout, this, [this] {
        notice_.clear();
        update();
    });
    refit();
}

void RangePlot::changed() {
    update();
    announceValueChange(this);
}

void RangePlot::setHardLimits(const PlotLimits& limits) {
    if (limits == hard_) {
        return;
    }
    hard_ = limits;
    refit();
    changed();
}

void RangePlot::setSoftLimits(const PlotLimits& limits) {
    if (limits == soft_) {
        return;
    }
    soft_ = limits;
    changed();
}

void RangePlot::setPanWraps(bool wraps) {
    if (wraps == panWraps_) {
        return;
    }
    panWraps_ = wraps;
    // Positions kept before are on the other kind of axis.
    trail_.clear();
    refit();
    changed();
}

void RangePlot::setPresets(std::vector<PlotPreset> presets) {
    presets_ = std::move(presets);
    changed();
}

void RangePlot::setTour(std::vector<PlotTourStep> steps) {
    tour_ = std::move(steps);
    changed();
}

void RangePlot::setPosition(PlotAngles at) {
    if (panWraps_) {
        at.pan = wrapPan(at.pan);
    }
    // Reports repeat the position ten times a second: only a change is news.
    if (at == position_) {
        return;
    }
    position_ = at;
    trail_.add(clock_.elapsed(), at);
    if (!fading_.isActive()) {
        fading_.start();
    }
    changed();
}

void RangePlot::setTarget(PlotAngles at) {
    if (panWraps_) {
        at.pan = wrapPan(at.pan);
    }
    if (target_ == at) {
        return;
    }
    target_ = at;
    changed();
}

void RangePlot::setMoving(bool moving) {
    if (moving == moving_) {
        return;
    }
    moving_ = moving;
    changed();
}

void RangePlot::showNotice(const QString& text) {
    notice_ = text;
    noticeExpiry_.start();
    changed();
}

void RangePlot::ageTrail() {
    trail_.forgetBefore(clock_.elapsed());
    if (trail_.empty()) {
        fading_.stop();
    }
    update();
}

PlotLimits RangePlot::plottedRange() const {
    PlotLimits range = hard_;
    if (panWraps_) {
        range.panMin = -180.0;
        range.panMax = 180.0;
    }
    return range;
}

void RangePlot::refit() {
    frame_.setArea(QRectF(QPointF(kLeftMargin, kTopMargin),
                          QPointF(width() - kRightMargin, height() - kBottomMargin)));
    frame_.setRange(plottedRange());
}

void RangePlot::resizeEvent(QResizeEvent* event) {
    refit();
    QWidget::resizeEvent(event);
}

std::optional<PlotAngles> RangePlot::anglesAt(QPointF pixel) const {
    if (!frame_.plotArea().adjusted(-0.5, -0.5, 0.5, 0.5).contains(pixel)) {
        return std::nullopt;
    }
    PlotAngles at = frame_.toAngles(pixel);
    if (panWraps_) {
        at.pan = wrapPan(at.pan);
    }
    return at;
}

const PlotPreset* RangePlot::markerAt(QPointF pixel) const {
    const PlotPreset* nearest = nullptr;
    double best = kPickRadius;
    for (const PlotPreset& preset : presets_) {
        const QPointF offset = frame_.toPixel(preset.at) - pixel;
        const double distance = std::hypot(offset.x(), offset.y());
        if (distance <= best) {
            best = distance;
            nearest = &preset;
        }
    }
    return nearest;
}

std::optional<int> RangePlot::presetAt(QPointF pixel) const {
    const PlotPreset* marker = markerAt(pixel);
    return marker != nullptr ? std::optional<int>(marker->number) : std::nullopt;
}

std::optional<PlotPreset> RangePlot::nearestPreset() const {
    std::optional<PlotPreset> nearest;
    double best = std::numeric_limits<double>::infinity();
    for (const PlotPreset& preset : presets_) {
        double panApart = std::abs(preset.at.pan - position().pan);
        if (panWraps_) {
            panApart = std::min(panApart, 360.0 - panApart);
        }
        const double distance = std::hypot(panApart, preset.at.tilt - position().tilt);
        if (distance < best) {
            best = distance;
            nearest = preset;
        }
    }
    return nearest;
}

QString RangePlot::summary() const {
    QString text = anglesText(position());
    if (moving_ && target_) {
        text += QStringLiteral("; moving to %1").arg(anglesText(*target_));
    }
    if (const auto preset = nearestPreset()) {
        text += QStringLiteral("; nearest preset %1 at %2")
                    .arg(preset->number)
                    .arg(anglesText(preset->at));
    }
    if (!notice_.isEmpty()) {
        text += QStringLiteral("; ") + notice_;
    }
    return text;
}

bool RangePlot::nearTarget(QPointF pixel) const {
    if (!target_) {
        return false;
    }
    const QPointF offset = frame_.toPixel(*target_) - pixel;
    return std::hypot(offset.x(), offset.y()) <= kPickRadius;
}

void RangePlot::requestMoveAt(QPointF pixel) {
    if (const auto at = anglesAt(pixel)) {
        emit moveRequested(hundredths(at->pan), hundredths(at->tilt));
    }
}

void RangePlot::mousePressEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton) {
        QWidget::mousePressEvent(event);
        return;
    }
    swallowRelease_ = false;
    if (nearTarget(event->position())) {
        draggingTarget_ = true;
        draggedTo_ = event->position();
    } else {
        pressedAt_ = event->position();
    }
}

void RangePlot::mouseMoveEvent(QMouseEvent* event) {
    if (draggingTarget_) {
        draggedTo_ = event->position();
        update();
    }
}

void RangePlot::mouseReleaseEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton) {
        QWidget::mouseReleaseEvent(event);
        return;
    }
    const QPointF at = event->position();
    if (swallowRelease_) {
        swallowRelease_ = false;
    } else if (draggingTarget_) {
        requestMoveAt(at);
    } else if (pressedAt_) {
        const QPointF moved = at - *pressedAt_;
        // A click on a preset's marker picks it; moving there is a double click.
        if (std::hypot(moved.x(), moved.y()) <= kClickSlop && !presetAt(at)) {
            requestMoveAt(at);
        }
    }
    draggingTarget_ = false;
    draggedTo_.reset();
    pressedAt_.reset();
    update();
}

void RangePlot::mouseDoubleClickEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton) {
        return;
    }
    swallowRelease_ = true;
    if (const auto preset = presetAt(event->position())) {
        emit presetRequested(*preset);
    }
}

void RangePlot::wheelEvent(QWheelEvent* event) {
    const double steps = event->angleDelta().y() / 120.0;
    if (steps == 0.0) {
        event->ignore();
        return;
    }
    frame_.zoomAt(event->position(), std::pow(kWheelZoomStep, steps));
    update();
}

void RangePlot::contextMenuEvent(QContextMenuEvent* event) {
    // Shown without waiting for it: the console's event loop runs on.
    auto* menu = new QMenu(this);
    menu->setObjectName(QStringLiteral("RangePlotMenu"));
    menu->setAttribute(Qt::WA_DeleteOnClose);
    if (const auto preset = presetAt(event->pos())) {
        const int number = *preset;
        QAction* goTo = menu->addAction(QStringLiteral("Go To Preset %1").arg(number));
        goTo->setObjectName(QStringLiteral("RangePlotGoTo"));
        connect(goTo, &QAction::triggered, this, [this, number] { emit presetRequested(number); });
        QAction* save =
            menu->addAction(QStringLiteral("Save Current Position To Preset %1").arg(number));
        save->setObjectName(QStringLiteral("RangePlotSave"));
        connect(save, &QAction::triggered, this,
                [this, number] { emit savePositionRequested(number); });
    }
    QMenu* saveTo = menu->addMenu(QStringLiteral("Save Current Position To Preset"));
    saveTo->setObjectName(QStringLiteral("RangePlotSaveTo"));
    for (int number = 0; number < kPresetChoices; ++number) {
        QAction* save = saveTo->addAction(QString::number(number));
        save->setObjectName(QStringLiteral("RangePlotSave_%1").arg(number));
        connect(save, &QAction::triggered, this,
                [this, number] { emit savePositionRequested(number); });
    }
    QAction* whole = menu->addAction(QStringLiteral("Show The Whole Range"));
    whole->setObjectName(QStringLiteral("RangePlotWhole"));
    whole->setEnabled(frame_.zoom() > 1.0);
    connect(whole, &QAction::triggered, this, [this] {
        frame_.resetZoom();
        update();
    });
    menu->popup(event->globalPos());
}

bool RangePlot::event(QEvent* event) {
    if (event->type() == QEvent::ToolTip) {
        auto* help = static_cast<QHelpEvent*>(event);
        if (const QString tip = toolTipAt(help->pos()); !tip.isEmpty()) {
            QToolTip::showText(help->globalPos(), tip, this);
        } else {
            QToolTip::hideText();
        }
        return true;
    }
    return QWidget::event(event);
}

QString RangePlot::toolTipAt(QPointF pixel) const {
    const PlotPreset* marker = markerAt(pixel);
    if (marker == nullptr) {
        return {};
    }
    const QString text =
        QStringLiteral("Preset %1: %2").arg(marker->number).arg(anglesText(marker->at));
    const auto picture = pictureTags_.find(marker->number);
    if (picture == pictureTags_.end()) {
        return text;
    }
    return QStringLiteral("<p style=\"white-space:pre\">%1</p>%2")
        .arg(text.toHtmlEscaped(), picture->second);
}

void RangePlot::setPresetPicture(int number, const QImage& picture) {
    if (picture.isNull()) {
        pictureTags_.erase(number);
        return;
    }
    // A tool tip has nowhere to look a picture up: it carries it along.
    QByteArray png;
    QBuffer buffer(&png);
    buffer.open(QIODevice::WriteOnly);
    picture.save(&buffer, "PNG");
    pictureTags_[number] =
        QStringLiteral("<img src=\"data:image/png;base64,%1\" width=\"%2\" height=\"%3\">")
            .arg(QString::fromLatin1(png.toBase64()))
            .arg(picture.width())
            .arg(picture.height());
}

}  // namespace halvex
