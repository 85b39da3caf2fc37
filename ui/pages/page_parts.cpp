#include "ui/pages/page_parts.h"

#include "ui/widgets/led_display.h"

namespace halvex {

QFont fixedPitchFont() {
    QFont font(QStringLiteral("Courier New"));
    font.setStyleHint(QFont::TypeWriter);
    font.setFixedPitch(true);
    return font;
}

LedDisplay* angleLed(const QString& name, QWidget* parent) {
    auto* led = new LedDisplay(parent);
    led->setObjectName(name);
    led->setDecimals(2);
    led->setFieldWidth(6);
    return led;
}

}  // namespace halvex
