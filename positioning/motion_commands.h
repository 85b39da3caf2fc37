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

    void AbsoBut_Click();
    void AbsoZFBut_Click();
    void DeltaBut_Click();
    void CenterBut_Click();
    void HomeBut_Click();
    void SetSLBut_Click(int index);
    void ClrLEDBut_Click(int index);
    void ZFScroll_Change(int index);

  private:
    // Pan and tilt fields at bytes 1..6, with the hold boxes when asked.
    void putDesiredPosition(bool honourHoldBoxes);

    ConsoleContext& context_;
    PanTiltPage& page_;
};

}  // namespace halvex
