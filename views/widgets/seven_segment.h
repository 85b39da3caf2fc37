#pragma once

#include <QColor>
#include <QPainter>
#include <QRectF>
#include <QString>

namespace halvex {

// Draws text made of digits, '-', ' ' and '.' as slanted seven-segment
// characters, right-aligned and scaled to fit `area`. Every character cell
// also shows its unlit segments in a faint shade of `lit`, as a real
// segment display does. Other characters draw as blank cells.
void drawSevenSegmentText(QPainter& painter, const QRectF& area, const QString& text,
                          const QColor& lit);

// Width of one text in digit-height units, for size hints.
double sevenSegmentTextWidth(const QString& text);

}  // namespace halvex
