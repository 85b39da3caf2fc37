#pragma once

#include <QCheckBox>
#include <QGroupBox>
#include <QLabel>
#include <QPushButton>
#include <QScrollBar>
#include <QVBoxLayout>
#include <QWidget>
#include <array>

#include "views/widgets/jog_box.h"
#include "views/widgets/led_display.h"
#include "views/widgets/pan_gauge.h"
#include "views/widgets/spin_button.h"
#include "views/widgets/status_lamp.h"

namespace halvex {

// The "Pan/Tilt" page: live position and status, the jog box, the move
// buttons and the soft limits. It only builds and lays out the controls; the
// features that own them fill them in and react to them.
class PanTiltPage : public QWidget {
    Q_OBJECT
  public:
    explicit PanTiltPage(QWidget* parent = nullptr);

    // Live position, target and lens read-outs.
    std::array<QLabel*, 2> Label2{};  // "Pan", "Tilt"
    LedDisplay* PanPosLED;
    LedDisplay* TiltPosLED;
    LedDisplay* PDesLed;
    LedDisplay* TDesLed;
    LedDisplay* Z1LED;
    LedDisplay* F1LED;
    LedDisplay* Z2LED;
    LedDisplay* F2LED;
    QLabel* Zoom1Label;
    QLabel* Focus1Label;
    QLabel* Zoom2Label;
    QLabel* Focus2Label;
    QLabel* ControllerLabel;    // Label1_1, the controller type
    QLabel* SecondLensCaption;  // Label1_3, "Lens 2"
    PanGauge* Gauge;

    // Status lamps.
    StatusLamp* CWLed;
    StatusLamp* CCWLed;
    StatusLamp* UpLed;
    StatusLamp* DownLed;
    StatusLamp* PTOLed;
    StatusLamp* PDELed;
    StatusLamp* TTOLed;
    StatusLamp* TDELed;
    StatusLamp* DesLed;
    StatusLamp* ExecLed;
    StatusLamp* SLOverLed;

    // Jogging.
    JogBox* Jog;
    QLabel* Label3;
    QCheckBox* PanSloCheck;
    QCheckBox* TiltSloCheck;

    // Desired position and moves.
    LedDisplay* PanDesLED;
    LedDisplay* TiltDesLED;
    std::array<SpinButton*, 5> PanDesBut{};
    std::array<SpinButton*, 5> TiltDesBut{};
    std::array<QPushButton*, 2> ClrLEDBut{};
    QCheckBox* HoldPanCheck;
    QCheckBox* HoldTiltCheck;
    QPushButton* AbsoBut;
    QPushButton* AbsoZFBut;
    QPushButton* DeltaBut;
    QPushButton* HomeBut;
    QPushButton* CenterBut;
    std::array<QScrollBar*, 4> ZFScroll{};
    std::array<QLabel*, 4> ZFLabel{};
    QWidget* ZFGroup;

    // Soft limits.
    std::array<QPushButton*, 4> SetSLBut{};
    std::array<QLabel*, 4> Label13{};
    QPushButton* Command2;

    // Where the movement log panel goes.
    QVBoxLayout* MovementMonitorSlot;
    // Where the live video and the range plot go when the page is wide
    // enough for them; hidden otherwise.
    QGroupBox* VideoSlot;
    QGroupBox* RangePlotSlot;

  private:
    QGroupBox* panelSlot(const QString& caption, const QString& name);
    QWidget* buildPositionGroup();
    QWidget* buildStatusGroup();
    void nameForAssistiveTechnology();
    QWidget* buildJogGroup();
    QWidget* buildMoveGroup();
    QWidget* buildZoomFocusGroup();
    QWidget* buildLimitGroup();
};

}  // namespace halvex
