#pragma once

#include <QLabel>
#include <QPushButton>
#include <QWidget>

#include "views/pages/angle_step_row.h"

namespace halvex {

class LedDisplay;

// The "Offsets" page: the pan and tilt angle offsets with their step and
// clear buttons, the offset and alignment buttons, and the read-outs of the
// resolver centre, the encoder alignment and the homing index.
class OffsetsPage : public QWidget {
    Q_OBJECT
  public:
    explicit OffsetsPage(QWidget* parent = nullptr);

    QLabel* Label2_6 = nullptr;  // page heading
    LedDisplay* PanCorLED = nullptr;
    LedDisplay* TiltCorLED = nullptr;
    AngleStepButtons PanCorBut{};
    AngleStepButtons TiltCorBut{};
    QPushButton* ClrLEDBut_2 = nullptr;  // clears PanCorLED
    QPushButton* ClrLEDBut_3 = nullptr;  // clears TiltCorLED

    QPushButton* GetAlignBut = nullptr;
    QPushButton* ZeroOffBut = nullptr;
    QPushButton* SetCorBut = nullptr;
    QPushButton* AlignCorBut = nullptr;
    QPushButton* AlignCenBut = nullptr;

    QPushButton* GetCenBut = nullptr;
    QPushButton* SetCenBut = nullptr;
    QLabel* Label1_18 = nullptr;  // pan resolver centre
    QLabel* Label1_19 = nullptr;  // tilt resolver centre
    QLabel* Label39 = nullptr;    // pan encoder alignment
    QLabel* Label40 = nullptr;    // tilt encoder alignment
    QLabel* Pindex = nullptr;
    QLabel* Tindex = nullptr;

  private:
    QWidget* buildOffsetBox();
    QWidget* buildReadingsBox();
};

}  // namespace halvex
