#pragma once

#include <QObject>
#include <QString>
#include <array>
#include <vector>

#include "console/console_context.h"

namespace halvex {

class CameraPage;

// The unit's two camera lines: baud rate, character format and level
// (vocab::CameraLines) and the time the unit waits for a camera's answer
// (vocab::CameraTimeouts). The labels step through the choices; only the Set
// buttons send.
class CameraLines : public QObject {
    Q_OBJECT
  public:
    CameraLines(ConsoleContext& context, CameraPage& page, QObject* parent = nullptr);

    void registerDecoders();

    void BaudLabel_Click(int camera);
    void FormLabel_Click(int camera);
    void LevelLabel_Click(int camera);
    void CamTOSpin_SpinUp(int camera);
    void CamTOSpin_SpinDown(int camera);
    void SetCamBut_Click();
    void GetCamBut_Click();
    void SetCamTOBut_Click();
    void GetCamTOBut_Click();

    // Replies to vocab::CameraLines and vocab::CameraTimeouts.
    void decodeSerialSettings();
    void decodeTimeouts();

    Byte CamComm(int camera) const;
    Byte CamTimeout(int camera) const { return CamTimeout_[static_cast<std::size_t>(camera)]; }

    static QString baudText(int index);
    static QString formatText(int index);

  private:
    void showTimeout(int camera, int milliseconds);

    ConsoleContext& context_;
    CameraPage& page_;
    std::array<int, 2> CamBaudIndex{};
    std::array<int, 2> CamFormatIndex{};
    // The lines' settings as the Set button sends them.
    std::vector<Byte> lines_;
    // The unit takes 1..100; 1 until the unit says otherwise, so the first
    // step down stays in range.
    std::array<Byte, 2> CamTimeout_{1, 1};
};

}  // namespace halvex
