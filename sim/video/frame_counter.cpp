#include "sim/video/frame_counter.h"

#include <algorithm>
#include <cstdlib>

namespace halvex::sim::video {

namespace {

constexpr int kGrey = 128;
constexpr Rgb kBandGrey{kGrey, kGrey, kGrey};
// How far from mid-grey a block must be to count as a bit, and how close the
// band must be to it to count as the band: compression moves the middle of a
// flat block only a little.
constexpr int kBitMargin = 40;
constexpr int kBandTolerance = 48;

// The mean brightness of the middle half of a square, each side `size`.
int meanLuma(const std::uint8_t* rgb, int stride, int left, int top, int size) {
    const int inset = size / 4;
    // Never empty: blocks are 4 pixels or more, margins 2.
    const int side = size - 2 * inset;
    long sum = 0;
    for (int y = top + inset; y < top + inset + side; ++y) {
        const std::uint8_t* pixel =
            rgb + static_cast<std::ptrdiff_t>(y) * stride + 3 * (left + inset);
        for (int x = 0; x < side; ++x, pixel += 3) {
            sum += (77 * pixel[0] + 150 * pixel[1] + 29 * pixel[2]) >> 8;
        }
    }
    return static_cast<int>(sum / (side * side));
}

}  // namespace

CounterLayout counterLayout(int pictureWidth) {
    const int block = std::max(4, pictureWidth / 60);
    const int margin = block / 2;
    return {block, kCounterBits * block + 2 * margin, block + 2 * margin};
}

void writeFrameCounter(Picture& picture, std::uint32_t frame) {
    const CounterLayout layout = counterLayout(picture.width());
    picture.fillRect(0, 0, layout.bandWidth, layout.bandHeight, kBandGrey);
    for (int bit = 0; bit < kCounterBits; ++bit) {
        const bool one = (frame >> (kCounterBits - 1 - bit)) & 1u;
        picture.fillRect(layout.blockX(bit), layout.blockY(), layout.block, layout.block,
                         one ? kWhite : kBlack);
    }
}

std::optional<std::uint32_t> readFrameCounter(const std::uint8_t* rgb, int width, int height,
                                              int stride) {
    const CounterLayout layout = counterLayout(width);
    if (rgb == nullptr || width < layout.bandWidth || height < layout.bandHeight ||
        stride < 3 * width) {
        return std::nullopt;
    }
    const int block = layout.block;
    const int margin = layout.blockY();
    // The band's grey where no bit is: its ends, beside the first and the
    // last block.
    for (const int left : {0, layout.bandWidth - margin}) {
        if (std::abs(meanLuma(rgb, stride, left, margin, margin) - kGrey) > kBandTolerance) {
            return std::nullopt;
        }
    }
    std::uint32_t frame = 0;
    for (int bit = 0; bit < kCounterBits; ++bit) {
        const int luma = meanLuma(rgb, stride, layout.blockX(bit), layout.blockY(), block);
        if (std::abs(luma - kGrey) < kBitMargin) {
            return std::nullopt;
        }
        frame = (frame << 1) | (luma > kGrey ? 1u : 0u);
    }
    return frame;
}

}  // namespace halvex::sim::video
