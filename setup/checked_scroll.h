#pragma once

#include <QScrollBar>
#include <vector>

#include "protocol/frame.h"

namespace halvex {

// Puts a value from the unit into a scroll bar. A value outside the bar's
// range is a range fault of the control (the bar is left as it was), never
// a silent clamp.
void setScrollChecked(QScrollBar* scroll, long value);

// The bar's value as two bytes, low first, two's complement.
void appendLowHigh(std::vector<Byte>& message, const QScrollBar* scroll);

// The bar's value as one byte; above 255 is a range fault.
Byte byteOf(const QScrollBar* scroll);

}  // namespace halvex
