#pragma once

#include <QCoro/QCoroTask>
#include <QObject>
#include <array>

#include "console/console_context.h"
#include "session/jog_state.h"

namespace halvex {

class CameraPage;

// Mouse buttons as the lens jog rule counts them (left 1, right 2, middle 4).
int lensButtonValue(Qt::MouseButtons buttons);

// The lens jog byte for a pointer at (x, y) in a 39 by 120 box: bits 1..7 the
// speed, bit 0 set when driving toward the top. Zero unless the left button
// alone is held inside the box, and on the middle line.
Byte lensJogByte(int button, double x, double y);

// The lens setup of both cameras: which motors are enabled, reversed or
// inverted, their minimum speeds; and the four zoom/focus boxes whose jog
// bytes ride on every jog message.
class LensControl : public QObject {
    Q_OBJECT
  public:
    LensControl(ConsoleContext& context, JogState& jog, CameraPage& page,
                QObject* parent = nullptr);

    // check: the box's number, 1..CameraPage::kLensBits.
    void LensCheck_Click(int camera, int check, bool checked);
    void ZoomMinSpin_SpinUp(int camera);
    void ZoomMinSpin_SpinDown(int camera);
    void FocusMinSpin_SpinUp(int camera);
    void FocusMinSpin_SpinDown(int camera);
    QCoro::Task<> SetLensBut_Click();
    QCoro::Task<> GetLensBut_Click();
    // box: 0 zoom 1, 1 focus 1, 2 zoom 2, 3 focus 2.
    void LensBox_Mouse(int box, int button, double x, double y);
    void LensBox_MouseUp(int box);

    // The lens setup as the Set button sends it.
    const LensSetup& setup(int camera) const { return lenses_[static_cast<std::size_t>(camera)]; }

  private:
    // The unit's answer, shown without sending anything.
    void showLenses(const LensSetupPair& lenses);
    void showSpeeds();

    ConsoleContext& context_;
    JogState& jog_;
    CameraPage& page_;
    LensSetupPair lenses_{};
};

}  // namespace halvex
