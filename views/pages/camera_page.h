#pragma once

#include <QCheckBox>
#include <QComboBox>
#include <QGroupBox>
#include <QLabel>
#include <QPushButton>
#include <QRadioButton>
#include <QWidget>
#include <array>

#include "views/widgets/clickable.h"
#include "views/widgets/lens_jog_box.h"
#include "views/widgets/spin_button.h"

namespace halvex {

// The "Camera" page: per camera a control list, a transmit box with its
// options, the camera's replies; the camera line settings and time-outs; the
// lens configuration, the lens minimum speeds and the four zoom/focus boxes.
// Arrays are indexed by camera (0 = camera 1) unless said otherwise.
class CameraPage : public QWidget {
    Q_OBJECT
  public:
    static constexpr int kLensBits = 6;  // Lens1Check/Lens2Check run from 1 to 6

    explicit CameraPage(QWidget* parent = nullptr);

    // Control lists.
    std::array<QPushButton*, 2> CamTypeBut{};
    std::array<QComboBox*, 2> CamTypeCombo{};
    std::array<QLabel*, 2> Label26{};
    // Transmit string; HexOp1 also shows the replies in hexadecimal.
    std::array<DoubleClickLineEdit*, 2> TXBox{};
    std::array<QPushButton*, 2> SendBut{};
    std::array<QGroupBox*, 2> FormatFrame1{};
    std::array<QRadioButton*, 2> AscOp1{};
    std::array<QRadioButton*, 2> HexOp1{};
    std::array<QCheckBox*, 2> CRCheck{};
    std::array<QLabel*, 2> RXLabel{};
    // Camera lines: baud, format and level labels of camera 1 and 2.
    std::array<ClickLabel*, 2> BaudLabel{};
    std::array<ClickLabel*, 2> FormLabel{};
    std::array<ClickLabel*, 2> LevelLabel{};
    std::array<SpinButton*, 2> CamTOSpin{};
    std::array<QLabel*, 2> CamTOLabel{};
    QPushButton* SetCamBut = nullptr;
    QPushButton* GetCamBut = nullptr;
    QPushButton* SetCamTOBut = nullptr;
    QPushButton* GetCamTOBut = nullptr;
    QLabel* Label9 = nullptr;
    // Lenses: LensCheck[c][i - 1] is Lens1Check(i) / Lens2Check(i).
    std::array<std::array<QCheckBox*, kLensBits>, 2> LensCheck{};
    std::array<SpinButton*, 2> ZoomMinSpin{};
    std::array<QLabel*, 2> ZoomMinLabel{};
    std::array<SpinButton*, 2> FocusMinSpin{};
    std::array<QLabel*, 2> FocusMinLabel{};
    QPushButton* SetLensBut = nullptr;
    QPushButton* GetLensBut = nullptr;
    // ZoomBox1, FocusBox1, ZoomBox2, FocusBox2: the order of the lens jog bytes.
    std::array<LensJogBox*, 4> LensBox{};
    QPushButton* SerHelpBut = nullptr;

  private:
    QWidget* buildCameraBox(int camera);
    QWidget* buildLinesBox();
    QWidget* buildLensBox();
    QWidget* buildJogBox();
};

}  // namespace halvex
