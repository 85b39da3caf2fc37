#pragma once

#include <QString>

#include "protocol/frame.h"
#include "session/tour_table.h"

namespace halvex {

// A tour step's line in the tour list:
//   " 3   Pre  5   10 Secs  Y       1"
// step, preset and dwell right-aligned, then the video-blank mark ("Y" or
// "N", left-aligned in two characters) and, on a controller with the second
// camera (type 0), the camera number.
QString tourStepLine(const TourStep& step, Byte unitVariant);

}  // namespace halvex
