// Drawing of RangePlot, kept apart from its state and pointer handling.
#include <QPainter>
#include <QPainterPath>
#include <cmath>
#include <iterator>

#include "views/widgets/instrument_light.h"
#include "views/widgets/range_plot.h"

namespace halvex {

namespace {

const QColor kHardLimit(0xe0, 0x3c, 0x31);
const QColor kSoftLimit(0xff, 0xb3, 0x47);
const QColor kTour(0x3d, 0x8b, 0xff);
const QColor kPosition(0x3e, 0xcf, 0x8e);
const QColor kTarget(0xff, 0x6b, 0x3d);
constexpr int kOutsideSoftAlpha = 60;
constexpr double kPresetRadius = 6.0;
constexpr double kPositionRadius = 5.0;
constexpr double kTargetRadius = 7.0;

QColor withAlpha(QColor colour, int alpha) {
    colour.setAlpha(alpha);
    return colour;
}

// The line from `from` to `to` as the platform would travel it: straight,
// or for a unit that pans for ever the short way round, cut at ±180.
std::vector<std::pair<PlotAngles, PlotAngles>> pieces(PlotAngles from, PlotAngles to,
                                                      bool panWraps) {
    const double panApart = to.pan - from.pan;
    if (!panWraps || std::abs(panApart) <= 180.0) {
        return {{from, to}};
    }
    // Across the seam: out at one edge, in at the other.
    const double edge = panApart > 0 ? -180.0 : 180.0;
    const double toEdge = std::abs(edge - from.pan);
    const double span = 360.0 - std::abs(panApart);
    const double tiltAtEdge = from.tilt + (to.tilt - from.tilt) * (toEdge / span);
    return {{from, {edge, tiltAtEdge}}, {{-edge, tiltAtEdge}, to}};
}

class PlotPainter {
  public:
    PlotPainter(const RangePlot& plot, QPainter& painter)
        : plot_(plot), painter_(painter), frame_(plot.frame()), palette_(plot.palette()) {}

    void background() {
        painter_.fillRect(plot_.rect(), palette_.color(QPalette::Window));
        painter_.fillRect(frame_.plotArea(), palette_.color(QPalette::Base));
    }

    // Shades what lies inside the plotted range but outside the soft limits.
    void outsideSoftLimits() {
        const QRectF area = frame_.plotArea();
        PlotLimits soft = plot_.softLimits();
        if (plot_.panWraps()) {
            soft.panMin = frame_.range().panMin;
            soft.panMax = frame_.range().panMax;
        }
        const QRectF inside = rectOf(soft);
        QPainterPath shaded;
        shaded.addRect(area);
        QPainterPath allowed;
        allowed.addRect(inside);
        painter_.fillPath(shaded.subtracted(allowed),
                          withAlpha(signalColour(kSoftLimit), kOutsideSoftAlpha));
    }

    void grid() {
        const double step = frame_.gridStep();
        const PlotLimits shown = frame_.visible();
        const QRectF area = frame_.plotArea();
        QColor line = palette_.color(QPalette::WindowText);
        line.setAlpha(40);
        painter_.setFont(plot_.font());
        const QColor figures = palette_.color(QPalette::WindowText);
        for (double pan = std::ceil(shown.panMin / step) * step; pan <= shown.panMax + 1e-9;
             pan += step) {
            const double x = frame_.toPixel({pan, 0.0}).x();
            painter_.setPen(QPen(line, 0));
            painter_.drawLine(QPointF(x, area.top()), QPointF(x, area.bottom()));
            painter_.setPen(figures);
            painter_.drawText(QRectF(x - 30, area.bottom() + 2, 60, 18),
                              Qt::AlignHCenter | Qt::AlignTop, QString::number(pan));
        }
        for (double tilt = std::ceil(shown.tiltMin / step) * step; tilt <= shown.tiltMax + 1e-9;
             tilt += step) {
            const double y = frame_.toPixel({0.0, tilt}).y();
            painter_.setPen(QPen(line, 0));
            painter_.drawLine(QPointF(area.left(), y), QPointF(area.right(), y));
            painter_.setPen(figures);
            painter_.drawText(QRectF(0, y - 9, area.left() - 4, 18),
                              Qt::AlignRight | Qt::AlignVCenter, QString::number(tilt));
        }
    }

    void limits() {
        painter_.setBrush(Qt::NoBrush);
        QPen soft(signalColour(kSoftLimit), 1.5, Qt::DashLine);
        painter_.setPen(soft);
        if (plot_.panWraps()) {
            for (const double tilt : {plot_.softLimits().tiltMin, plot_.softLimits().tiltMax}) {
                painter_.drawLine(frame_.toPixel({-180.0, tilt}), frame_.toPixel({180.0, tilt}));
            }
        } else {
            painter_.drawRect(rectOf(plot_.softLimits()));
        }
        painter_.setPen(QPen(signalColour(kHardLimit), 2.0));
        painter_.drawRect(rectOf(plot_.hardLimits()).intersected(frame_.plotArea()));
    }

    void tour() {
        const auto& steps = plot_.tour();
        if (steps.empty()) {
            return;
        }
        const QColor colour = signalColour(kTour);
        painter_.setPen(QPen(colour, 2.0));
        // A tour runs round again from its first step.
        for (std::size_t i = 0; i < steps.size(); ++i) {
            const PlotTourStep& from = steps[i];
            const PlotTourStep& to = steps[(i + 1) % steps.size()];
            for (const auto& [a, b] : pieces(from.at, to.at, plot_.panWraps())) {
                painter_.drawLine(frame_.toPixel(a), frame_.toPixel(b));
            }
        }
        painter_.setPen(colour);
        for (std::size_t i = 0; i < steps.size(); ++i) {
            const QPointF at = frame_.toPixel(steps[i].at);
            painter_.drawText(QRectF(at.x() + 8, at.y() + 2, 90, 16), Qt::AlignLeft | Qt::AlignTop,
                              QStringLiteral("%1: %2 s").arg(i + 1).arg(steps[i].dwellSeconds));
        }
    }

    void presets() {
        const QColor text = palette_.color(QPalette::Text);
        painter_.setPen(QPen(text, 1.2));
        painter_.setBrush(palette_.color(QPalette::Base));
        for (const PlotPreset& preset : plot_.presets()) {
            const QPointF at = frame_.toPixel(preset.at);
            painter_.drawEllipse(at, kPresetRadius, kPresetRadius);
            painter_.drawText(QRectF(at.x() + 8, at.y() - 16, 40, 16),
                              Qt::AlignLeft | Qt::AlignBottom, QString::number(preset.number));
        }
    }

    void trail() {
        const auto& points = plot_.trail().points();
        const qint64 now = trailNow_;
        for (std::size_t i = 1; i < points.size(); ++i) {
            const double fresh = MotionTrail::freshness(points[i - 1], now);
            painter_.setPen(QPen(
                withAlpha(signalColour(kPosition), static_cast<int>(std::lround(40 + 180 * fresh))),
                2.0, Qt::SolidLine, Qt::RoundCap));
            // A wrap across ±180 is not a line across the plot.
            if (std::abs(points[i].at.pan - points[i - 1].at.pan) <= 180.0) {
                painter_.drawLine(frame_.toPixel(points[i - 1].at), frame_.toPixel(points[i].at));
            }
        }
    }

    void positionAndTarget(std::optional<QPointF> draggedTo) {
        const QPointF position = frame_.toPixel(plot_.position());
        const QColor target = signalColour(kTarget);
        if (plot_.target()) {
            if (plot_.moving()) {
                painter_.setPen(QPen(target, 1.5, Qt::DashLine));
                for (const auto& [a, b] :
                     pieces(plot_.position(), *plot_.target(), plot_.panWraps())) {
                    painter_.drawLine(frame_.toPixel(a), frame_.toPixel(b));
                }
            }
            targetMark(frame_.toPixel(*plot_.target()), target);
        }
        if (draggedTo) {
            targetMark(*draggedTo, withAlpha(target, 160));
        }
        painter_.setPen(QPen(palette_.color(QPalette::Text), 1.2));
        painter_.setBrush(signalColour(kPosition));
        painter_.drawEllipse(position, kPositionRadius, kPositionRadius);
    }

    // Where the platform points, above the plot's left corner, and what
    // the lines mean, above its right.
    void readoutAndLegend() {
        const QRectF area = frame_.plotArea();
        const QRectF above(area.left(), area.top() - 20, area.width(), 18);
        painter_.setPen(palette_.color(QPalette::WindowText));
        const PlotAngles at = plot_.position();
        painter_.drawText(
            above, Qt::AlignLeft | Qt::AlignVCenter,
            QStringLiteral("Pan %1   Tilt %2")
                .arg(QString::number(at.pan, 'f', 2), QString::number(at.tilt, 'f', 2)));
        const QFontMetricsF metrics(plot_.font());
        const struct {
            QColor colour;
            Qt::PenStyle style;
            const char* text;
        } keys[] = {{signalColour(kHardLimit), Qt::SolidLine, "Hard limit"},
                    {signalColour(kSoftLimit), Qt::DashLine, "Soft limit"},
                    {signalColour(kTour), Qt::SolidLine, "Tour"},
                    {signalColour(kPosition), Qt::SolidLine, "Trail"}};
        double right = above.right();
        for (auto it = std::rbegin(keys); it != std::rend(keys); ++it) {
            const QString text = QString::fromLatin1(it->text);
            const double width = metrics.horizontalAdvance(text);
            right -= width;
            painter_.setPen(palette_.color(QPalette::WindowText));
            painter_.drawText(QRectF(right, above.top(), width, above.height()),
                              Qt::AlignLeft | Qt::AlignVCenter, text);
            right -= 22;
            painter_.setPen(QPen(it->colour, 2.0, it->style));
            const double y = above.center().y();
            painter_.drawLine(QPointF(right, y), QPointF(right + 16, y));
            right -= 12;
        }
    }

    void notice() {
        if (plot_.notice().isEmpty()) {
            return;
        }
        const QRectF area = frame_.plotArea();
        const QFontMetricsF metrics(plot_.font());
        const QRectF box(area.left() + 6, area.bottom() - metrics.height() - 12,
                         metrics.horizontalAdvance(plot_.notice()) + 12, metrics.height() + 6);
        painter_.setPen(palette_.color(QPalette::ToolTipText));
        painter_.setBrush(palette_.color(QPalette::ToolTipBase));
        painter_.drawRect(box);
        painter_.drawText(box, Qt::AlignCenter, plot_.notice());
    }

    void setTrailNow(qint64 now) { trailNow_ = now; }

  private:
    QRectF rectOf(const PlotLimits& limits) const {
        return QRectF(frame_.toPixel({limits.panMin, limits.tiltMax}),
                      frame_.toPixel({limits.panMax, limits.tiltMin}))
            .normalized();
    }

    void targetMark(QPointF at, const QColor& colour) {
        painter_.setPen(QPen(colour, 2.0));
        painter_.setBrush(Qt::NoBrush);
        painter_.drawEllipse(at, kTargetRadius, kTargetRadius);
        painter_.drawLine(at - QPointF(kTargetRadius + 3, 0), at + QPointF(kTargetRadius + 3, 0));
        painter_.drawLine(at - QPointF(0, kTargetRadius + 3), at + QPointF(0, kTargetRadius + 3));
    }

    const RangePlot& plot_;
    QPainter& painter_;
    const PlotFrame& frame_;
    const QPalette palette_;
    qint64 trailNow_ = 0;
};

}  // namespace

void RangePlot::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    PlotPainter draw(*this, painter);
    draw.setTrailNow(clock_.elapsed());
    draw.background();
    painter.save();
    painter.setClipRect(frame_.plotArea().adjusted(-1, -1, 1, 1));
    draw.outsideSoftLimits();
    painter.restore();
    draw.grid();
    painter.save();
    painter.setClipRect(frame_.plotArea().adjusted(-12, -12, 12, 12));
    draw.limits();
    draw.tour();
    draw.presets();
    draw.trail();
    draw.positionAndTarget(draggingTarget_ ? draggedTo_ : std::nullopt);
    painter.restore();
    draw.readoutAndLegend();
    draw.notice();
}

}  // namespace halvex
