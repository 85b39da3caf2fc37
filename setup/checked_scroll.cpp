#include "setup/checked_scroll.h"

#include <string>

#include "protocol/range_fault.h"

namespace halvex {

void setScrollChecked(QScrollBar* scroll, long value) {
    if (value < scroll->minimum() || value > scroll->maximum()) {
        throw RangeFault(RangeFault::Overflow, "invalid value " + std::to_string(value) + " for " +
                                                   scroll->objectName().toStdString());
    }
    scroll->setValue(static_cast<int>(value));
}

}  // namespace halvex
