#pragma once

#include <QString>
#include <QWidget>
#include <array>

namespace halvex {

class SpinButton;

constexpr int kAngleStepButtons = 5;
using AngleStepButtons = std::array<SpinButton*, kAngleStepButtons>;

// A row of five spin buttons named <baseName>_0..4, index k stepping an
// angle by 10^k hundredths of a degree, with the step each one makes written
// under it, smallest step on the right.
struct AngleStepRow {
    QWidget* row = nullptr;
    AngleStepButtons buttons{};
};
AngleStepRow makeAngleStepRow(const QString& baseName, QWidget* parent);

}  // namespace halvex
