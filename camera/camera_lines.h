#pragma once

#include <QCoro/QCoroTask>
#include <QObject>
#include <QString>
#include <array>

#include "console/console_context.h"

namespace halvex {

class CameraPage;

// The unit's two camera lines (speed, character format and level) and the
// time the unit waits for a camera's answer. The labels step through the
// choices from what the unit last reported; only the Set buttons send.
class CameraLines : public QObject {
    Q_OBJECT
  public:
    CameraLines(ConsoleContext& context, CameraPage& page, QObject* parent = nullptr);

    void BaudLabel_Click(int camera);
    void FormLabel_Click(int camera);
    void LevelLabel_Click(int camera);
    void CamTOSpin_SpinUp(int camera);
    void CamTOSpin_SpinDown(int camera);
    QCoro::Task<> SetCamBut_Click();
    QCoro::Task<> GetCamBut_Click();
    QCoro::Task<> SetCamTOBut_Click();
    QCoro::Task<> GetCamTOBut_Click();

  private:
    void showLines(const CameraLinePair& lines);
    void showTimeouts(const CameraTimeouts& steps);
    void showLine(int camera);
    void showTimeout(int camera, int milliseconds);

    ConsoleContext& context_;
    CameraPage& page_;
    // The lines as the Set button sends them.
    CameraLinePair lines_{};
    // The unit takes 1..100; 1 until the unit says otherwise, so the first
    // step down stays in range.
    CameraTimeouts timeoutSteps_{1, 1};
};

}  // namespace halvex
