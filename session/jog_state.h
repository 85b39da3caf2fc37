#pragma once

#include <array>

#include "protocol/frame.h"

namespace halvex {

// What the jog message carries besides its flags byte, and the jog box mode.
struct JogState {
    bool JogEnabled = false;  // only while the Pan/Tilt page is shown
    bool JogPanOn = false;
    bool JogTiltOn = false;
    bool PanJogDirection = false;   // true: right of centre (CW)
    bool TiltJogDirection = false;  // true: above centre (up)
    Byte PanJogSpeed = 0;
    Byte TiltJogSpeed = 0;
    // Zoom 1, focus 1, zoom 2, focus 2, from the lens jog boxes.
    std::array<Byte, 4> LensJogSpeeds{};

    void stop() {
        PanJogSpeed = 0;
        TiltJogSpeed = 0;
    }
};

}  // namespace halvex
