#pragma once

#include <QScrollBar>

namespace halvex {

// Puts a value from the unit into a scroll bar. A value outside the bar's
// range is a range fault of the control (the bar is left as it was), never
// a silent clamp.
void setScrollChecked(QScrollBar* scroll, long value);

}  // namespace halvex
