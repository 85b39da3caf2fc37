// Odd picture sizes and the focus blur. The kept pictures hold the rest of
// the drawing, landmarks in and out of view, and with it the camera model
// the console's click-to-centre inverts.

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "sim/video/camera_picture.h"

namespace halvex::sim::video {
namespace {

// A picture of no size is drawn into without harm; one of a single row or
// column still shows the view.
TEST(SceneInView, PicturesOfNoneOrOnePixelAcrossAreDrawnWithoutHarm) {
    for (const auto& [width, height] :
         {std::pair{0, 0}, {-3, 5}, {4, -1}, {1, 1}, {5, 1}, {1, 5}}) {
        SCOPED_TRACE(std::to_string(width) + " x " + std::to_string(height));
        Picture picture(width, height);
        drawCameraPicture(picture, 0.0, 30.0, {128, 128});
        ASSERT_EQ(picture.width(), std::max(width, 0));
        ASSERT_EQ(picture.height(), std::max(height, 0));
        EXPECT_EQ(std::any_of(picture.pixels().begin(), picture.pixels().end(),
                              [](Rgb pixel) { return pixel != Rgb{}; }),
                  width > 0 && height > 0);
    }
}

TEST(Focus, AFocusByteFarFromSharpBlursByAPixelMoreEveryTwelve) {
    const auto draw = [](int focus) {
        Picture picture(320, 240);
        drawCameraPicture(picture, 37.0, 3.0, {60, focus});  // the tower
        return picture;
    };
    const Picture sharp = draw(kSharpFocus);
    // Within eight of sharp focus the picture is sharp; from eight off, the
    // softest blur, one pixel round.
    for (const auto& [away, radius] :
         {std::pair{-7, 0}, {7, 0}, {8, 1}, {-23, 1}, {24, 2}, {-60, 5}}) {
        SCOPED_TRACE(away);
        Picture expected = sharp;
        if (radius > 0) {
            boxBlur(expected, radius);
        }
        const Picture seen = draw(kSharpFocus + away);
        EXPECT_TRUE(std::equal(seen.bytes(), seen.bytes() + seen.byteCount(), expected.bytes()));
    }
}

}  // namespace
}  // namespace halvex::sim::video
