#include "protocol/capture_line.h"

namespace halvex {

QString hexText(Byte value) {
    return QStringLiteral("%1").arg(value, 2, 16, QLatin1Char('0')).toUpper();
}

void CaptureLine::add(Byte value) {
    if (!text_.isEmpty()) {
        text_ += QLatin1Char(' ');
    }
    text_ += hexText(value);
}

}  // namespace halvex
