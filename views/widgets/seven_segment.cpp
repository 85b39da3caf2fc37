#include "views/widgets/seven_segment.h"

#include <QPolygonF>
#include <algorithm>
#include <array>

namespace halvex {

namespace {

// Geometry of one character cell in units of the digit's width: a digit is
// 1 wide and 2 tall, with segments kStroke thick.
constexpr double kDigitHeight = 2.0;
constexpr double kStroke = 0.2;
constexpr double kSegmentGap = 0.035;
constexpr double kDigitAdvance = 1.38;
constexpr double kPointAdvance = 0.5;
constexpr double kSlant = 0.09;  // how far the top leans right per unit of height
constexpr int kUnlitAlpha = 26;

// Segment bits: a top, b upper right, c lower right, d bottom, e lower left,
// f upper left, g middle.
enum Segment : unsigned { A = 1, B = 2, C = 4, D = 8, E = 16, F = 32, G = 64 };
constexpr unsigned kAllSegments = A | B | C | D | E | F | G;

unsigned segmentsFor(QChar ch) {
    static constexpr std::array<unsigned, 10> kDigits = {
        A | B | C | D | E | F, B | C,         A | B | G | E | D,
        A | B | G | C | D,     F | G | B | C, A | F | G | C | D,
        A | F | G | E | D | C, A | B | C,     kAllSegments,
        A | B | C | D | F | G};
    if (ch.isDigit()) {
        return kDigits[static_cast<std::size_t>(ch.digitValue())];
    }
    return ch == QLatin1Char('-') ? unsigned{G} : 0u;
}

bool isPoint(QChar ch) {
    return ch == QLatin1Char('.') || ch == QLatin1Char(',');
}

// A segment between two points on its centre line, pointed at both ends.
QPolygonF segmentShape(QPointF from, QPointF to) {
    const bool horizontal = from.y() == to.y();
    const QPointF along = horizontal ? QPointF(1, 0) : QPointF(0, 1);
    const QPointF across = horizontal ? QPointF(0, 1) : QPointF(1, 0);
    const double half = kStroke / 2.0;
    from += along * kSegmentGap;
    to -= along * kSegmentGap;
    return QPolygonF({from, from + (along + across) * half, to + (across - along) * half, to,
                      to - (along + across) * half, from + (along - across) * half});
}

const std::array<QPolygonF, 7>& segmentShapes() {
    constexpr double left = kStroke / 2.0;
    constexpr double right = 1.0 - kStroke / 2.0;
    constexpr double top = kStroke / 2.0;
    constexpr double middle = kDigitHeight / 2.0;
    constexpr double bottom = kDigitHeight - kStroke / 2.0;
    static const std::array<QPolygonF, 7> shapes = {
        segmentShape({left, top}, {right, top}),         // a
        segmentShape({right, top}, {right, middle}),     // b
        segmentShape({right, middle}, {right, bottom}),  // c
        segmentShape({left, bottom}, {right, bottom}),   // d
        segmentShape({left, middle}, {left, bottom}),    // e
        segmentShape({left, top}, {left, middle}),       // f
        segmentShape({left, middle}, {right, middle}),   // g
    };
    return shapes;
}

double advanceOf(QChar ch) {
    return isPoint(ch) ? kPointAdvance : kDigitAdvance;
}

}  // namespace

double sevenSegmentTextWidth(const QString& text) {
    double width = kSlant * kDigitHeight;
    for (QChar ch : text) {
        width += advanceOf(ch);
    }
    // A digit in the last cell needs no gap after it.
    if (!text.isEmpty() && !isPoint(text.back())) {
        width -= kDigitAdvance - 1.0;
    }
    return width;
}

void drawSevenSegmentText(QPainter& painter, const QRectF& area, const QString& text,
                          const QColor& lit) {
    if (text.isEmpty() || area.width() <= 0.0 || area.height() <= 0.0) {
        return;
    }
    const double width = sevenSegmentTextWidth(text);
    const double scale = std::min(area.height() / kDigitHeight, area.width() / width);
    // Right-aligned and vertically centred, as numbers on a panel are.
    const QPointF origin(area.right() - width * scale,
                         area.center().y() - kDigitHeight * scale / 2.0);

    QColor unlit = lit;
    unlit.setAlpha(kUnlitAlpha);

    painter.save();
    const QTransform base = painter.worldTransform();
    painter.setPen(Qt::NoPen);
    // Cell space: x grows right, y down, and the top of each cell leans right.
    QTransform cellSpace(scale, 0, -kSlant * scale, scale,
                         origin.x() + kSlant * kDigitHeight * scale, origin.y());
    double x = 0.0;
    for (QChar ch : text) {
        painter.setTransform(QTransform::fromTranslate(x, 0) * cellSpace * base);
        if (isPoint(ch)) {
            // Centred in the space between the digits either side.
            const double dot = kStroke * 1.1;
            const double centreX = (kPointAdvance - (kDigitAdvance - 1.0)) / 2.0;
            painter.setBrush(lit);
            painter.drawEllipse(QRectF(centreX - dot / 2.0, kDigitHeight - dot, dot, dot));
        } else {
            const unsigned on = segmentsFor(ch);
            const auto& shapes = segmentShapes();
            for (std::size_t i = 0; i < shapes.size(); ++i) {
                painter.setBrush((on & (1u << i)) != 0 ? lit : unlit);
                painter.drawPolygon(shapes[i]);
            }
        }
        x += advanceOf(ch);
    }
    painter.restore();
}

}  // namespace halvex
