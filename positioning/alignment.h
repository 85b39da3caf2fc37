#pragma once

#include <QLabel>
#include <QObject>
#include <QWidget>
#include <functional>

#include <vector>

#include "console/console_context.h"

namespace halvex {

class OffsetsPage;

// The angle offsets of the "Offsets" page: reads and changes them, and after
// every change reloads what the console holds in angle terms (the four soft
// limits and the preset table) with the page tabs locked. Also shows the
// resolver centre, encoder alignment and homing index readings.
class Alignment : public QObject {
    Q_OBJECT
  public:
    // What an offset change needs from the rest of the window.
    struct Surroundings {
        QLabel* panCaption = nullptr;   // "Pan" above the position displays
        QLabel* tiltCaption = nullptr;  // "Tilt"
        QWidget* pageTabs = nullptr;    // locked during a change
    };

    Alignment(ConsoleContext& context, OffsetsPage& page, Surroundings surroundings,
              QObject* parent = nullptr);

    void registerDecoders();

    QCoro::Task<> SetCorBut_Click();
    QCoro::Task<> AlignCorBut_Click();
    QCoro::Task<> AlignCenBut_Click();
    QCoro::Task<> ZeroOffBut_Click();
    void GetAlignBut_Click();
    void GetCenBut_Click();
    void SetCenBut_Click();

  private:
    void connectControls();
    // Sends one offset command, then re-reads the soft limits and presets.
    QCoro::Task<> changeOffsets(std::vector<Byte> command);
    void decodeOffsets();
    void decodeCenter();
    void decodeEncoderAlignment();
    void decodeHoming();

    ConsoleContext& context_;
    OffsetsPage& page_;
    Surroundings surroundings_;
};

}  // namespace halvex
