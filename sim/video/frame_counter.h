#pragma once

// The frame counter in the top-left corner of every output: a program that
// receives the video reads from it which frame it has, to measure the delay
// and the frames lost on the way.
//
// Layout, in blocks of `block` = max(4, width / 60) pixels square: a mid-grey
// band (128, 128, 128) from the top-left corner, 25 blocks wide and 2 high;
// inside it, half a block in from its edges, a row of 24 blocks, the frame
// number's bits, most significant first: white (255) for 1, black (0) for 0.

#include <cstdint>
#include <optional>

#include "sim/video/picture.h"

namespace halvex::sim::video {

inline constexpr int kCounterBits = 24;
inline constexpr std::uint32_t kCounterMask = (1u << kCounterBits) - 1;

struct CounterLayout {
    int block = 0;  // side of one block, in pixels
    int bandWidth = 0;
    int bandHeight = 0;
    // The top-left corner of bit i's block (bit 0 the most significant).
    int blockX(int bit) const { return block / 2 + block * bit; }
    int blockY() const { return block / 2; }
};

CounterLayout counterLayout(int pictureWidth);

// Draws the low 24 bits of `frame`.
void writeFrameCounter(Picture& picture, std::uint32_t frame);

// Reads the counter back from an RGB picture (three bytes a pixel, rows
// `stride` bytes apart), as it arrives after compression: each block's
// middle is averaged and compared with mid-grey. Nothing when the grey band
// is not there or a block is neither clearly light nor clearly dark.
std::optional<std::uint32_t> readFrameCounter(const std::uint8_t* rgb, int width, int height,
                                              int stride);

}  // namespace halvex::sim::video
