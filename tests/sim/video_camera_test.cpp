// The camera model the console's click-to-centre inverts, the landmarks drawn
// where it puts them, and the focus blur. The kept pictures hold the rest of
// the drawing.

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>
#include <string>

#include "sim/video/camera_picture.h"
#include "sim/video/camera_view.h"
#include "sim/video/scene.h"

namespace halvex::sim::video {
namespace {

std::string describe(const CameraView& view) {
    return "pan " + std::to_string(view.pan) + " tilt " + std::to_string(view.tilt) + " fov " +
           std::to_string(view.fieldOfView) + " " + std::to_string(view.width);
}

const Landmark& landmarkNamed(std::string_view label) {
    return *std::find_if(std::begin(kLandmarks), std::end(kLandmarks),
                         [label](const Landmark& landmark) { return landmark.label == label; });
}

// Whether any pixel of the picture satisfies `test(x, y, pixel)`.
template <class Test>
bool anyPixel(const Picture& picture, Test test) {
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x) {
            if (test(x, y, picture.at(x, y))) {
                return true;
            }
        }
    }
    return false;
}

TEST(CameraModel, ZoomNarrowsTheFieldGeometricallyFromSixtyToThreeDegrees) {
    EXPECT_DOUBLE_EQ(fieldOfViewDegrees(0), 60.0);
    EXPECT_NEAR(fieldOfViewDegrees(255), 3.0, 1e-12);
    EXPECT_NEAR(fieldOfViewDegrees(51), 60.0 * std::pow(0.05, 0.2), 1e-9);
    EXPECT_NEAR(fieldOfViewDegrees(10) * fieldOfViewDegrees(20),
                fieldOfViewDegrees(1) * fieldOfViewDegrees(29), 1e-9);
}

TEST(CameraModel, ThePictureSpansTheFieldWithSquarePixelsAndPointOfInvertsDirectionAt) {
    for (const CameraView& view :
         {CameraView{0.0, 0.0, 60.0, 640, 480}, CameraView{-179.5, 80.0, 20.0, 1280, 720},
          CameraView{95.0, -89.0, fieldOfViewDegrees(128), 768, 576},
          CameraView{360.0 + 45.0, 5.0, 3.0, 320, 240}}) {
        SCOPED_TRACE(describe(view));
        const double middle = view.height / 2.0;
        EXPECT_NEAR(view.directionAt({0.0, middle}).azimuth, view.pan - view.fieldOfView / 2, 1e-9);
        EXPECT_NEAR(view.directionAt({1.0 * view.width, middle}).azimuth,
                    view.pan + view.fieldOfView / 2, 1e-9);
        EXPECT_NEAR(view.directionAt({view.width / 2.0, middle}).elevation, view.tilt, 1e-9);
        for (const double pixels : {1.0, 57.0, 200.0}) {
            const double across = view.directionAt({view.width / 2.0 + pixels, middle}).azimuth;
            const double up = view.directionAt({view.width / 2.0, middle - pixels}).elevation;
            EXPECT_NEAR(across - view.pan, up - view.tilt, 1e-9);
        }
        for (const PicturePoint point :
             {PicturePoint{0.5, 0.5}, PicturePoint{100.25, 17.0}, PicturePoint{-30.0, 500.0}}) {
            const auto back = view.pointOf(view.directionAt(point));
            ASSERT_TRUE(back.has_value()) << point.x;
            EXPECT_NEAR(back->x, point.x, 1e-6);
            EXPECT_NEAR(back->y, point.y, 1e-6);
        }
        // The tables hold each pixel centre's direction.
        const auto azimuths = view.columnAzimuths();
        const auto elevations = view.rowElevations();
        ASSERT_EQ(azimuths.size(), std::size_t(view.width));
        ASSERT_EQ(elevations.size(), std::size_t(view.height));
        EXPECT_DOUBLE_EQ(azimuths.back(), view.directionAt({view.width - 0.5, 0.0}).azimuth);
        EXPECT_DOUBLE_EQ(elevations.front(), view.directionAt({0.0, 0.5}).elevation);
    }
    // A direction a full turn away is the same direction; one behind is not
    // in the picture.
    const CameraView view{179.0, 0.0, 60.0, 640, 480};
    const auto across = view.pointOf({-179.0, 0.0});
    ASSERT_TRUE(across.has_value());
    EXPECT_GT(across->x, 320.0) << "-179 lies two degrees right of 179";
    EXPECT_FALSE(view.pointOf({0.0, 0.0}).has_value());
    EXPECT_FALSE(view.pointOf({179.0, 90.0}).has_value());
}

TEST(SceneInView, EachTargetIsDrawnWhereTheCameraModelPutsItAndNowhereOutOfView) {
    struct Aim {
        std::string_view landmark;
        double panOffset;  // the camera's pan minus the landmark's azimuth
        double tiltOffset;
        int zoom;
    };
    const Aim aims[] = {
        {"TOWER", 0.0, 0.0, 128},    {"TOWER", -9.0, 0.0, 40},  // right of centre
        {"MAST", 0.0, -8.0, 20},     {"MAST", 3.0, -1.5, 150},  // above
        {"HOUSE", 1.0, 1.0, 200},    {"TREE", 7.0, -4.0, 60},
        {"BALLOON", -4.0, -6.0, 90}, {"CHURCH", 0.3, 0.2, 255},  // the narrowest view
        {"HOUSE", -20.0, 10.0, 0},
    };
    for (const Aim& aim : aims) {
        const Landmark& landmark = landmarkNamed(aim.landmark);
        Picture picture(640, 480);
        const double pan = landmark.centre.azimuth + aim.panOffset;
        const double tilt = landmark.centre.elevation + aim.tiltOffset;
        drawCameraPicture(picture, pan, tilt, {aim.zoom, kSharpFocus});
        const CameraView view = cameraView(picture, pan, tilt, aim.zoom);
        SCOPED_TRACE(std::string(aim.landmark) + " " + describe(view));
        const auto centre = view.pointOf(landmark.centre);
        ASSERT_TRUE(centre.has_value());
        const int x = static_cast<int>(std::floor(centre->x));
        const int y = static_cast<int>(std::floor(centre->y));
        ASSERT_TRUE(picture.contains(x, y));
        EXPECT_EQ(picture.at(x, y), landmark.target);
        EXPECT_TRUE(aim.panOffset >= 0.0 || x > picture.width() / 2);
        EXPECT_TRUE(aim.tiltOffset >= 0.0 || y < picture.height() / 2);
        // The target's radius in pixels, from the focal length the zoom gives.
        const double radius =
            view.focalPixels() * std::tan(kTargetRadius * std::numbers::pi / 180.0);
        int inside = 0;
        EXPECT_FALSE(anyPixel(picture, [&](int column, int row, Rgb pixel) {
            inside += pixel == landmark.target;
            return pixel == landmark.target &&
                   std::hypot(column + 0.5 - centre->x, row + 0.5 - centre->y) > radius * 1.1 + 1.0;
        })) << "target colour away from the target";
        EXPECT_GT(inside, std::numbers::pi * radius * radius * 0.6)
            << "a target smaller than the zoom makes it";
    }
    for (const Landmark& landmark : kLandmarks) {
        // Behind the camera, then just beyond the edge of a narrow view.
        for (const double away : {180.0, 3.0}) {
            Picture picture(320, 240);
            drawCameraPicture(picture, landmark.centre.azimuth + away, landmark.centre.elevation,
                              {255, kSharpFocus});
            EXPECT_FALSE(
                anyPixel(picture, [&](int, int, Rgb pixel) { return pixel == landmark.target; }))
                << landmark.label << " " << away;
        }
    }
}

TEST(SceneInView, AwayFromMarksAndLandmarksThePictureIsTheLandscape) {
    // Narrow views that hold no mark: the sky, the hills, the fields.
    for (const double tilt : {5.0, 0.8, -3.0, -12.0}) {
        Picture picture(160, 120);
        const double pan = 245.5 - 720.0;
        drawCameraPicture(picture, pan, tilt, {255, kSharpFocus});
        const CameraView view = cameraView(picture, pan, tilt, 255);
        SCOPED_TRACE(describe(view));
        const auto horizon = view.pointOf({pan, 0.0});
        EXPECT_FALSE(anyPixel(picture, [&](int x, int y, Rgb pixel) {
            const bool onHorizon = horizon && std::abs(y + 0.5 - horizon->y) < 3.0;
            return !onHorizon && pixel != landscapeAt(view.directionAt({x + 0.5, y + 0.5}));
        }));
    }
}

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
        EXPECT_EQ(anyPixel(picture, [](int, int, Rgb pixel) { return pixel != Rgb{}; }),
                  width > 0 && height > 0);
    }
}

TEST(Focus, AFocusByteFarFromSharpBlursByAPixelMoreEveryTwelve) {
    const Landmark& tower = landmarkNamed("TOWER");
    const auto draw = [&tower](int focus) {
        Picture picture(320, 240);
        drawCameraPicture(picture, tower.centre.azimuth, tower.centre.elevation, {60, focus});
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

TEST(Focus, TheBoxBlurSpreadsAPixelEvenlyOverItsSquare) {
    for (const int radius : {1, 2, 5}) {
        SCOPED_TRACE(radius);
        Picture picture(21, 21);
        picture.set(10, 10, {255, 255, 255});
        boxBlur(picture, radius);
        const int expected = 255 / (2 * radius + 1) / (2 * radius + 1);
        EXPECT_FALSE(anyPixel(picture, [&](int x, int y, Rgb pixel) {
            const bool inSquare = std::abs(x - 10) <= radius && std::abs(y - 10) <= radius;
            return pixel.g != (inSquare ? expected : 0);
        }));
    }
    // Beyond an edge, the edge's pixel stands in for those it hides.
    for (const bool across : {true, false}) {
        Picture line(across ? 4 : 1, across ? 1 : 4);
        const auto at = [across](int i) { return across ? std::pair{i, 0} : std::pair{0, i}; };
        line.set(at(0).first, at(0).second, kWhite);
        line.set(at(3).first, at(3).second, kWhite);
        boxBlur(line, 1);
        for (const auto& [i, expected] : {std::pair{0, 170}, {1, 85}, {2, 85}, {3, 170}}) {
            EXPECT_EQ(line.at(at(i).first, at(i).second).g, expected) << i << " " << across;
        }
    }
    // A flat picture stays flat, to the edges.
    Picture flat(17, 9, {40, 80, 120});
    boxBlur(flat, 4);
    EXPECT_FALSE(anyPixel(flat, [](int, int, Rgb pixel) { return pixel != Rgb{40, 80, 120}; }));
}

TEST(Picture, RectanglesAreCutAtTheEdgesAndAnotherSizeStartsAfresh) {
    const Rgb halfway{128, 128, 128};
    Picture picture(4, 3);
    picture.fillRect(-2, -1, 3, 2, kWhite);
    picture.tintRect(-1, -1, 3, 3, kWhite, 0.5);
    picture.tintRect(3, 2, 5, 5, kWhite, 0.5);
    const std::pair<std::pair<int, int>, Rgb> expected[] = {
        {{0, 0}, kWhite}, {{1, 0}, halfway}, {{1, 1}, halfway}, {{2, 0}, kBlack},
        {{0, 2}, kBlack}, {{3, 2}, halfway}, {{2, 2}, kBlack}};
    for (const auto& [at, colour] : expected) {
        EXPECT_EQ(picture.at(at.first, at.second), colour) << at.first << "," << at.second;
    }
    picture.fill(kWhite);
    picture.resize(4, 3);
    EXPECT_EQ(picture.at(3, 2), kWhite) << "the same size keeps the picture";
    for (const auto& [width, height] : {std::pair{4, 5}, {6, 5}}) {
        picture.fill(kWhite);
        picture.resize(width, height);
        EXPECT_EQ(picture.width(), width);
        EXPECT_EQ(picture.height(), height);
        EXPECT_EQ(picture.at(width - 1, height - 1), kBlack);
    }
}

}  // namespace
}  // namespace halvex::sim::video
