#include "positioning/tour_step_line.h"

#include "session/text_fields.h"

namespace halvex {

QString tourStepLine(const TourStep& step, Byte unitVariant) {
    const QString blank = step.blank ? QStringLiteral("Y") : QStringLiteral("N");
    QString line = fitRight(QString::number(step.number), 2) + QStringLiteral("   Pre ") +
                   fitRight(QString::number(step.preset), 2) + QStringLiteral("  ") +
                   fitRight(QString::number(step.dwellSeconds), 3) + QStringLiteral(" Secs  ") +
                   blank.leftJustified(2, QLatin1Char(' '));
    if (unitVariant == 0) {
        line += QStringLiteral("     ") + fitRight(QString::number(step.camera), 2);
    }
    return line;
}

}  // namespace halvex
