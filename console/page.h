#pragma once

namespace halvex {

// The pages of SSTab1, in their order.
enum class Page { PanTilt, Presets, Offsets, Tours, Camera, Video, Setup, Factory };

constexpr int kPageCount = 8;

constexpr int pageIndex(Page page) {
    return static_cast<int>(page);
}

}  // namespace halvex
