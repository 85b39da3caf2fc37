#pragma once

#include <QCoro/QCoroTask>
#include <QObject>

#include "console/console_context.h"

namespace halvex {

class CameraPage;

// The transmit boxes: "TX n" turns the box's text into the pass-through
// command for camera n and sends it, or says why it cannot.
class CameraTransmit : public QObject {
    Q_OBJECT
  public:
    CameraTransmit(ConsoleContext& context, CameraPage& page, QObject* parent = nullptr);

    QCoro::Task<> SendBut_Click(int camera);
    void TXBox_DblClick(int camera);
    void HexOp1_Click(int camera);
    void CRCheck_Click(int camera);

  private:
    ConsoleContext& context_;
    CameraPage& page_;
};

}  // namespace halvex
