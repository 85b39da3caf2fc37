#pragma once

// GStreamer's headers for the live video code, and its one-time start.
// GLib names a struct member "signals", which Qt defines as a keyword: the
// macro is put aside while GLib's headers are read.
#pragma push_macro("signals")
#undef signals
#include <gst/app/gstappsink.h>
#include <gst/gst.h>
#include <gst/video/video.h>
#pragma pop_macro("signals")

namespace halvex {

// Initialises GStreamer the first time it is called in the process; later
// calls do nothing. Safe from any thread.
void ensureGStreamer();

}  // namespace halvex
