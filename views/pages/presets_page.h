#pragma once

#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QWidget>

#include "views/pages/angle_step_row.h"

namespace halvex {

class LedDisplay;

// The "Presets" page: the unit's preset table, the selected preset's angles
// with their step buttons, and the store and clear buttons.
class PresetsPage : public QWidget {
    Q_OBJECT
  public:
    explicit PresetsPage(QWidget* parent = nullptr);

    QListWidget* PresetList = nullptr;
    LedDisplay* PanPreLED = nullptr;
    LedDisplay* TiltPreLED = nullptr;
    AngleStepButtons PanPreBut{};
    AngleStepButtons TiltPreBut{};
    QPushButton* SavePreBut = nullptr;
    QPushButton* SaveCurPreBut = nullptr;
    QPushButton* AddAuxBut = nullptr;
    QPushButton* ClearPreBut = nullptr;

  private:
    QWidget* buildListBox();
    QWidget* buildEditBox();
};

}  // namespace halvex
