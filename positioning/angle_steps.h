#pragma once

// The step buttons of the angle LEDs: five spin buttons per LED, index k
// moving the LED by 10^k hundredths of a degree (0.01, 0.1, 1, 10, 100).
//
// Use:
//   auto row = makeAngleStepRow(QStringLiteral("PanDesBut"), parent);
//   connectAngleSteps(state, row.buttons, panDesLed,
//                     [&status]() -> std::optional<float> {
//                         if (status.PanContinuous) return std::nullopt;
//                         return status.PanMinLimit;
//                     },
//                     [&status]() -> std::optional<float> { ... PanMaxLimit ... });
//
// The buttons are named PanDesBut_0..PanDesBut_4. A down click subtracts the
// step and then tests only the lower bound, an up click adds it and tests
// only the upper bound; a value past the bound is set to the bound. A bound
// callback that returns no value means "no bound" (a continuously panning
// unit). Nothing is sent: the LED is read by the move and save commands.

#include <functional>
#include <optional>

#include "views/pages/angle_step_row.h"

namespace halvex {

class FormState;
class LedDisplay;

using AngleBound = std::function<std::optional<float>()>;

// 10 to the power index, times 0.01, in single precision.
float angleStep(int index);

// The stepped value, clamped to the bound on its own side only.
float stepAngleDown(float value, int index, std::optional<float> lower);
float stepAngleUp(float value, int index, std::optional<float> upper);

// Makes the buttons step the LED within the bounds. Each click runs as the
// handler "<baseName>_SpinUp" / "_SpinDown" under the range-fault guard.
void connectAngleSteps(FormState& state, const AngleStepButtons& buttons, LedDisplay* led,
                       AngleBound lower, AngleBound upper);

// Fixed bounds, for the correction LEDs.
AngleBound fixedBound(float value);

}  // namespace halvex
