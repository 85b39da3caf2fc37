#pragma once

// The video messages: the routing of the cameras onto the two outputs, the
// aux outputs and the on-screen display.

#include <array>

#include "protocol/vocabulary_words.h"

namespace halvex::vocab {

// The older one-byte video selection and the cameras' power.
struct LegacyVideo : Message<0x63, 2> {};
namespace legacy_video {
inline constexpr Field<LegacyVideo> kSelection{1, 1, 0x03};
inline constexpr Field<LegacyVideo> kPower{1, 1, 0xFC};
inline constexpr Bit<LegacyVideo> kCamera1Power{1, 2};
inline constexpr Bit<LegacyVideo> kCamera2Power{1, 3};
inline constexpr Field<LegacyVideo> kSettingsByte{1};
// The selection's two bits, as the older page's options set them one each.
inline constexpr Bit<LegacyVideo> kSelectionLow{1, 0};
inline constexpr Bit<LegacyVideo> kSelectionHigh{1, 1};
}  // namespace legacy_video

// Byte 1: the route and the mode bits; byte 2 the cameras' power. A message
// of two bytes is the older mode setting, with the display bit.
struct VideoConfiguration : Message<0x64, 3, 2> {};
namespace video_configuration {
using F = Field<VideoConfiguration>;
using B = Bit<VideoConfiguration>;
inline constexpr F kModeByte{1};
inline constexpr F kRoute{1, 1, 0x07};
inline constexpr F kMode{1, 1, 0x78};
inline constexpr B kLegacyDisplayOn{1, 0};
inline constexpr B kPal{1, 3};
inline constexpr B kBlankOutput2{1, 4};
inline constexpr B kBlankOutput1{1, 5};
inline constexpr B kStore{1, 6};
// The route and the mode bits but the store bit.
inline constexpr F kSettingBits{1, 1, 0x3F};
inline constexpr F kPower{2};
inline constexpr B kCamera1Power{2, 2};
inline constexpr B kCamera2Power{2, 3};
}  // namespace video_configuration

// What each value of the route field puts on the two outputs: the camera
// (0 or 1) that each output shows, and the output (0 or 1) that carries the
// on-screen display, or -1 when neither does. Routes 2 and 4 put the same
// on the outputs.
struct VideoRoute {
    std::array<int, 2> camera;
    int displayOutput;
};
inline constexpr std::array<VideoRoute, 8> kVideoRoutes{{
    {{0, 0}, -1},
    {{0, 0}, 0},
    {{1, 0}, -1},
    {{1, 0}, 0},
    {{1, 0}, -1},
    {{1, 0}, 1},
    {{1, 1}, -1},
    {{1, 1}, 1},
}};

struct AuxOutputs : Message<0x66, 2> {};
namespace aux_outputs {
using B = Bit<AuxOutputs>;
inline constexpr Field<AuxOutputs> kOutputs{1};
inline constexpr Field<AuxOutputs> kOutputBits{1, 1, 0x0F};
// Camera 1 aux 1, camera 1 aux 2, camera 2 aux 1, camera 2 aux 2.
inline constexpr std::array<B, 4> kOutput{B{1, 0}, B{1, 1}, B{1, 2}, B{1, 3}};
}  // namespace aux_outputs

// The angle and name displays share a layout: the screen line and the bits.
template <class M>
struct DisplaySetting {
    static constexpr Field<M> kSetting{1};
    static constexpr Field<M> kLine{1, 1, 0x0F};
    static constexpr Field<M> kBits{1, 1, 0x70};
    static constexpr Bit<M> kOn{1, 4};
    static constexpr Bit<M> kSigned{1, 5};
    static constexpr Bit<M> kStore{1, 6};
    // The line and the bits but the store bit.
    static constexpr Field<M> kSettingBits{1, 1, 0x3F};
};

struct AngleDisplay : Message<0x70, 2> {};
using angle_display = DisplaySetting<AngleDisplay>;
struct NameDisplay : Message<0x71, 2> {};
using name_display = DisplaySetting<NameDisplay>;

struct SiteName : Message<0x75, 13> {};
namespace site_name {
inline constexpr int kText = 1;
inline constexpr int kTextLength = 12;
}  // namespace site_name
struct SiteNameStored : Message<0x75, 1> {};

}  // namespace halvex::vocab
