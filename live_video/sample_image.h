#pragma once

#include <QImage>

typedef struct _GstSample GstSample;

namespace halvex {

// A copy of a decoded BGRx sample as a QImage (Format_RGB32), whatever the
// row stride the decoder chose and whatever size the caps of this very
// sample give. Null when the sample is not a BGRx picture.
QImage imageFromSample(GstSample* sample);

}  // namespace halvex
