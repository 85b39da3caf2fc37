#pragma once

// The preset messages: reading, storing and clearing the unit's presets.
// Every one but the clearing is answered by a preset record.

#include "protocol/vocabulary_words.h"

namespace halvex::vocab {

struct PresetRequest : Message<0x40, 2> {};
struct StorePreset : Message<0x41, 8> {};
struct StoreCurrentPosition : Message<0x42, 2> {};
struct AddLensPositions : Message<0x43, 2> {};
struct ClearAllPresets : Message<0x94, 1> {};

namespace preset_request {
inline constexpr Field<PresetRequest> kPreset{1};
}
namespace store_preset {
inline constexpr Field<StorePreset> kPreset{1};
inline constexpr auto kPan = angleAt<StorePreset>(2);
inline constexpr auto kTilt = angleAt<StorePreset>(5);
}  // namespace store_preset
namespace store_current_position {
inline constexpr Field<StoreCurrentPosition> kPreset{1};
}
namespace add_lens_positions {
inline constexpr Field<AddLensPositions> kPreset{1};
}

// The answer to the first four, under their codes.
struct PresetRecord : Message<0x40, 12> {};
namespace preset_record {
using F = Field<PresetRecord>;
inline constexpr F kPreset{1};
inline constexpr Byte kNoPreset = 255;
inline constexpr auto kPan = angleAt<PresetRecord>(2);
inline constexpr auto kTilt = angleAt<PresetRecord>(5);
// Zoom 1, focus 1, zoom 2, focus 2.
inline constexpr std::array<F, 4> kLens{F{8}, F{9}, F{10}, F{11}};
}  // namespace preset_record

}  // namespace halvex::vocab
