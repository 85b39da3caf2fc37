#include "connection/movement_monitor_format.h"

#include "session/text_fields.h"

namespace halvex {

namespace {
constexpr int kFieldWidth = 8;

QString field(float degrees) {
    return fitRight(formatAngle(degrees), kFieldWidth);
}
}  // namespace

QString movementLine(float toPan, float fromPan, float toTilt, float fromTilt) {
    const float panMove = toPan - fromPan;
    const float tiltMove = toTilt - fromTilt;
    return field(toPan) + QLatin1Char(' ') + field(fromPan) + QLatin1Char(' ') + field(panMove) +
           QStringLiteral("  ") + field(toTilt) + QLatin1Char(' ') + field(fromTilt) +
           QLatin1Char(' ') + field(tiltMove);
}

QString formatLargestMove(float degrees) {
    return formatAngle(degrees);
}

QString formatAverageMove(float degrees) {
    return QString::number(degrees, 'f', 3);
}

}  // namespace halvex
