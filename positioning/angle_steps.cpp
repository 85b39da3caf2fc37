#include "positioning/angle_steps.h"

#include <cmath>

#include "protocol/fault_guard.h"
#include "views/widgets/led_display.h"
#include "views/widgets/spin_button.h"

namespace halvex {

namespace {
QByteArray handlerName(const SpinButton* button, const char* event) {
    QString base = button->objectName();
    base.truncate(base.lastIndexOf(QLatin1Char('_')));
    return (base + QLatin1Char('_') + QLatin1String(event)).toLatin1();
}
}  // namespace

float angleStep(int index) {
    return static_cast<float>(std::pow(10.0, index) * 0.01);
}

float stepAngleDown(float value, int index, std::optional<float> lower) {
    const float stepped = value - angleStep(index);
    return lower && stepped < *lower ? *lower : stepped;
}

float stepAngleUp(float value, int index, std::optional<float> upper) {
    const float stepped = value + angleStep(index);
    return upper && stepped > *upper ? *upper : stepped;
}

void connectAngleSteps(FormState& state, const AngleStepButtons& buttons, LedDisplay* led,
                       AngleBound lower, AngleBound upper) {
    for (int k = 0; k < kAngleStepButtons; ++k) {
        SpinButton* button = buttons[static_cast<std::size_t>(k)];
        QObject::connect(
            button, &SpinButton::SpinDown, led,
            [&state, led, k, lower, name = handlerName(button, "SpinDown")] {
                guarded(state, name.constData(), [&] {
                    const auto value = static_cast<float>(led->value());
                    led->setValue(stepAngleDown(value, k, lower ? lower() : std::nullopt));
                });
            });
        QObject::connect(
            button, &SpinButton::SpinUp, led,
            [&state, led, k, upper, name = handlerName(button, "SpinUp")] {
                guarded(state, name.constData(), [&] {
                    const auto value = static_cast<float>(led->value());
                    led->setValue(stepAngleUp(value, k, upper ? upper() : std::nullopt));
                });
            });
    }
}

AngleBound fixedBound(float value) {
    return [value]() -> std::optional<float> { return value; };
}

}  // namespace halvex
