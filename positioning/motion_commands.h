#pragma once

#include <QObject>

#include "console/console_context.h"
#include "protocol/vocabulary_words.h"

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
    // The desired pan and tilt into a move's fields, with the hold boxes
    // when asked.
    template <class M>
    void putDesiredPosition(vocab::Field<M> pan, vocab::Field<M> tilt, bool honourHoldBoxes);

    ConsoleContext& context_;
    PanTiltPage& page_;
};

}  // namespace halvex
