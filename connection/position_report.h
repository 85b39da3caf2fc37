#pragma once

#include <QAbstractButton>
#include <QLabel>
#include <QObject>
#include <QTabWidget>
#include <array>

#include "console/console_context.h"
#include "session/jog_state.h"

namespace halvex {

class PanTiltPage;

// Where the bytes the cameras sent back are shown (the camera page).
struct CameraReplyView {
    std::array<QLabel*, 2> RXLabel{};
    // Checked: show the camera's bytes as hexadecimal rather than as text.
    std::array<QAbstractButton*, 2> HexOp1{};
};

// Shows the position report and the soft-limit reply, as the session reads
// them, on the Pan/Tilt page and the camera page's reply labels; keeps the status lamps, the
// controller caption and the gauge in step, and switches jogging on and off as pages change.
class PositionReport : public QObject {
    Q_OBJECT
  public:
    PositionReport(ConsoleContext& context, PanTiltPage& page, JogState& jog,
                   CameraReplyView cameras, QTabWidget& tabs, QObject* parent = nullptr);

    // Registers the refresh that must follow the tour check (caption, gauge);
    // called once every feature has registered its own refreshes.
    void registerLateRefresh();
    // Starts following page changes; called once the pages are all in place.
    void watchPageChanges();

    void showLensPositions(const LensPositions& lens);
    void showPosition(float pan, float tilt);
    void showCameraBytes(int camera, const std::vector<Byte>& bytes);
    void showSoftLimit(int index, float value);
    void refreshStatusLamps();
    void refreshControllerAndGauge();
    void SSTab1_Click(int shownPage);

  private:
    void rescaleGauge();

    ConsoleContext& context_;
    PanTiltPage& page_;
    JogState& jog_;
    CameraReplyView cameras_;
    QTabWidget& tabs_;
};

}  // namespace halvex
