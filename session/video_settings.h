#pragma once

#include <array>

#include "protocol/vocabulary_video.h"

namespace halvex {

// What the current units put on their two video outputs.
struct VideoSettings {
    // Which input each output shows, and which of them carries the on-screen
    // display: the Video page lists the eight routes in this order.
    int route = 0;
    bool blankOutput1 = false;
    bool blankOutput2 = false;
    bool pal = false;  // NTSC when clear
    std::array<bool, 2> cameraPower{};

    bool operator==(const VideoSettings&) const = default;
};
inline constexpr int kVideoRoutes = 8;

// The cameras and the display that a route puts on the outputs; a route out
// of range reads as the first.
inline const vocab::VideoRoute& routeOf(int route) {
    return route >= 0 && route < kVideoRoutes ? vocab::kVideoRoutes[static_cast<std::size_t>(route)]
                                              : vocab::kVideoRoutes[0];
}

// The cameras' aux outputs: camera 1's aux 1 and 2, then camera 2's.
using AuxOutputStates = std::array<bool, 4>;

// The older units' video selection, named as the Legacy Video frame's
// options are. Each option sets one of the unit's two selection bits, or
// neither; a unit may report both, which the frame shows as Undefined and
// which goes back to the unit as it came.
enum class LegacyVideoSelection { Undefined, VideoSelect, BlankVideo, BothBits };

// The older units' one video byte: the selection and the cameras' power.
struct LegacyVideoSettings {
    LegacyVideoSelection selection = LegacyVideoSelection::BlankVideo;
    std::array<bool, 2> cameraPower{};

    bool operator==(const LegacyVideoSettings&) const = default;
};

// The older units' video mode: their on-screen display and the standard.
struct LegacyVideoMode {
    bool displayOn = false;
    bool pal = false;  // NTSC when clear
};

// One of the on-screen displays (the angles, the site name): whether the
// unit shows it and on which screen line; the angles may show their sign.
struct OsdSetting {
    bool on = false;
    bool signedAngles = false;
    int line = 0;  // 0 to 15; the Video page offers the first 12

    bool operator==(const OsdSetting&) const = default;
};
inline constexpr int kOsdLines = 16;

}  // namespace halvex
