#include "views/pages/angle_step_row.h"

#include <QGridLayout>
#include <QLabel>

#include "views/widgets/spin_button.h"

namespace halvex {

namespace {
const char* const kStepCaptions[kAngleStepButtons] = {".01", ".1", "1", "10", "100"};
}  // namespace

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

}  // namespace halvex
