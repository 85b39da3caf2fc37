#pragma once

// One of the unit's two video outputs, drawn from a plain copy of what it
// depends on: the route of the cameras onto the outputs, blanking, the
// cameras' power, the on-screen display and the frame counter.

#include <array>
#include <cstdint>
#include <string>

#include "protocol/frame.h"
#include "sim/video/camera_picture.h"
#include "sim/video/picture.h"

namespace halvex::sim::video {

inline constexpr int kOutputs = 2;
inline constexpr int kScreenLines = 16;  // lines of the on-screen display
inline constexpr int kSiteNameLength = 12;

struct CameraLens {
    Byte zoom = 0;
    Byte focus = kSharpFocus;
};

// What the outputs show at one moment, copied out of the unit.
struct VideoSnapshot {
    double pan = 0.0;  // degrees, as the position report gives them
    double tilt = 0.0;
    std::array<CameraLens, 2> lenses{};
    Byte videoMode = 0;  // the video configuration's mode byte
    Byte videoPower = 0;
    Byte angleDisplay = 0;
    Byte nameDisplay = 0;
    std::array<Byte, kSiteNameLength> siteName{};
};

struct VideoFormat {
    int width = 0;
    int height = 0;
    int rate = 0;  // frames a second

    bool operator==(const VideoFormat&) const = default;
};

// PAL, 768 x 576 at 25 frames a second, or NTSC, 640 x 480 at 30 (square
// pixels), as the mode's PAL bit says.
VideoFormat standardFormat(Byte videoMode);

// The rows [top, bottom) of a line of the on-screen display: the sixteen
// lines share the picture's height.
struct ScreenLine {
    int top = 0;
    int bottom = 0;
};
// `line` from 0 (the top) to kScreenLines - 1.
ScreenLine screenLine(int line, int pictureHeight);

// The angle display's text: "PAN +012.34 TILT -05.00" signed (pan folded
// into -180..+180), "PAN 012.34 TILT 355.00" unsigned (both 0..360).
std::string angleText(double pan, double tilt, bool signedAngles);

// Draws output `output` (0 or 1) of frame `frame`, the picture sized as the
// output's format says. A blanked output is black; a camera without power
// gives black, with the display still over it.
void drawOutput(Picture& picture, const VideoSnapshot& snapshot, int output, std::uint32_t frame);

}  // namespace halvex::sim::video
