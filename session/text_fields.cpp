#include "session/text_fields.h"

namespace halvex {

QString fitRight(const QString& text, int width) {
    return text.size() > width ? text.left(width) : text.rightJustified(width, QLatin1Char(' '));
}

QString formatAngle(double degrees) {
    return QString::number(degrees, 'f', 2);
}

}  // namespace halvex
