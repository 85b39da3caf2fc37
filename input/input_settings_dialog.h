#pragma once

#include <QCheckBox>
#include <QComboBox>
#include <QDialog>
#include <QDoubleSpinBox>
#include <QLabel>
#include <QSpinBox>
#include <QTimer>
#include <array>
#include <vector>

#include "input/controller_mapping.h"
#include "input/keyboard_jog.h"

namespace halvex {

class ControllerJog;

// View > Input Settings: the devices present and the one in use, its
// mapping with a live preview (each stick axis's speed as it is pushed), and
// the keyboard's speeds and keys. OK puts the choice to work; the window
// keeps it in the user's settings.
class InputSettingsDialog : public QDialog {
    Q_OBJECT
  public:
    static constexpr int kTargetCount = 6;   // pan, tilt, zoom 1, focus 1, zoom 2, focus 2
    static constexpr int kActionCount = 17;  // seven buttons and presets 0 to 9

    InputSettingsDialog(ControllerJog& controller, KeyboardJog& keyboard,
                        QWidget* parent = nullptr);

    // The device chosen (its GUID, empty for "First one present"), the mapping
    // shown and the keyboard speeds.
    QString chosenDevice() const;
    ControllerMapping chosenMapping() const;
    KeyboardJog::Speeds chosenSpeeds() const;

  private:
    struct AxisRow {
        QComboBox* axis;
        QCheckBox* invert;
        QSpinBox* deadZone;  // per cent
        QDoubleSpinBox* curve;
        QLabel* preview;
    };
    void fillDevices();
    void showMapping(const ControllerMapping& mapping);
    void refreshPreview();
    QWidget* buildSticks();
    QWidget* buildButtons();
    QWidget* buildKeyboard(const KeyboardJog::Speeds& speeds);

    ControllerJog& controller_;
    QComboBox* device_ = nullptr;
    QLabel* inUse_ = nullptr;
    std::array<AxisRow, kTargetCount> axes_{};
    std::array<QComboBox*, kActionCount> buttons_{};
    QSpinBox* normal_ = nullptr;
    QSpinBox* fast_ = nullptr;
    QSpinBox* slow_ = nullptr;
    QSpinBox* zoom_ = nullptr;
    QTimer preview_;
};

}  // namespace halvex
