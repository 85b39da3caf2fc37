#include "positioning/tour_step_line.h"

#include "protocol/vocabulary.h"
#include "session/preset_table.h"
#include "session/text_fields.h"

namespace halvex {

QString tourStepLine(const ByteTable& reply, Byte unitVariant) {
    namespace t = vocab::tour_step;
    using Step = t::Step;
    const auto step = vocab::get(reply, t::kStep);
    const auto preset = vocab::get(reply, Step::kPreset);
    const auto camera = vocab::get(reply, Step::kCamera);
    const auto dwell = vocab::get(reply, Step::kDwell);
    const QString blank =
        vocab::get(reply, Step::kBlank) != 0 ? QStringLiteral("Y") : QStringLiteral("N");

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
