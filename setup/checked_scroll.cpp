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

std::uint32_t wordOf(const QScrollBar* scroll) {
    Byte hi = 0;
    Byte lo = 0;
    Split16(scroll->value(), hi, lo);
    return static_cast<std::uint32_t>(hi << 8 | lo);
}

Byte byteOf(const QScrollBar* scroll) {
    return checkedByte(scroll->value());
}

}  // namespace halvex
