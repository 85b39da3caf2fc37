#pragma once

// What one camera sees: the scene through the camera model at the platform's
// angles, with the scene's marks and labels, blurred as far as the lens is
// out of focus.

#include "sim/video/camera_view.h"
#include "sim/video/picture.h"

namespace halvex::sim::video {

// The focus byte at which the scene is sharp.
inline constexpr int kSharpFocus = 128;

struct LensSetting {
    int zoom = 0;
    int focus = kSharpFocus;
};

// Blur radius in pixels: none within 8 of sharp focus, then a pixel more for
// every 12 further away.
int blurRadius(int focus);

// The view of a picture of this size at these angles (degrees) and zoom.
CameraView cameraView(const Picture& picture, double pan, double tilt, int zoom);

// Fills the whole picture.
void drawCameraPicture(Picture& picture, double pan, double tilt, LensSetting lens);

}  // namespace halvex::sim::video
