// Drawing of RangePlot, kept apart from its state and pointer handling.
#include <QPainter>
#include <QPainterPath>
#include <cmath>
#include <iterator>

#include "views/widgets/instrument_light.h"
#include "views/widgets/range_plot.h"

namespace halvex {

namespace {

// The marks' colours by day; instrumentLight() decides how they show.
constexpr QRgb kHardLimit = 0xe03c31;
constexpr QRgb kSoftLimit = 0xffb347;
constexpr QRgb kTour = 0x3d8bff;
constexpr QRgb kPosition = 0x3ecf8e;
constexpr QRgb kTarget = 0xff6b3d;
// How much of its colour the zone outside the soft limits takes; how much
// of the text's colour the grid takes.
constexpr double kShade = 0.25;
constexpr double kGridInk = 0.15;
// Lines: the limits, the tour, the trail and the target, and the thin ones
// (grid, outlines, the way to the target).
constexpr double kLine = 2.0;
constexpr double kThinLine = 1.0;
// A marker's radius; a label's height, and its distance from its mark.
constexpr double kMarkRadius = 6.0;
constexpr double kLabelHeight = 16.0;
constexpr double kLabelGap = 8.0;

QColor ink(QRgb day, double share = 1.0) {
    QColor colour = signalColour(QColor::fromRgb(day));
    colour.setAlphaF(static_cast<float>(share));
    return colour;
}

class PlotPainter {
  public:
    PlotPainter(const RangePlot& plot, QPainter& painter)
        : plot_(plot),
          painter_(painter),
          frame_(plot.frame()),
          palette_(plot.palette()),
          text_(palette_.color(QPalette::WindowText)) {}

    void background() {
        painter_.fillRect(plot_.rect(), palette_.color(QPalette::Window));
        painter_.fillRect(frame_.plotArea(), palette_.color(QPalette::Base));
    }

    // Shades what lies inside the plotted range but outside the soft limits.
    void outsideSoftLimits() {
        PlotLimits soft = plot_.softLimits();
        if (plot_.panWraps()) {
            soft.panMin = frame_.range().panMin;
            soft.panMax = frame_.range().panMax;
        }
        QPainterPath shaded;
        shaded.addRect(frame_.plotArea());
        QPainterPath allowed;
        allowed.addRect(rectOf(soft));
        painter_.fillPath(shaded.subtracted(allowed), ink(kSoftLimit, kShade));
    }

    void grid() {
        const double step = frame_.gridStep();
        const PlotLimits shown = frame_.visible();
        const QRectF area = frame_.plotArea();
        QColor line = text_;
        line.setAlphaF(static_cast<float>(kGridInk));
        for (const double pan : PlotFrame::gridLines(shown.panMin, shown.panMax, step)) {
            const double x = frame_.toPixel({pan, 0.0}).x();
            painter_.setPen(QPen(line, kThinLine));
            painter_.drawLine(QPointF(x, area.top()), QPointF(x, area.bottom()));
            painter_.setPen(text_);
            painter_.drawText(
                QRectF(x - area.width(), area.bottom(), 2 * area.width(), kLabelHeight),
                Qt::AlignHCenter | Qt::AlignBottom, QString::number(pan));
        }
        for (const double tilt : PlotFrame::gridLines(shown.tiltMin, shown.tiltMax, step)) {
            const double y = frame_.toPixel({0.0, tilt}).y();
            painter_.setPen(QPen(line, kThinLine));
            painter_.drawLine(QPointF(area.left(), y), QPointF(area.right(), y));
            painter_.setPen(text_);
            painter_.drawText(
                QRectF(0, y - kLabelHeight, area.left() - kThinLine - kLine, 2 * kLabelHeight),
                Qt::AlignRight | Qt::AlignVCenter, QString::number(tilt));
        }
    }

    void limits() {
        painter_.setBrush(Qt::NoBrush);
        painter_.setPen(QPen(ink(kSoftLimit), kLine, Qt::DashLine));
        if (plot_.panWraps()) {
            for (const double tilt : {plot_.softLimits().tiltMin, plot_.softLimits().tiltMax}) {
                painter_.drawLine(frame_.toPixel({-180.0, tilt}), frame_.toPixel({180.0, tilt}));
            }
        } else {
            painter_.drawRect(rectOf(plot_.softLimits()));
        }
        painter_.setPen(QPen(ink(kHardLimit), kLine));
        painter_.drawRect(rectOf(plot_.hardLimits()).intersected(frame_.plotArea()));
    }

    // The path runs round again from the last step to the first, as the tour
    // does; each stop says its step and dwell below its right.
    void tour() {
        const auto& steps = plot_.tour();
        if (steps.empty()) {
            return;
        }
        painter_.setPen(QPen(ink(kTour), kLine));
        PlotAngles from = steps.back().at;
        for (const PlotTourStep& step : steps) {
            way(from, step.at);
            from = step.at;
        }
        painter_.setPen(ink(kTour));
        for (std::size_t i = 0; i < steps.size(); ++i) {
            label(steps[i].at, QStringLiteral("%1: %2 s").arg(i + 1).arg(steps[i].dwellSeconds),
                  Qt::AlignTop);
        }
    }

    void presets() {
        painter_.setPen(QPen(palette_.color(QPalette::Text), kThinLine));
        painter_.setBrush(palette_.color(QPalette::Base));
        for (const PlotPreset& preset : plot_.presets()) {
            painter_.drawEllipse(frame_.toPixel(preset.at), kMarkRadius, kMarkRadius);
        }
        painter_.setPen(palette_.color(QPalette::Text));
        for (const PlotPreset& preset : plot_.presets()) {
            label(preset.at, QString::number(preset.number), Qt::AlignBottom);
        }
    }

    // Older stretches of the trail fade, each by its newer end; a wrap
    // across ±180 is not a line across the plot.
    void trail(qint64 nowMs) {
        const MotionTrail::Point* previous = nullptr;
        for (const MotionTrail::Point& point : plot_.trail().points()) {
            if (previous != nullptr && std::abs(point.at.pan - previous->at.pan) <= 180.0) {
                painter_.setPen(QPen(ink(kPosition, MotionTrail::opacity(point, nowMs)), kLine,
                                     Qt::SolidLine, Qt::RoundCap));
                painter_.drawLine(frame_.toPixel(previous->at), frame_.toPixel(point.at));
            }
            previous = &point;
        }
    }

    void positionAndTarget(std::optional<QPointF> draggedTo) {
        if (const auto target = plot_.target()) {
            if (plot_.moving()) {
                painter_.setPen(QPen(ink(kTarget), kThinLine, Qt::DashLine));
                way(plot_.position(), *target);
            }
            targetMark(frame_.toPixel(*target), ink(kTarget));
        }
        if (draggedTo) {
            targetMark(*draggedTo, ink(kTarget, 1.0 - kShade));
        }
        painter_.setPen(QPen(palette_.color(QPalette::Text), kThinLine));
        painter_.setBrush(ink(kPosition));
        painter_.drawEllipse(frame_.toPixel(plot_.position()), kMarkRadius, kMarkRadius);
    }

    // Where the platform points, above the plot's left corner, and what the
    // lines mean, above its right.
    void readoutAndLegend() {
        const QRectF area = frame_.plotArea();
        const QRectF above(area.left(), area.top() - kLabelHeight - kLine, area.width(),
                           kLabelHeight);
        painter_.setPen(text_);
        const PlotAngles at = plot_.position();
        const QString readout =
            QStringLiteral("Pan %1   Tilt %2")
                .arg(QString::number(at.pan, 'f', 2), QString::number(at.tilt, 'f', 2));
        painter_.drawText(above, Qt::AlignLeft | Qt::AlignVCenter, readout);
        const QFontMetricsF metrics(plot_.font());
        // A narrow plot keeps the read-out and as many keys as fit beside it.
        const double readoutEnd = above.left() + metrics.horizontalAdvance(readout) + kLabelGap;
        const struct {
            QRgb colour;
            Qt::PenStyle style;
            const char* text;
        } keys[] = {{kHardLimit, Qt::SolidLine, "Hard limit"},
                    {kSoftLimit, Qt::DashLine, "Soft limit"},
                    {kTour, Qt::SolidLine, "Tour"},
                    {kPosition, Qt::SolidLine, "Trail"}};
        // From the right: each key's text, and its sample of line before it.
        double right = above.right();
        const double y = above.center().y();
        for (auto key = std::rbegin(keys); key != std::rend(keys); ++key) {
            const QString text = QString::fromLatin1(key->text);
            if (right - metrics.horizontalAdvance(text) - kLabelGap - kLabelHeight < readoutEnd) {
                break;
            }
            right -= metrics.horizontalAdvance(text);
            painter_.setPen(text_);
            painter_.drawText(QPointF(right, y + metrics.ascent() / 2 - metrics.descent() / 2),
                              text);
            right -= kLabelGap;
            painter_.setPen(QPen(ink(key->colour), kLine, key->style));
            painter_.drawLine(QPointF(right - kLabelHeight, y), QPointF(right, y));
            right -= kLabelHeight + 2 * kLabelGap;
        }
    }

    void notice() {
        if (plot_.notice().isEmpty()) {
            return;
        }
        const QRectF area = frame_.plotArea();
        const QFontMetricsF metrics(plot_.font());
        const QSizeF size(metrics.horizontalAdvance(plot_.notice()) + 2 * kLabelGap,
                          metrics.height() + kLabelGap);
        const QRectF box(
            QPointF(area.left() + kLabelGap, area.bottom() - kLabelGap - size.height()), size);
        painter_.setPen(palette_.color(QPalette::ToolTipText));
        painter_.setBrush(palette_.color(QPalette::ToolTipBase));
        painter_.drawRect(box);
        painter_.drawText(box, Qt::AlignCenter, plot_.notice());
    }

  private:
    QRectF rectOf(const PlotLimits& limits) const {
        return QRectF(frame_.toPixel({limits.panMin, limits.tiltMax}),
                      frame_.toPixel({limits.panMax, limits.tiltMin}))
            .normalized();
    }

    void way(PlotAngles from, PlotAngles to) {
        for (const auto& [a, b] : travelPieces(from, to, plot_.panWraps())) {
            painter_.drawLine(frame_.toPixel(a), frame_.toPixel(b));
        }
    }

    // A label to the right of its mark: above it, or below it.
    void label(PlotAngles mark, const QString& text, Qt::Alignment side) {
        const QPointF at = frame_.toPixel(mark);
        const double top = side == Qt::AlignBottom ? at.y() - kLabelHeight : at.y();
        painter_.drawText(QRectF(at.x() + kLabelGap, top, frame_.plotArea().width(), kLabelHeight),
                          Qt::AlignLeft | side, text);
    }

    void targetMark(QPointF at, const QColor& colour) {
        painter_.setPen(QPen(colour, kLine));
        painter_.setBrush(Qt::NoBrush);
        painter_.drawEllipse(at, kMarkRadius, kMarkRadius);
        const double reach = kMarkRadius + kLabelGap / 2;
        painter_.drawLine(at - QPointF(reach, 0), at + QPointF(reach, 0));
        painter_.drawLine(at - QPointF(0, reach), at + QPointF(0, reach));
    }

    const RangePlot& plot_;
    QPainter& painter_;
    const PlotFrame& frame_;
    const QPalette palette_;
    const QColor text_;
};

}  // namespace

void RangePlot::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    PlotPainter draw(*this, painter);
    draw.background();
    // Marks at the very edge of the range are drawn whole; nothing else
    // strays into the margins.
    const QRectF area = frame_.plotArea();
    painter.setClipRect(area);
    draw.outsideSoftLimits();
    painter.setClipping(false);
    draw.grid();
    painter.setClipRect(area.adjusted(-kPickRadius, -kPickRadius, kPickRadius, kPickRadius));
    draw.limits();
    draw.tour();
    draw.presets();
    draw.trail(clock_.elapsed());
    draw.positionAndTarget(draggingTarget_ ? draggedTo_ : std::nullopt);
    painter.setClipping(false);
    draw.readoutAndLegend();
    draw.notice();
}

}  // namespace halvex
