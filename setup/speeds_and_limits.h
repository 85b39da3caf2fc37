#pragma once

#include <QCoro/QCoroTask>
#include <QObject>
#include <QScrollBar>

#include "console/console_context.h"

namespace halvex {

class SetupPage;

// Speeds, ramps, top speeds and the minimum and maximum settings of both
// axes: Get buttons ask the unit, Set buttons send the scroll bars'
// positions through the session, and what the session reports sets the
// scroll bars (their read-outs follow).
class SpeedsAndLimits : public QObject {
    Q_OBJECT
  public:
    SpeedsAndLimits(ConsoleContext& context, SetupPage& page, QObject* parent = nullptr);

    QCoro::Task<> GetRateBut_Click();
    QCoro::Task<> SetRateBut_Click();
    QCoro::Task<> GetCMaxBut_Click();
    QCoro::Task<> SetCMaxBut_Click();
    QCoro::Task<> GetIMaxBut_Click();
    QCoro::Task<> SetIMaxBut_Click();
    QCoro::Task<> GetPStepBut_Click();
    QCoro::Task<> SetPStepBut_Click();
    QCoro::Task<> GetTStepBut_Click();
    QCoro::Task<> SetTStepBut_Click();
    QCoro::Task<> SetMaxPairBut_Click();
    QCoro::Task<> SetMinPairBut_Click();
    QCoro::Task<> SetTiltBut_Click();

  private:
    void connectControls();
    void watchReplies();
    template <class Show>
    void showReply(Show show);
    void showSteps(QScrollBar* minimum, QScrollBar* maximum, const StepRange& range);

    ConsoleContext& context_;
    SetupPage& page_;
};

}  // namespace halvex
