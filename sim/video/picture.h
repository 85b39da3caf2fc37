#pragma once

// An RGB picture in memory, three bytes a pixel, rows one after the other:
// what the outputs are drawn into before they are encoded.

#include <cstdint>
#include <vector>

namespace halvex::sim::video {

struct Rgb {
    std::uint8_t r = 0;
    std::uint8_t g = 0;
    std::uint8_t b = 0;

    bool operator==(const Rgb&) const = default;
};
static_assert(sizeof(Rgb) == 3, "pixels are packed as the encoder reads them");

inline constexpr Rgb kBlack{0, 0, 0};
inline constexpr Rgb kWhite{255, 255, 255};

// The colour a fraction `amount` (0..1) of the way from `from` to `to`.
Rgb mix(Rgb from, Rgb to, double amount);

class Picture {
  public:
    Picture() = default;
    Picture(int width, int height, Rgb fill = kBlack);

    int width() const { return width_; }
    int height() const { return height_; }
    int stride() const { return width_ * 3; }
    const std::uint8_t* bytes() const;
    std::size_t byteCount() const { return pixels_.size() * sizeof(Rgb); }

    Rgb at(int x, int y) const { return pixels_[index(x, y)]; }
    // Every pixel, row after row.
    const std::vector<Rgb>& pixels() const { return pixels_; }
    Rgb* row(int y) { return &pixels_[index(0, y)]; }
    const Rgb* row(int y) const { return &pixels_[index(0, y)]; }
    bool contains(int x, int y) const { return x >= 0 && y >= 0 && x < width_ && y < height_; }

    // Each of these leaves what lies outside the picture alone.
    void set(int x, int y, Rgb colour);
    void fill(Rgb colour);
    void fillRect(int x, int y, int width, int height, Rgb colour);
    // Mixes `colour` into a rectangle by `amount`, as a half-seen line.
    void tintRect(int x, int y, int width, int height, Rgb colour, double amount);

    // Same size, or made so and filled with black.
    void resize(int width, int height);

  private:
    std::size_t index(int x, int y) const {
        return static_cast<std::size_t>(y) * static_cast<std::size_t>(width_) +
               static_cast<std::size_t>(x);
    }

    int width_ = 0;
    int height_ = 0;
    std::vector<Rgb> pixels_;
};

// Spreads every pixel over a square of 2 * radius + 1 pixels, one pass along
// the rows and one down the columns, each a running sum: the cost does not
// grow with the radius. The edges repeat their last pixel.
void boxBlur(Picture& picture, int radius);

}  // namespace halvex::sim::video
