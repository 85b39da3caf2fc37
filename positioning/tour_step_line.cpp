#include "positioning/tour_step_line.h"

#include "console/preset_table.h"
#include "console/text_fields.h"

namespace halvex {

QString tourStepLine(int step, Byte presetByte, Byte dwellByte, Byte unitVariant) {
    const int preset = presetByte & kPresetNumberMask;
    const int camera = presetByte >> 6;
    const int dwell = dwellByte & kDwellSecondsMask;
    const QString blank =
        (dwellByte & kVideoBlankBit) != 0 ? QStringLiteral("Y") : QStringLiteral("N");

    QString line = fitRight(QString::number(step), 2) + QStringLiteral("   Pre ") +
                   fitRight(QString::number(preset), 2) + QStringLiteral("  ") +
                   fitRight(QString::number(dwell), 3) + QStringLiteral(" Secs  ") +
                   blank.leftJustified(2, QLatin1Char(' '));
    if (unitVariant == 0) {
        line += QStringLiteral("     ") + fitRight(QString::number(camera), 2);
    }
    return line;
}

}  // namespace halvex
