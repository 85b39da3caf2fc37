#include "positioning/angle_steps.h"

#include <QGridLayout>
#include <QLabel>
#include <cmath>

#include "protocol/fault_guard.h"
#include "ui/widgets/led_display.h"
#include "ui/widgets/spin_button.h"

namespace halvex {

namespace {
const char* const kStepCaptions[kAngleStepButtons] = {".01", ".1", "1", "10", "100"};

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

AngleStepRow makeAngleStepRow(const QString& baseName, QWidget* parent) {
    AngleStepRow result;
    result.row = new QWidget(parent);
    auto* grid = new QGridLayout(result.row);
    grid->setContentsMargins(0, 0, 0, 0);
    grid->setHorizontalSpacing(6);
    grid->setVerticalSpacing(1);
    // Largest step on the left, as the digits of the LED run.
    for (int k = 0; k < kAngleStepButtons; ++k) {
        const int column = kAngleStepButtons - 1 - k;
        auto* button = new SpinButton(result.row);
        button->setObjectName(baseName + QLatin1Char('_') + QString::number(k));
        button->setFixedSize(22, 34);
        button->setToolTip(QStringLiteral("Step %1 Degrees").arg(kStepCaptions[k]));
        auto* caption = new QLabel(QString::fromLatin1(kStepCaptions[k]), result.row);
        caption->setAlignment(Qt::AlignHCenter);
        QFont small = caption->font();
        small.setPointSizeF(small.pointSizeF() * 0.8);
        caption->setFont(small);
        grid->addWidget(button, 0, column, Qt::AlignHCenter);
        grid->addWidget(caption, 1, column, Qt::AlignHCenter);
        result.buttons[static_cast<std::size_t>(k)] = button;
    }
    return result;
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
