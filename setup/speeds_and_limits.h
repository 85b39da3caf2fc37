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
    // Range: the vocabulary's step range of the reply.
    template <class Range>
    void decodeMinMax(QScrollBar* minimum, QScrollBar* maximum);
    void decodeMaxima();

    ConsoleContext& context_;
    SetupPage& page_;
};

}  // namespace halvex
