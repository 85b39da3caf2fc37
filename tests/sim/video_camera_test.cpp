// The camera model the console's click-to-centre inverts, the landmarks drawn
// where it puts them, and the focus blur.

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>
#include <stdexcept>
#include <string>

#include "sim/video/camera_picture.h"
#include "sim/video/camera_view.h"
#include "sim/video/scene.h"

namespace halvex::sim::video {
namespace {

std::string describe(const CameraView& view) {
    return "pan " + std::to_string(view.pan) + " tilt " + std::to_string(view.tilt) + " fov " +
           std::to_string(view.fieldOfView) + " " + std::to_string(view.width) + "x" +
           std::to_string(view.height);
}

const Landmark& landmarkNamed(std::string_view label) {
    for (const Landmark& landmark : kLandmarks) {
        if (landmark.label == label) {
            return landmark;
        }
    }
    throw std::invalid_argument(std::string(label));
}

TEST(CameraModel, ZoomNarrowsTheFieldGeometricallyFromSixtyToThreeDegrees) {
    EXPECT_DOUBLE_EQ(fieldOfViewDegrees(0), 60.0);
    EXPECT_NEAR(fieldOfViewDegrees(255), 3.0, 1e-12);
    // Geometric: each step of the byte narrows the view by the same factor.
    for (const auto& [a, b, c, d] :
         {std::array{0, 255, 100, 155}, std::array{10, 20, 1, 29}, std::array{128, 128, 1, 255}}) {
        SCOPED_TRACE(std::to_string(a) + "+" + std::to_string(b));
        EXPECT_NEAR(fieldOfViewDegrees(a) * fieldOfViewDegrees(b),
                    fieldOfViewDegrees(c) * fieldOfViewDegrees(d), 1e-9);
    }
    EXPECT_NEAR(fieldOfViewDegrees(51), 60.0 * std::pow(0.05, 0.2), 1e-9);
}

TEST(CameraModel, ThePictureSpansTheFieldOfViewWithSquarePixels) {
    for (const CameraView& view :
         {CameraView{0.0, 0.0, 60.0, 640, 480}, CameraView{-170.0, 12.5, 3.0, 1280, 720},
          CameraView{95.0, -40.0, fieldOfViewDegrees(128), 768, 576}}) {
        SCOPED_TRACE(describe(view));
        const double middle = view.height / 2.0;
        EXPECT_NEAR(view.directionAt({0.0, middle}).azimuth, view.pan - view.fieldOfView / 2, 1e-9);
        EXPECT_NEAR(view.directionAt({1.0 * view.width, middle}).azimuth,
                    view.pan + view.fieldOfView / 2, 1e-9);
        EXPECT_NEAR(view.directionAt({view.width / 2.0, middle}).elevation, view.tilt, 1e-9);
        // The same number of pixels turns as far across as up.
        for (const double pixels : {1.0, 57.0, 200.0}) {
            const double across = view.directionAt({view.width / 2.0 + pixels, middle}).azimuth;
            const double up = view.directionAt({view.width / 2.0, middle - pixels}).elevation;
            EXPECT_NEAR(across - view.pan, up - view.tilt, 1e-9);
        }
    }
}

TEST(CameraModel, PointOfInvertsDirectionAtAcrossTheTurn) {
    for (const CameraView& view :
         {CameraView{179.0, 0.0, 60.0, 640, 480}, CameraView{-179.5, 80.0, 20.0, 1280, 720},
          CameraView{0.0, -89.0, 3.0, 320, 240}, CameraView{360.0 + 45.0, 5.0, 60.0, 768, 576}}) {
        for (const PicturePoint point : {PicturePoint{0.5, 0.5}, PicturePoint{100.25, 17.0},
                                         PicturePoint{319.5, 239.5}, PicturePoint{-30.0, 500.0}}) {
            SCOPED_TRACE(describe(view) + " at " + std::to_string(point.x) + "," +
                         std::to_string(point.y));
            const auto back = view.pointOf(view.directionAt(point));
            ASSERT_TRUE(back.has_value());
            EXPECT_NEAR(back->x, point.x, 1e-6);
            EXPECT_NEAR(back->y, point.y, 1e-6);
        }
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

TEST(CameraModel, TheTablesHoldEachPixelCentresDirection) {
    const CameraView view{-20.0, 7.0, 33.0, 64, 48};
    const auto azimuths = view.columnAzimuths();
    const auto elevations = view.rowElevations();
    ASSERT_EQ(azimuths.size(), 64u);
    ASSERT_EQ(elevations.size(), 48u);
    for (int x : {0, 31, 32, 63}) {
        EXPECT_DOUBLE_EQ(azimuths[static_cast<std::size_t>(x)],
                         view.directionAt({x + 0.5, 0.0}).azimuth);
    }
    for (int y : {0, 23, 24, 47}) {
        EXPECT_DOUBLE_EQ(elevations[static_cast<std::size_t>(y)],
                         view.directionAt({0.0, y + 0.5}).elevation);
    }
    EXPECT_LT(azimuths[31], view.pan);
    EXPECT_GT(azimuths[32], view.pan);
    EXPECT_GT(elevations[23], view.tilt) << "row 0 is the top";
}

// Where a camera aimed at pan, tilt with zoom z sees each landmark's target,
// with the target's colour at the predicted pixel and nowhere else.
struct Aim {
    std::string_view landmark;
    double panOffset;  // the camera's pan minus the landmark's azimuth
    double tiltOffset;
    int zoom;
};

TEST(SceneInView, EachTargetIsDrawnWhereTheCameraModelPutsIt) {
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
        if (aim.panOffset < 0.0) {
            EXPECT_GT(x, picture.width() / 2);
        }
        if (aim.tiltOffset < 0.0) {
            EXPECT_LT(y, picture.height() / 2);
        }

        // The target's radius in pixels, from the focal length the zoom gives.
        const double radius =
            view.focalPixels() * std::tan(kTargetRadius * std::numbers::pi / 180.0);
        int inside = 0;
        double farthest = 0.0;
        for (int row = 0; row < picture.height(); ++row) {
            for (int column = 0; column < picture.width(); ++column) {
                if (picture.at(column, row) == landmark.target) {
                    ++inside;
                    farthest = std::max(
                        farthest, std::hypot(column + 0.5 - centre->x, row + 0.5 - centre->y));
                }
            }
        }
        EXPECT_LE(farthest, radius * 1.1 + 1.0) << "target colour away from the target";
        EXPECT_GT(inside, std::numbers::pi * radius * radius * 0.6)
            << "a target smaller than the zoom makes it";
    }
}

TEST(SceneInView, ALandmarkOutOfViewLeavesNoTrace) {
    for (const Landmark& landmark : kLandmarks) {
        SCOPED_TRACE(std::string(landmark.label));
        Picture picture(320, 240);
        // Behind the camera, then just beyond the edge of a narrow view.
        for (const double away : {180.0, 3.0}) {
            drawCameraPicture(picture, landmark.centre.azimuth + away, landmark.centre.elevation,
                              {255, kSharpFocus});
            for (int row = 0; row < picture.height(); ++row) {
                for (int column = 0; column < picture.width(); ++column) {
                    ASSERT_NE(picture.at(column, row), landmark.target) << column << "," << row;
                }
            }
        }
    }
}

TEST(SceneInView, AwayFromMarksAndLandmarksThePictureIsTheLandscape) {
    // Narrow views that hold no mark: the sky, the hills, the fields.
    for (const double tilt : {5.0, 0.8, -3.0, -12.0}) {
        Picture picture(160, 120);
        const double pan = 245.5;
        drawCameraPicture(picture, pan, tilt, {255, kSharpFocus});
        const CameraView view = cameraView(picture, pan, tilt, 255);
        SCOPED_TRACE(describe(view));
        const auto horizon = view.pointOf({pan, 0.0});
        for (int row = 0; row < picture.height(); row += 7) {
            if (horizon && std::abs(row + 0.5 - horizon->y) < 3.0) {
                continue;  // the horizon is a mark
            }
            for (int column = 0; column < picture.width(); column += 5) {
                ASSERT_EQ(picture.at(column, row),
                          landscapeAt(view.directionAt({column + 0.5, row + 0.5})))
                    << column << "," << row;
            }
        }
    }
}

TEST(SceneInView, TheSkyIsAboveTheHillsAndTheFieldsBelowThem) {
    const Rgb sky = landscapeAt({10.0, 30.0});
    const Rgb ground = landscapeAt({10.0, -30.0});
    EXPECT_GT(sky.b, sky.r);
    EXPECT_GT(ground.g, ground.b);
    for (double azimuth = 0.0; azimuth < 360.0; azimuth += 7.5) {
        SCOPED_TRACE(azimuth);
        const double skyline = skylineAt(azimuth);
        EXPECT_GT(skyline, 0.0);
        EXPECT_LT(skyline, 3.0);
        EXPECT_EQ(landscapeAt({azimuth, skyline + 0.01}), skyAt(skyline + 0.01));
        EXPECT_EQ(landscapeAt({azimuth, skyline / 2}), hillsAt(skyline / 2));
        EXPECT_NEAR(skylineAt(azimuth), skylineAt(azimuth - 720.0), 1e-9);
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
        bool drawn = false;
        for (int y = 0; y < picture.height(); ++y) {
            for (int x = 0; x < picture.width(); ++x) {
                drawn = drawn || picture.at(x, y) != Rgb{};
            }
        }
        EXPECT_EQ(drawn, width > 0 && height > 0);
    }
}

// The largest step in brightness between neighbouring pixels along a row:
// what a sharp edge makes large and blur makes small.
int sharpestStep(const Picture& picture) {
    int sharpest = 0;
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 1; x < picture.width(); ++x) {
            const Rgb a = picture.at(x - 1, y);
            const Rgb b = picture.at(x, y);
            sharpest = std::max(sharpest, std::abs(a.r + a.g + a.b - b.r - b.g - b.b));
        }
    }
    return sharpest;
}

TEST(Focus, AFocusByteFarFromSharpSoftensTheEdgesTheFartherTheSofter) {
    const Landmark& tower = landmarkNamed("TOWER");
    const auto draw = [&tower](int focus) {
        Picture picture(320, 240);
        drawCameraPicture(picture, tower.centre.azimuth, tower.centre.elevation, {60, focus});
        return picture;
    };
    const Picture sharp = draw(kSharpFocus);
    // Within eight of sharp focus the picture is sharp.
    for (const int focus : {kSharpFocus - 7, kSharpFocus + 7}) {
        SCOPED_TRACE(focus);
        const Picture nearly = draw(focus);
        EXPECT_TRUE(std::equal(sharp.bytes(), sharp.bytes() + sharp.byteCount(), nearly.bytes()));
    }
    // From eight off, the softest blur, one pixel round; a pixel more every
    // twelve.
    for (const auto& [away, radius] : {std::pair{8, 1}, {-23, 1}, {24, 2}, {-60, 5}}) {
        SCOPED_TRACE(away);
        Picture blurred = sharp;
        boxBlur(blurred, radius);
        const Picture seen = draw(kSharpFocus + away);
        EXPECT_TRUE(std::equal(seen.bytes(), seen.bytes() + seen.byteCount(), blurred.bytes()));
    }
    int previous = sharpestStep(sharp);
    for (const int focus : {kSharpFocus + 30, kSharpFocus - 60, 255}) {
        SCOPED_TRACE(focus);
        const int step = sharpestStep(draw(focus));
        EXPECT_LT(step, previous);
        previous = step;
    }
    EXPECT_LT(previous, sharpestStep(sharp) / 4);
}

TEST(Picture, RectanglesReachingPastAnEdgeAreCutThere) {
    const Rgb halfway{128, 128, 128};
    Picture picture(4, 3);
    picture.fillRect(-2, -1, 3, 2, kWhite);
    picture.tintRect(-1, -1, 3, 3, kWhite, 0.5);
    picture.tintRect(3, 2, 5, 5, kWhite, 0.5);
    EXPECT_EQ(picture.at(0, 0), kWhite);
    EXPECT_EQ(picture.at(1, 0), halfway);
    EXPECT_EQ(picture.at(1, 1), halfway);
    EXPECT_EQ(picture.at(2, 0), kBlack);
    EXPECT_EQ(picture.at(0, 2), kBlack);
    EXPECT_EQ(picture.at(3, 2), halfway);
    EXPECT_EQ(picture.at(2, 2), kBlack);
}

// A change of either side, as a new video size brings, makes a new
// picture; the same size keeps it.
TEST(Picture, ResizingToAnotherSizeStartsAfresh) {
    Picture picture(4, 3, kWhite);
    picture.resize(4, 3);
    EXPECT_EQ(picture.at(3, 2), kWhite);
    for (const auto& [width, height] : {std::pair{4, 5}, {6, 5}}) {
        picture.fill(kWhite);
        picture.resize(width, height);
        EXPECT_EQ(picture.width(), width);
        EXPECT_EQ(picture.height(), height);
        EXPECT_EQ(picture.at(width - 1, height - 1), kBlack);
    }
}

TEST(Focus, TheBoxBlurSpreadsAPixelEvenlyOverItsSquare) {
    for (const int radius : {1, 2, 5}) {
        SCOPED_TRACE(radius);
        Picture picture(21, 21);
        picture.set(10, 10, {255, 255, 255});
        boxBlur(picture, radius);
        const int side = 2 * radius + 1;
        const int expected = 255 / side / side;
        for (int y = 0; y < 21; ++y) {
            for (int x = 0; x < 21; ++x) {
                const bool inSquare = std::abs(x - 10) <= radius && std::abs(y - 10) <= radius;
                ASSERT_EQ(picture.at(x, y).g, inSquare ? expected : 0) << x << "," << y;
            }
        }
    }
    // Beyond an edge, the edge's pixel stands in for those it hides.
    for (const bool across : {true, false}) {
        Picture line(across ? 4 : 1, across ? 1 : 4);
        const auto at = [across](int i) { return across ? std::pair{i, 0} : std::pair{0, i}; };
        line.set(at(0).first, at(0).second, kWhite);
        line.set(at(3).first, at(3).second, kWhite);
        boxBlur(line, 1);
        for (const auto& [i, expected] : {std::pair{0, 170}, {1, 85}, {2, 85}, {3, 170}}) {
            EXPECT_EQ(line.at(at(i).first, at(i).second).g, expected)
                << i << (across ? " across" : " down");
        }
    }
    // A flat picture stays flat, to the edges.
    Picture flat(17, 9, {40, 80, 120});
    boxBlur(flat, 4);
    for (int y = 0; y < 9; ++y) {
        for (int x = 0; x < 17; ++x) {
            ASSERT_EQ(flat.at(x, y), (Rgb{40, 80, 120}));
        }
    }
}

}  // namespace
}  // namespace halvex::sim::video
