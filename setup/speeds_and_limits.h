#pragma once

#include <QObject>
#include <QScrollBar>

#include "console/console_context.h"

namespace halvex {

class SetupPage;

// Speeds, ramps, top speeds and the minimum and maximum settings of both
// axes: Get buttons ask the unit, Set buttons send the scroll bars'
// positions, replies set the scroll bars (their read-outs follow).
class SpeedsAndLimits : public QObject {
    Q_OBJECT
  public:
    static constexpr Byte kRamps = 0x86;
    static constexpr Byte kRates = 0x92;
    static constexpr Byte kMinimaOrTilt = 0x93;
    static constexpr Byte kMaxima = 0x98;
    static constexpr Byte kMaximaSet = 0x99;
    static constexpr Byte kTopSpeeds = 0x9C;
    static constexpr Byte kPanMinMax = 0xA1;
    static constexpr Byte kTiltMinMax = 0xA2;

    SpeedsAndLimits(ConsoleContext& context, SetupPage& page, QObject* parent = nullptr);

    void registerDecoders();
    // Puts the Get handlers where the connection sequence finds them.
    void registerReads(ReadHandlers& reads);

    void GetRateBut_Click();
    void SetRateBut_Click();
    void GetCMaxBut_Click();
    void SetCMaxBut_Click();
    void GetIMaxBut_Click();
    void SetIMaxBut_Click();
    void GetPStepBut_Click();
    void SetPStepBut_Click();
    void GetTStepBut_Click();
    void SetTStepBut_Click();
    void SetMaxPairBut_Click();
    void SetMinPairBut_Click();
    void SetTiltBut_Click();

  private:
    void connectControls();
    void send(const std::vector<Byte>& message);
    void decodeRates();
    void decodeRamps();
    void decodeTopSpeeds();
    void decodeMinMax(QScrollBar* minimum, QScrollBar* maximum);
    void decodeMaxima();

    ConsoleContext& context_;
    SetupPage& page_;
};

}  // namespace halvex
