#pragma once

// The camera messages: the cameras' serial lines, the lenses' setup, the
// time-outs of a camera's answer and a string passed through to a camera.
// Each get/set command is answered with the settings it leaves.

#include "protocol/vocabulary_words.h"

namespace halvex::vocab {

// One camera's line in one byte of message M.
template <class M, int At>
struct CameraLine {
    static constexpr Field<M> kBaud{At, 1, 0x07};
    static constexpr Field<M> kFormat{At, 1, 0x18};
    static constexpr Field<M> kLevel{At, 1, 0x20};
    static constexpr Field<M> kStopBits{At, 1, 0x40};
    // Unused by the unit.
    static constexpr Field<M> kSpare{At, 1, 0x80};
};

struct CameraLines : Message<0x60, 3> {};
namespace camera_lines {
using Camera1 = CameraLine<CameraLines, 1>;
using Camera2 = CameraLine<CameraLines, 2>;
inline constexpr Field<CameraLines> kCamera1Byte{1};
inline constexpr Field<CameraLines> kCamera2Byte{2};
// A line's four settings together, the unused top bit left out.
inline constexpr Field<CameraLines> kCamera1Line{1, 1, 0x7F};
inline constexpr Field<CameraLines> kCamera2Line{2, 1, 0x7F};
}  // namespace camera_lines

// One lens's bits and its lowest zoom and focus from byte At of M.
template <class M, int At>
struct LensSetup {
    static constexpr Field<M> kFlags{At, 1, 0x7F};
    static constexpr Bit<M> kFocusInvert{At, 1};
    static constexpr Bit<M> kFocusReverse{At, 2};
    static constexpr Bit<M> kFocusEnable{At, 3};
    static constexpr Bit<M> kZoomInvert{At, 4};
    static constexpr Bit<M> kZoomReverse{At, 5};
    static constexpr Bit<M> kZoomEnable{At, 6};
    // Unused by the unit.
    static constexpr Bit<M> kSpare{At, 0};
    static constexpr Field<M> kZoomMinimum{At + 1};
    static constexpr Field<M> kFocusMinimum{At + 2};
    // The flags byte whole, as the unit keeps it.
    static constexpr Field<M> kFlagsByte{At};
};

struct LensConfiguration : Message<0x61, 7> {};
namespace lens_configuration {
using Lens1 = LensSetup<LensConfiguration, 1>;
using Lens2 = LensSetup<LensConfiguration, 4>;
}  // namespace lens_configuration

// Byte 1: how many bytes follow (up to 127) and which camera they go to.
struct CameraTransmit : Message<0x62, 2 + 127, 2> {};
namespace camera_transmit {
inline constexpr Field<CameraTransmit> kCount{1, 1, 0x7F};
inline constexpr Field<CameraTransmit> kCamera{1, 1, 0x80};
inline constexpr int kData = 2;
inline constexpr int kMostData = 127;
}  // namespace camera_transmit
struct CameraTransmitDone : Message<0x62, 1> {};

struct CameraTimeouts : Message<0x65, 3> {};
namespace camera_timeouts {
inline constexpr Field<CameraTimeouts> kCamera1{1};
inline constexpr Field<CameraTimeouts> kCamera2{2};
}  // namespace camera_timeouts

}  // namespace halvex::vocab
