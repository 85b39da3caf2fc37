#pragma once

// The world both cameras look into: one 360-degree landscape of sky, distant
// hills and fields, and six landmarks at known directions. Every landmark
// carries a round target of a colour found nowhere else in the scene, with
// its centre at the landmark's direction, so that a program (or an operator
// centring on it) can tell exactly where the landmark is. Angles in degrees:
// azimuth clockwise from 0, elevation up from the horizon.

#include <array>
#include <optional>
#include <string_view>

#include "sim/video/camera_view.h"
#include "sim/video/picture.h"

namespace halvex::sim::video {

enum class LandmarkShape { Tower, Mast, House, Tree, Balloon, Church };

// How far a landmark reaches from its centre; left and bottom are negative.
struct Extent {
    double left = 0.0;
    double right = 0.0;
    double bottom = 0.0;
    double top = 0.0;
};

struct Landmark {
    std::string_view label;
    LandmarkShape shape;
    Direction centre;
    Extent extent;
    Rgb target;  // the colour of the round target at the centre
};

inline constexpr double kTargetRadius = 0.4;

// Each stands on the ground (its bottom below the horizon) but the balloon;
// none at a multiple of ten degrees, where the azimuth marks are.
inline constexpr std::array<Landmark, 6> kLandmarks{{
    {"HOUSE", LandmarkShape::House, {4.0, -0.5}, {-2.9, 2.9, -2.0, 2.9}, {255, 255, 0}},
    {"TOWER", LandmarkShape::Tower, {37.0, 3.0}, {-1.1, 1.1, -4.5, 6.0}, {255, 0, 255}},
    {"MAST", LandmarkShape::Mast, {92.0, 9.0}, {-0.8, 0.8, -10.0, 12.8}, {0, 255, 255}},
    {"TREE", LandmarkShape::Tree, {156.0, 2.0}, {-2.1, 2.1, -3.5, 2.9}, {255, 120, 0}},
    {"BALLOON", LandmarkShape::Balloon, {222.0, 22.0}, {-1.6, 1.6, -2.9, 2.3}, {140, 0, 255}},
    {"CHURCH", LandmarkShape::Church, {293.0, 4.0}, {-3.9, 0.8, -5.0, 7.3}, {0, 255, 140}},
}};

// a - b as the shorter way round, -180 .. +180.
double azimuthOffset(double a, double b);
// 0 .. 360.
double normalAzimuth(double azimuth);

// The landscape is built from the parts below so that the renderer can
// work each part out once a row or once a column.

// The top of the distant hills at an azimuth, degrees above the horizon.
double skylineAt(double azimuth);
Rgb skyAt(double elevation);
Rgb hillsAt(double elevation);
// Fields lie in bands (by distance, so by elevation) and sectors (by
// azimuth), each field one of kFieldCrops crops picked by its band and
// sector. Near the horizon they fade into one tone, the haze.
inline constexpr int kFieldCrops = 4;
inline constexpr int kHaze = -1;
std::optional<int> fieldBand(double elevation);
int fieldSector(double azimuth);
int fieldCrop(int band, int sector);
Rgb groundAt(double elevation, int crop);

// The landmark's colour at an offset from its centre (degrees, up and to the
// right positive), or nothing where it lets the landscape show through.
std::optional<Rgb> landmarkAt(const Landmark& landmark, double right, double up);

}  // namespace halvex::sim::video
