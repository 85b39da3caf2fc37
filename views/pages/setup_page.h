#pragma once

#include <QGroupBox>
#include <QLabel>
#include <QPushButton>
#include <QRadioButton>
#include <QScrollBar>
#include <QWidget>
#include <array>

namespace halvex {

// The "Setup" page: speeds, ramps, top speeds and the minimum and maximum
// settings of both axes; the unit address, communication time-out, heater
// mode and firmware revision.
class SetupPage : public QWidget {
    Q_OBJECT
  public:
    explicit SetupPage(QWidget* parent = nullptr);

    // Speeds and ramps, pan (P) and tilt (T), each with its read-out.
    QScrollBar* PSafeScroll = nullptr;
    QScrollBar* TSafeScroll = nullptr;
    QScrollBar* PRampScroll = nullptr;
    QScrollBar* TRampScroll = nullptr;
    QScrollBar* PDecelScroll = nullptr;
    QScrollBar* TDecelScroll = nullptr;
    QScrollBar* PTopScroll = nullptr;
    QScrollBar* TTopScroll = nullptr;
    QScrollBar* PITopScroll = nullptr;
    QScrollBar* TITopScroll = nullptr;
    QScrollBar* PMinScroll = nullptr;
    QScrollBar* TMinScroll = nullptr;
    QScrollBar* PMaxScroll = nullptr;
    QScrollBar* TMaxScroll = nullptr;
    QLabel* Label28 = nullptr;    // PSafe
    QLabel* Label29 = nullptr;    // TSafe
    QLabel* Label27 = nullptr;    // PRamp
    QLabel* Label21 = nullptr;    // TRamp
    QLabel* Label35 = nullptr;    // PDecel
    QLabel* Label36 = nullptr;    // TDecel
    QLabel* Label30 = nullptr;    // PTop
    QLabel* Label31 = nullptr;    // TTop
    QLabel* Label32 = nullptr;    // PITop
    QLabel* Label33 = nullptr;    // TITop
    QLabel* Label7 = nullptr;     // PMin
    QLabel* Label1_17 = nullptr;  // TMin
    QLabel* Label1_20 = nullptr;  // PMax
    QLabel* Label1_21 = nullptr;  // TMax
    QPushButton* GetRateBut = nullptr;
    QPushButton* SetRateBut = nullptr;
    QPushButton* GetCMaxBut = nullptr;
    QPushButton* SetCMaxBut = nullptr;
    QPushButton* GetIMaxBut = nullptr;
    QPushButton* SetIMaxBut = nullptr;
    QPushButton* GetPStepBut = nullptr;
    QPushButton* SetPStepBut = nullptr;
    QPushButton* GetTStepBut = nullptr;
    QPushButton* SetTStepBut = nullptr;
    // The short forms of the limit commands.
    QPushButton* SetMaxPairBut = nullptr;
    QPushButton* SetMinPairBut = nullptr;
    QPushButton* SetTiltBut = nullptr;

    // Identity.
    QScrollBar* CurrIDScroll = nullptr;
    QLabel* CurrIDLabel = nullptr;
    QScrollBar* IDScroll = nullptr;
    QLabel* IDLabel = nullptr;
    QPushButton* SetIDBut = nullptr;
    QPushButton* BSetIDBut = nullptr;
    QPushButton* GetIDBut = nullptr;

    // Housekeeping.
    QScrollBar* TOScroll = nullptr;
    QLabel* TOLabel = nullptr;
    QPushButton* SetTOBut = nullptr;
    QPushButton* GetTOBut = nullptr;
    std::array<QRadioButton*, 4> HeatOp{};  // index 3 is never shown
    QPushButton* GetHeatBut = nullptr;
    QPushButton* RevBut = nullptr;
    QLabel* RevLabel = nullptr;

  private:
    QGroupBox* buildRates();
    QGroupBox* buildLimits();
    QGroupBox* buildIdentity();
    QGroupBox* buildHousekeeping();
};

}  // namespace halvex
