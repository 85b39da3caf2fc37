#pragma once

#include <QString>

#include "protocol/frame.h"

namespace halvex {

// The line of the tour step a step reply carries, in the tour list:
//   " 3   Pre  5   10 Secs  Y       1"
// step, preset and dwell right-aligned, then the video-blank mark ("Y" or
// "N", left-aligned in two characters) and, on a controller with the second
// camera (type 0), the camera number.
QString tourStepLine(const ByteTable& reply, Byte unitVariant);

}  // namespace halvex
