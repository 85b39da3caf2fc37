#include "sim/video/picture.h"

#include <algorithm>
#include <cmath>

namespace halvex::sim::video {

namespace {

std::uint8_t mixChannel(std::uint8_t from, std::uint8_t to, double amount) {
    return static_cast<std::uint8_t>(std::lround(from + (to - from) * amount));
}

// A box blur's running sum of pixels, channel by channel.
struct RunningSum {
    int r = 0;
    int g = 0;
    int b = 0;

    void add(Rgb pixel) {
        r += pixel.r;
        g += pixel.g;
        b += pixel.b;
    }
    // The window moves on a pixel.
    void slide(Rgb leaving, Rgb coming) {
        r += coming.r - leaving.r;
        g += coming.g - leaving.g;
        b += coming.b - leaving.b;
    }
    Rgb mean(int span) const {
        return {static_cast<std::uint8_t>(r / span), static_cast<std::uint8_t>(g / span),
                static_cast<std::uint8_t>(b / span)};
    }
};

// One pass of the blur along a row of `count` pixels; `line` is scratch
// space for the pixels as they were.
void blurLine(Rgb* first, int count, int radius, std::vector<Rgb>& line) {
    line.assign(first, first + count);
    const auto clamped = [&line, count](int i) -> const Rgb& {
        return line[static_cast<std::size_t>(std::clamp(i, 0, count - 1))];
    };
    RunningSum sum;
    for (int i = -radius; i <= radius; ++i) {
        sum.add(clamped(i));
    }
    const int span = 2 * radius + 1;
    for (int i = 0; i < count; ++i) {
        first[i] = sum.mean(span);
        sum.slide(clamped(i - radius), clamped(i + radius + 1));
    }
}

}  // namespace

Rgb mix(Rgb from, Rgb to, double amount) {
    return {mixChannel(from.r, to.r, amount), mixChannel(from.g, to.g, amount),
            mixChannel(from.b, to.b, amount)};
}

Picture::Picture(int width, int height, Rgb fill)
    : width_(std::max(width, 0)),
      height_(std::max(height, 0)),
      pixels_(static_cast<std::size_t>(width_) * static_cast<std::size_t>(height_), fill) {}

const std::uint8_t* Picture::bytes() const {
    return reinterpret_cast<const std::uint8_t*>(pixels_.data());
}

void Picture::set(int x, int y, Rgb colour) {
    if (contains(x, y)) {
        pixels_[index(x, y)] = colour;
    }
}

void Picture::fill(Rgb colour) {
    std::fill(pixels_.begin(), pixels_.end(), colour);
}

void Picture::fillRect(int x, int y, int width, int height, Rgb colour) {
    const int left = std::max(x, 0);
    const int right = std::min(x + width, width_);
    if (left >= right) {
        return;
    }
    for (int row = std::max(y, 0); row < std::min(y + height, height_); ++row) {
        Rgb* first = pixels_.data() + index(left, row);
        std::fill(first, first + (right - left), colour);
    }
}

void Picture::tintRect(int x, int y, int width, int height, Rgb colour, double amount) {
    for (int row = std::max(y, 0); row < std::min(y + height, height_); ++row) {
        for (int column = std::max(x, 0); column < std::min(x + width, width_); ++column) {
            Rgb& pixel = pixels_[index(column, row)];
            pixel = mix(pixel, colour, amount);
        }
    }
}

void Picture::resize(int width, int height) {
    if (width != width_ || height != height_) {
        *this = Picture(width, height);
    }
}

void boxBlur(Picture& picture, int radius) {
    const int width = picture.width();
    const int height = picture.height();
    if (radius <= 0 || width == 0 || height == 0) {
        return;
    }
    std::vector<Rgb> line;
    for (int y = 0; y < height; ++y) {
        blurLine(picture.row(y), width, radius, line);
    }
    // Down the columns a row at a time, with a running sum for every column:
    // the picture is read in the order it lies in memory.
    const std::vector<Rgb> before = picture.pixels();
    const auto rowBefore = [&before, width, height](int y) {
        return &before[static_cast<std::size_t>(std::clamp(y, 0, height - 1)) *
                       static_cast<std::size_t>(width)];
    };
    std::vector<RunningSum> sums(static_cast<std::size_t>(width));
    for (int y = -radius; y <= radius; ++y) {
        const Rgb* source = rowBefore(y);
        for (std::size_t x = 0; x < sums.size(); ++x) {
            sums[x].add(source[x]);
        }
    }
    const int span = 2 * radius + 1;
    for (int y = 0; y < height; ++y) {
        Rgb* target = picture.row(y);
        const Rgb* leaving = rowBefore(y - radius);
        const Rgb* coming = rowBefore(y + radius + 1);
        for (std::size_t x = 0; x < sums.size(); ++x) {
            target[x] = sums[x].mean(span);
            sums[x].slide(leaving[x], coming[x]);
        }
    }
}

}  // namespace halvex::sim::video
