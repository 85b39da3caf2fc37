#pragma once

#include <QString>

#include "protocol/frame.h"

namespace halvex {

// Preset byte of a tour step: bits 0..5 the preset, bit 6 camera 2, bit 7
// camera 3. Dwell byte: bits 0..6 seconds, bit 7 blank the video.
constexpr Byte kPresetNumberMask = 0x3F;
constexpr Byte kDwellSecondsMask = 0x7F;
constexpr Byte kVideoBlankBit = 0x80;

// The line of one tour step in the tour list:
//   " 3   Pre  5   10 Secs  Y       1"
// step, preset and dwell right-aligned, then the video-blank mark ("Y" or
// "N", left-aligned in two characters) and, on a controller with the second
// camera (type 0), the camera number.
QString tourStepLine(int step, Byte presetByte, Byte dwellByte, Byte unitVariant);

}  // namespace halvex
