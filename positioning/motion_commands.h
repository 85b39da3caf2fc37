#pragma once

#include <QObject>

#include "console/console_context.h"

namespace halvex {

class PanTiltPage;

// The one-shot move buttons of the Pan/Tilt page, the soft-limit buttons and
// the "CL" buttons of the desired angles.
class MotionCommands : public QObject {
    Q_OBJECT
  public:
    MotionCommands(ConsoleContext& context, PanTiltPage& page, QObject* parent = nullptr);

    // Each completes when the unit has answered the move.
    QCoro::Task<> AbsoBut_Click();
    QCoro::Task<> AbsoZFBut_Click();
    QCoro::Task<> DeltaBut_Click();
    QCoro::Task<> CenterBut_Click();
    QCoro::Task<> HomeBut_Click();
    void SetSLBut_Click(int index);
    void ClrLEDBut_Click(int index);
    void ZFScroll_Change(int index);

  private:
    // The desired pan and tilt, with the hold boxes when asked.
    PanTiltTarget desiredPosition(bool honourHoldBoxes) const;

    ConsoleContext& context_;
    PanTiltPage& page_;
};

}  // namespace halvex
