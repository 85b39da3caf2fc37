#pragma once

// The unit's four lenses, in the order every message that carries all four
// keeps them (the jog's, a move's, a preset's and the position report's
// lens fields): zoom 1, focus 1, zoom 2, focus 2.

namespace halvex::vocab::lenses {

inline constexpr int kPerCamera = 2;

// A lens's position is one byte: zoom from its widest to its narrowest,
// focus from near to far.
inline constexpr int kLowest = 0;
inline constexpr int kHighest = 255;

// Camera 0 or 1's lenses, as indexes into those fields.
constexpr int zoomOf(int camera) {
    return camera * kPerCamera;
}
constexpr int focusOf(int camera) {
    return zoomOf(camera) + 1;
}

// The camera a lens index belongs to, and whether it is that camera's zoom.
constexpr int cameraOf(int lens) {
    return lens / kPerCamera;
}
constexpr bool isZoom(int lens) {
    return lens == zoomOf(cameraOf(lens));
}

}  // namespace halvex::vocab::lenses
