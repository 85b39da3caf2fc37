#pragma once

#include <QObject>

#include "console/console_context.h"
#include "session/jog_sources.h"
#include "session/jog_state.h"

namespace halvex {

class PanTiltPage;

// The jog box, the low-speed checks and "SL Override", and the jog message
// that the session sends on every free tick. The jog box is one of the jog sources: it
// tells them what the mouse wants, and draws whatever the sources decided.
// The checks and the button show the session's modifiers and ask it to
// change them.
class JogControl : public QObject {
    Q_OBJECT
  public:
    // Mouse buttons as the jog rule counts them.
    enum Button { Left = 1, Right = 2, Middle = 4 };

    JogControl(ConsoleContext& context, JogState& jog, JogSources& sources, PanTiltPage& page,
               QObject* parent = nullptr);

    void JogBox_MouseDown(int button, double x, double y);
    void JogBox_MouseMove(int buttons, double x, double y);
    void JogBox_MouseUp();
    void Command2_Click();

  private:
    void applyJogRule(int button, double x, double y);
    void showModifiers(bool softLimitOverride, bool panLowSpeed, bool tiltLowSpeed);
    // The jog box draws the speeds the message carries, whichever source set them.
    void showJogVector();

    ConsoleContext& context_;
    JogState& jog_;
    JogSources& sources_;
    PanTiltPage& page_;
};

// The VB-style value of a set of Qt mouse buttons (left 1, right 2, middle 4).
int buttonValue(Qt::MouseButtons buttons);

}  // namespace halvex
