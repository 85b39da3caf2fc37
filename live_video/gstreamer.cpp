#include "live_video/gstreamer.h"

#include <mutex>

namespace halvex {

void ensureGStreamer() {
    static std::once_flag once;
    std::call_once(once, [] { gst_init(nullptr, nullptr); });
}

}  // namespace halvex
