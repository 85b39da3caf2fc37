#pragma once

#include <QObject>

#include "console/console_context.h"
#include "console/jog_state.h"

namespace halvex {

class PanTiltPage;

// The jog box, the low-speed checks and "SL Override", and the jog message
// that goes out on every free tick.
class JogControl : public QObject {
    Q_OBJECT
  public:
    // Mouse buttons as the jog rule counts them.
    enum Button { Left = 1, Right = 2, Middle = 4 };

    JogControl(ConsoleContext& context, JogState& jog, PanTiltPage& page,
               QObject* parent = nullptr);

    // The jog message: flags, pan and tilt speeds, four lens speeds.
    void sendJogMessage();

    void JogBox_MouseDown(int button, double x, double y);
    void JogBox_MouseMove(int buttons, double x, double y);
    void JogBox_MouseUp();
    void Command2_Click();

  private:
    void applyJogRule(int button, double x, double y);
    void refreshFlags();

    ConsoleContext& context_;
    JogState& jog_;
    PanTiltPage& page_;
};

// The VB-style value of a set of Qt mouse buttons (left 1, right 2, middle 4).
int buttonValue(Qt::MouseButtons buttons);

}  // namespace halvex
