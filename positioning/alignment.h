#pragma once

#include <QLabel>
#include <QObject>
#include <QWidget>
#include <functional>

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
    static constexpr Byte kSetOffsets = 0x80;
    static constexpr Byte kSoftLimit = 0x81;
    static constexpr Byte kAlignCenter = 0x82;
    static constexpr Byte kAlignCoordinates = 0x83;
    static constexpr Byte kZeroOffsets = 0x84;
    static constexpr Byte kGetOffsets = 0x85;
    static constexpr Byte kGetCenter = 0x90;
    static constexpr Byte kSetCenter = 0x91;
    static constexpr Byte kEncoderAlignment = 0x9D;
    static constexpr Byte kHoming = 0x9E;

    // What an offset change needs from the rest of the window.
    struct Surroundings {
        QLabel* panCaption = nullptr;   // "Pan" above the position displays
        QLabel* tiltCaption = nullptr;  // "Tilt"
        QWidget* pageTabs = nullptr;    // locked during a change
    };

    Alignment(ConsoleContext& context, OffsetsPage& page, Surroundings surroundings,
              QObject* parent = nullptr);

    void registerDecoders();

    void SetCorBut_Click();
    void AlignCorBut_Click();
    void AlignCenBut_Click();
    void ZeroOffBut_Click();
    void GetAlignBut_Click();
    void GetCenBut_Click();
    void SetCenBut_Click();

  private:
    void connectControls();
    // Sends one offset command, then re-reads the soft limits and presets.
    void changeOffsets(Byte code, bool withCoordinates);
    void decodeOffsets();
    void decodeCenter();
    void decodeEncoderAlignment();
    void decodeHoming();

    ConsoleContext& context_;
    OffsetsPage& page_;
    Surroundings surroundings_;
};

}  // namespace halvex
