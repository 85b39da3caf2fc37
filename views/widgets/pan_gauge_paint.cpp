// Drawing of PanGauge, kept apart from its state handling.
#include <QPainter>
#include <QPainterPath>
#include <QRadialGradient>
#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>

#include "views/widgets/gauge_scale.h"
#include "views/widgets/instrument_light.h"
#include "views/widgets/pan_gauge.h"

namespace halvex {

namespace {

// The dial's colours by day; instrumentLight() decides how they show.
const QColor kBezelLight(0x4a, 0x56, 0x62);
const QColor kBezelDark(0x14, 0x19, 0x1f);
const QColor kFaceCentre(0x2a, 0x34, 0x40);
const QColor kFaceEdge(0x13, 0x18, 0x1e);
const QColor kScaleArc(0x5a, 0x6a, 0x7a);
const QColor kMajorTick(0xd4, 0xde, 0xe8);
const QColor kMinorTick(0x7a, 0x8a, 0x9a);
const QColor kNeedle(0xff, 0x6b, 0x3d);
const std::array<QColor, PanGauge::kRangeMarkPairs> kRangeColours = {QColor(0x3e, 0xcf, 0x8e),
                                                                     QColor(0xff, 0xb3, 0x47)};

// The colours as they show under the current light.
struct DialInk {
    QColor bezelLight = markingColour(kBezelLight);
    QColor bezelDark = markingColour(kBezelDark);
    QColor faceCentre = markingColour(kFaceCentre);
    QColor faceEdge = markingColour(kFaceEdge);
    QColor scaleArc = markingColour(kScaleArc);
    QColor majorTick = markingColour(kMajorTick);
    QColor minorTick = markingColour(kMinorTick);
    QColor needle = signalColour(kNeedle);
};
constexpr int kWantedMajorTicks = 8;
constexpr double kLabelledFace = 70.0;  // smaller dials are too cramped for text

QPointF polar(const QPointF& centre, double radius, double degrees) {
    const double radians = degrees * std::numbers::pi / 180.0;
    return centre + QPointF(radius * std::cos(radians), -radius * std::sin(radians));
}

QRectF circleRect(const QPointF& centre, double radius) {
    return {centre.x() - radius, centre.y() - radius, 2.0 * radius, 2.0 * radius};
}

// An arc between two angles, whichever way round they come.
void drawArcBetween(QPainter& painter, const QPointF& centre, double radius, double from,
                    double to) {
    const double start = std::min(from, to);
    const double span = std::abs(to - from);
    painter.drawArc(circleRect(centre, radius), static_cast<int>(std::lround(start * 16.0)),
                    static_cast<int>(std::lround(span * 16.0)));
}

QString tickLabel(double tick, double step) {
    // As many decimals as the step needs, so 0.5 steps read 0.5, 1.0, 1.5.
    const int decimals = step >= 1.0 ? 0 : static_cast<int>(std::ceil(-std::log10(step) - 1e-9));
    return QString::number(tick, 'f', std::clamp(decimals, 0, 6));
}

}  // namespace

void PanGauge::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const double outer = std::min(width(), height()) / 2.0 - 1.0;
    if (outer < 6.0) {
        return;  // too small to draw anything recognisable
    }
    const QPointF centre = QRectF(rect()).center();
    const DialInk ink;

    // Bezel and face.
    QLinearGradient bezel(centre - QPointF(0, outer), centre + QPointF(0, outer));
    bezel.setColorAt(0.0, ink.bezelLight);
    bezel.setColorAt(1.0, ink.bezelDark);
    painter.setPen(Qt::NoPen);
    painter.setBrush(bezel);
    painter.drawEllipse(centre, outer, outer);
    const double face = outer * 0.94;
    QRadialGradient faceShade(centre, face);
    faceShade.setColorAt(0.0, ink.faceCentre);
    faceShade.setColorAt(1.0, ink.faceEdge);
    painter.setBrush(faceShade);
    painter.drawEllipse(centre, face, face);

    const double scaleRadius = face * 0.8;
    painter.setBrush(Qt::NoBrush);

    // Range marks as bands just outside the scale, limited to it.
    const double low = std::min(minimum_, maximum_);
    const double high = std::max(minimum_, maximum_);
    for (int pair = 0; pair < kRangeMarkPairs; ++pair) {
        const RangeMarks& marks = rangeMarks_[static_cast<std::size_t>(pair)];
        if (!marks.shown) {
            continue;
        }
        QColor band = signalColour(kRangeColours[static_cast<std::size_t>(pair)]);
        band.setAlpha(170);
        painter.setPen(QPen(band, std::max(1.5, face * 0.045), Qt::SolidLine, Qt::FlatCap));
        const double bandRadius = scaleRadius + face * (0.06 + 0.06 * pair);
        drawArcBetween(painter, centre, bandRadius, angleFor(std::clamp(marks.first, low, high)),
                       angleFor(std::clamp(marks.second, low, high)));
    }

    // Scale arc and ticks.
    painter.setPen(QPen(ink.scaleArc, std::max(1.0, face * 0.015)));
    drawArcBetween(painter, centre, scaleRadius, angleFor(minimum_), angleFor(maximum_));
    const GaugeTicks ticks = gaugeTicks(minimum_, maximum_, kWantedMajorTicks);
    painter.setPen(QPen(ink.minorTick, std::max(1.0, face * 0.01)));
    for (double tick : ticks.minor) {
        const double angle = angleFor(tick);
        painter.drawLine(polar(centre, scaleRadius, angle),
                         polar(centre, scaleRadius - face * 0.05, angle));
    }
    painter.setPen(QPen(ink.majorTick, std::max(1.2, face * 0.022), Qt::SolidLine, Qt::RoundCap));
    for (double tick : ticks.major) {
        const double angle = angleFor(tick);
        painter.drawLine(polar(centre, scaleRadius, angle),
                         polar(centre, scaleRadius - face * 0.1, angle));
    }

    // Labels only where there is room to read them.
    if (face >= kLabelledFace) {
        QFont font = painter.font();
        font.setPixelSize(static_cast<int>(face * 0.11));
        painter.setFont(font);
        painter.setPen(ink.majorTick);
        const double labelRadius = scaleRadius - face * 0.27;
        for (double tick : ticks.major) {
            const QPointF at = polar(centre, labelRadius, angleFor(tick));
            const QRectF box(at.x() - face * 0.3, at.y() - face * 0.1, face * 0.6, face * 0.2);
            painter.drawText(box, Qt::AlignCenter, tickLabel(tick, ticks.step));
        }
        // The number itself in the gap at the bottom, as set: it tells how far
        // past the end of the scale a pinned needle really is.
        font.setPixelSize(static_cast<int>(face * 0.14));
        font.setBold(true);
        painter.setFont(font);
        painter.setPen(ink.needle);
        const QRectF readoutBox(centre.x() - face * 0.5, centre.y() + face * 0.45, face,
                                face * 0.2);
        painter.drawText(readoutBox, Qt::AlignCenter, readout());
    }

    // Needle: a slim tapered blade from a short tail to just inside the scale.
    const double angle = angleFor(needleValue());
    const double halfBase = std::max(1.5, face * 0.035);
    QPainterPath needle;
    needle.moveTo(polar(centre, scaleRadius - face * 0.02, angle));
    needle.lineTo(polar(centre, halfBase, angle + 90.0));
    needle.lineTo(polar(centre, face * 0.16, angle + 180.0));
    needle.lineTo(polar(centre, halfBase, angle - 90.0));
    needle.closeSubpath();
    painter.setPen(Qt::NoPen);
    painter.fillPath(needle, ink.needle);

    const double hub = std::max(2.5, face * 0.08);
    painter.setBrush(ink.bezelDark);
    painter.setPen(QPen(ink.needle, std::max(1.0, face * 0.02)));
    painter.drawEllipse(centre, hub, hub);
}

}  // namespace halvex
