// The frame counter a receiving program reads back, and the display's font.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <optional>
#include <random>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "sim/video/bitmap_font.h"
#include "sim/video/camera_picture.h"
#include "sim/video/frame_counter.h"

namespace halvex::sim::video {
namespace {

// A picture of the scene with the counter over it, as an output has.
Picture counted(int width, int height, std::uint32_t frame) {
    Picture picture(width, height);
    drawCameraPicture(picture, 37.0, 3.0, {90, kSharpFocus});
    writeFrameCounter(picture, frame);
    return picture;
}

std::optional<std::uint32_t> read(const Picture& picture) {
    return readFrameCounter(picture.bytes(), picture.width(), picture.height(), picture.stride());
}

TEST(FrameCounter, ReadsBackWhatWasWrittenAtEverySize) {
    const std::uint32_t frames[] = {0, 1, 2, 0x800000, 0xAAAAAA, 0x555555, 123456, kCounterMask};
    for (const auto& [width, height] :
         {std::pair{1280, 720}, std::pair{768, 576}, std::pair{640, 480}, std::pair{240, 160}}) {
        for (const std::uint32_t frame : frames) {
            SCOPED_TRACE(std::to_string(width) + "x" + std::to_string(height) + " frame " +
                         std::to_string(frame));
            EXPECT_EQ(read(counted(width, height, frame)), frame);
        }
    }
    // A picture no bigger than the counter's band.
    const CounterLayout smallest = counterLayout(0);
    EXPECT_EQ(read(counted(smallest.bandWidth, smallest.bandHeight, 123456)), 123456u);
    // Past 24 bits the counter starts again from 0.
    EXPECT_EQ(read(counted(640, 480, kCounterMask + 6)), 5u);
}

TEST(FrameCounter, SurvivesNoiseAndRowsPaddedInMemory) {
    std::mt19937 random(7);
    std::uniform_int_distribution<int> noise(-30, 30);
    for (const std::uint32_t frame : {0u, 0x0F0F0Fu, kCounterMask, 987654u}) {
        SCOPED_TRACE(frame);
        const Picture clean = counted(640, 480, frame);
        // Each row 640 * 3 bytes and 16 of padding, every byte moved a little.
        const int stride = clean.stride() + 16;
        std::vector<std::uint8_t> noisy(static_cast<std::size_t>(stride) * 480, 0);
        for (int y = 0; y < 480; ++y) {
            for (int i = 0; i < clean.stride(); ++i) {
                const int value = clean.bytes()[y * clean.stride() + i] + noise(random);
                noisy[static_cast<std::size_t>(y * stride + i)] =
                    static_cast<std::uint8_t>(std::clamp(value, 0, 255));
            }
        }
        EXPECT_EQ(readFrameCounter(noisy.data(), 640, 480, stride), frame);
    }
}

TEST(FrameCounter, NothingIsReadWhereThereIsNoCounter) {
    Picture scene(640, 480);
    drawCameraPicture(scene, 37.0, 3.0, {90, kSharpFocus});
    EXPECT_FALSE(read(scene).has_value());
    EXPECT_FALSE(read(Picture(640, 480)).has_value()) << "black";
    EXPECT_FALSE(read(Picture(640, 480, {128, 128, 128})).has_value()) << "grey, no bits";
    // One block half way between black and white cannot be told.
    Picture unclear = counted(640, 480, 0);
    const CounterLayout layout = counterLayout(640);
    unclear.fillRect(layout.blockX(5), layout.blockY(), layout.block, layout.block,
                     {128, 128, 128});
    EXPECT_FALSE(read(unclear).has_value());
    // Too small for the band, or nothing to read.
    EXPECT_FALSE(readFrameCounter(scene.bytes(), 640, 2, scene.stride()).has_value());
    EXPECT_FALSE(readFrameCounter(nullptr, 640, 480, 1920).has_value());
}

TEST(FrameCounter, TheBandIsGreyAndTheBitsMostSignificantFirst) {
    const Picture picture = counted(600, 400, 0x800001);
    const CounterLayout layout = counterLayout(600);
    EXPECT_EQ(layout.block, 10);
    const auto middleOf = [&](int bit) {
        return picture.at(layout.blockX(bit) + layout.block / 2,
                          layout.blockY() + layout.block / 2);
    };
    EXPECT_EQ(middleOf(0), kWhite);
    EXPECT_EQ(middleOf(1), kBlack);
    EXPECT_EQ(middleOf(kCounterBits - 1), kWhite);
    EXPECT_EQ(picture.at(1, 1), (Rgb{128, 128, 128}));
    EXPECT_EQ(picture.at(layout.bandWidth - 1, layout.bandHeight - 1), (Rgb{128, 128, 128}));
    EXPECT_NE(picture.at(layout.bandWidth, layout.bandHeight), (Rgb{128, 128, 128}));
}

TEST(BitmapFont, EveryDigitAndLetterHasAGlyphOfItsOwn) {
    const std::string characters = "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZ+-.:/";
    std::set<std::vector<bool>> glyphs;
    for (const char character : characters) {
        SCOPED_TRACE(std::string(1, character));
        std::vector<bool> dots;
        for (int y = 0; y < kGlyphHeight; ++y) {
            for (int x = 0; x < kGlyphWidth; ++x) {
                dots.push_back(glyphDot(character, x, y));
            }
        }
        EXPECT_TRUE(std::count(dots.begin(), dots.end(), true) > 0);
        EXPECT_TRUE(glyphs.insert(dots).second) << "drawn like another character";
    }
    for (int y = 0; y < kGlyphHeight; ++y) {
        for (int x = 0; x < kGlyphWidth; ++x) {
            EXPECT_EQ(glyphDot('g', x, y), glyphDot('G', x, y)) << "lower case as capitals";
            EXPECT_FALSE(glyphDot(' ', x, y));
            EXPECT_FALSE(glyphDot('\x7F', x, y)) << "no glyph: a space";
        }
    }
    // Outside its cell a glyph has no dots.
    for (const auto& [x, y] : {std::pair{-1, 0}, {0, -1}, {kGlyphWidth, 0}, {0, kGlyphHeight}}) {
        EXPECT_FALSE(glyphDot('8', x, y)) << x << "," << y;
    }
}

TEST(BitmapFont, TextIsDrawnAtItsScaleAndCutAtTheEdges) {
    for (const int scale : {1, 3}) {
        SCOPED_TRACE(scale);
        Picture picture(100, 40);
        drawText(picture, 2, 3, "I", TextStyle{scale, kWhite, false});
        // "I": its top bar spans columns 1..3 of the glyph, on row 0.
        EXPECT_EQ(picture.at(2 + 1 * scale, 3), kWhite);
        EXPECT_EQ(picture.at(2 + 4 * scale - 1, 3 + scale - 1), kWhite);
        EXPECT_EQ(picture.at(2 + 4 * scale, 3), kBlack);
        EXPECT_EQ(picture.at(2, 3), kBlack);
        EXPECT_EQ(textWidth("ABC", scale), 3 * kCellWidth * scale);
    }
    // Partly or wholly outside the picture: what falls outside is left out.
    Picture small(8, 8);
    drawText(small, -20, -3, "WIDE TEXT", TextStyle{2});
    drawText(small, 5, 6, "XY", TextStyle{4});
    drawText(small, 400, 400, "Z", TextStyle{1});
    EXPECT_EQ(small.at(5, 6), kWhite) << "the top-left dot of the X";
    EXPECT_EQ(small.at(7, 7), kWhite);
}

// A site name is whatever bytes the unit keeps: those the font has no
// glyph for leave a gap.
TEST(BitmapFont, BytesOutsideTheFontAreLeftBlank) {
    Picture picture(80, 20);
    drawText(picture, 0, 0, "\x01\x7f\x80\xc3\xa9\xff", TextStyle{2});
    EXPECT_TRUE(std::all_of(picture.pixels().begin(), picture.pixels().end(),
                            [](Rgb pixel) { return pixel == kBlack; }));
}

}  // namespace
}  // namespace halvex::sim::video
