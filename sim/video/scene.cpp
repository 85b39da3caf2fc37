#include "sim/video/scene.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace halvex::sim::video {

namespace {

constexpr double kTargetRim = 0.08;  // the dark ring round a target

// Sky: pale at the horizon, deep blue high up.
constexpr Rgb kHorizonSky{205, 222, 238};
constexpr Rgb kHighSky{62, 112, 200};
// Hills: hazy blue at their tops, greener at their feet.
constexpr Rgb kHillTops{132, 152, 166};
constexpr Rgb kHillFeet{104, 130, 118};
// Ground: hazy far away, saturated close by.
constexpr Rgb kFarGround{138, 146, 112};
constexpr Rgb kNearGround{74, 116, 50};

double clamp01(double value) {
    return std::clamp(value, 0.0, 1.0);
}

Rgb shade(Rgb colour, double factor) {
    return {static_cast<std::uint8_t>(std::clamp(colour.r * factor, 0.0, 255.0)),
            static_cast<std::uint8_t>(std::clamp(colour.g * factor, 0.0, 255.0)),
            static_cast<std::uint8_t>(std::clamp(colour.b * factor, 0.0, 255.0))};
}

bool inBox(double x, double y, double left, double right, double bottom, double top) {
    return x >= left && x <= right && y >= bottom && y <= top;
}

// Within the ellipse on the landmark's axis whose centre is `centreY` up.
bool inEllipse(double x, double y, double centreY, double radiusX, double radiusY) {
    const double u = x / radiusX;
    const double v = (y - centreY) / radiusY;
    return u * u + v * v <= 1.0;
}

// Within `half` of a multiple of `step`.
bool nearMultiple(double value, double step, double half) {
    const double offset = value - step * std::round(value / step);
    return std::abs(offset) <= half;
}

// The light comes from the left: a face right of `edge` is `darker`.
double sideShade(double x, double edge, double darker) {
    return x > edge ? darker : 1.0;
}

std::optional<Rgb> tower(double x, double y) {
    constexpr Rgb stone{168, 156, 134};
    constexpr Rgb dark{46, 40, 34};
    if (inBox(x, y, -1.05, 1.05, 5.0, 6.0)) {
        // The parapet, with its crenels cut out of the top half.
        if (y > 5.5 && nearMultiple(x + 0.15, 0.6, 0.15)) {
            return std::nullopt;
        }
        return shade(stone, sideShade(x, 0.4, 0.8));
    }
    const double halfWidth = 0.95 - 0.2 * (y + 4.5) / 9.5;
    if (!inBox(x, y, -halfWidth, halfWidth, -4.5, 5.0)) {
        return std::nullopt;
    }
    if (inBox(x, y, -0.12, 0.12, 2.2, 3.2) || inBox(x, y, -0.12, 0.12, -2.8, -1.8) ||
        inBox(x, y, -0.3, 0.3, -4.5, -3.4)) {
        return dark;  // slit windows and the door
    }
    const double courses = nearMultiple(y, 0.75, 0.03) ? 0.85 : 1.0;
    return shade(stone, sideShade(x, halfWidth * 0.35, 0.78) * courses);
}

std::optional<Rgb> mast(double x, double y) {
    if (inEllipse(x, y, 12.45, 0.3, 0.3)) {
        return Rgb{255, 48, 24};  // the beacon
    }
    if (inBox(x, y, -0.7, 0.7, -0.6, 0.6)) {
        return Rgb{112, 112, 118};  // the platform
    }
    const double halfWidth = 0.2 - 0.1 * (y + 10.0) / 22.0;
    if (!inBox(x, y, -halfWidth, halfWidth, -10.0, 12.0)) {
        return std::nullopt;
    }
    const bool red = static_cast<int>(std::floor((y + 10.0) / 2.0)) % 2 == 0;
    return shade(red ? Rgb{198, 44, 34} : Rgb{236, 234, 228}, sideShade(x, 0.0, 0.82));
}

std::optional<Rgb> house(double x, double y) {
    if (inBox(x, y, 1.2, 1.6, 1.2, 2.6)) {
        return Rgb{122, 62, 50};  // the chimney
    }
    const double roofTop = 1.0 + 1.9 * (1.0 - std::abs(x) / 2.9);
    if (inBox(x, y, -2.9, 2.9, 1.0, roofTop)) {
        return shade(Rgb{166, 62, 46}, nearMultiple(y, 0.3, 0.025) ? 0.75 : 1.0);
    }
    if (!inBox(x, y, -2.5, 2.5, -2.0, 1.0)) {
        return std::nullopt;
    }
    if (inBox(x, y, -1.9, -1.3, -2.0, -0.6)) {
        return Rgb{92, 60, 40};  // the door
    }
    if (inBox(x, y, 1.05, 2.05, -1.25, -0.25)) {
        // The window: two panes in a white frame.
        const bool pane =
            inBox(x, y, 1.12, 1.98, -1.18, -0.32) && !inBox(x, y, 1.51, 1.59, -1.18, -0.32);
        return pane ? Rgb{78, 108, 138} : Rgb{240, 240, 236};
    }
    return Rgb{218, 204, 172};
}

std::optional<Rgb> tree(double x, double y) {
    // The crown: clumps of leaves, each lit from the upper left.
    struct Clump {
        double x, y, radius;
    };
    static constexpr Clump kClumps[] = {{0.0, 1.6, 1.3},   {-1.0, 0.6, 1.05}, {1.0, 0.7, 1.05},
                                        {-0.7, -0.5, 1.0}, {0.75, -0.4, 1.0}, {0.0, 0.2, 1.1}};
    for (const Clump& clump : kClumps) {
        const double dx = x - clump.x;
        if (inEllipse(dx, y, clump.y, clump.radius, clump.radius)) {
            const double dy = y - clump.y;
            return shade(Rgb{64, 114, 46}, 1.0 + 0.2 * (dy - dx) / clump.radius);
        }
    }
    if (inBox(x, y, -0.25, 0.25, -3.5, -1.2)) {
        return shade(Rgb{96, 68, 42}, sideShade(x, 0.05, 0.8));
    }
    return std::nullopt;
}

std::optional<Rgb> balloon(double x, double y) {
    if (inEllipse(x, y, 0.3, 1.6, 2.0)) {
        const double u = x / 1.6;
        const double v = (y - 0.3) / 2.0;
        const bool red = static_cast<int>(std::floor((x + 1.6) / 0.4)) % 2 == 0;
        const double roundness = 1.0 - 0.35 * (u * u + v * v);
        return shade(red ? Rgb{212, 40, 40} : Rgb{242, 236, 226}, roundness);
    }
    if (inBox(x, y, -0.35, 0.35, -2.9, -2.4)) {
        return Rgb{122, 86, 50};  // the basket
    }
    if (inBox(std::abs(x), y, 0.0, 1.0, -2.4, -1.5) && nearMultiple(std::abs(x), 0.6, 0.035)) {
        return Rgb{60, 50, 40};  // the ropes
    }
    return std::nullopt;
}

std::optional<Rgb> church(double x, double y) {
    constexpr Rgb slate{84, 90, 102};
    constexpr Rgb wall{204, 198, 182};
    constexpr Rgb dark{52, 48, 44};
    const double spire = 0.8 * (1.0 - (y - 1.5) / 5.8);
    if (inBox(x, y, -spire, spire, 1.5, 7.3)) {
        return shade(slate, sideShade(x, 0.0, 0.8));
    }
    if (inBox(x, y, -0.7, 0.7, -5.0, 1.5)) {
        if (inBox(x, y, -0.15, 0.15, -3.6, -2.3)) {
            return dark;
        }
        return shade(wall, sideShade(x, 0.25, 0.82));
    }
    if (inBox(x, y, -3.9, -0.7, -2.2, -1.3)) {
        return slate;  // the nave's roof
    }
    if (inBox(x, y, -3.7, -0.7, -5.0, -2.2)) {
        for (const double window : {-3.1, -2.3, -1.5}) {
            if (inBox(x, y, window - 0.13, window + 0.13, -4.2, -3.0)) {
                return dark;
            }
        }
        return wall;
    }
    return std::nullopt;
}

}  // namespace

double azimuthOffset(double a, double b) {
    return std::remainder(a - b, 360.0);
}

double normalAzimuth(double azimuth) {
    const double folded = std::fmod(azimuth, 360.0);
    return folded < 0.0 ? folded + 360.0 : folded;
}

double skylineAt(double azimuth) {
    const double a = normalAzimuth(azimuth) * kRadiansPerDegree;
    const double height = 1.1 + 0.55 * std::sin(3.0 * a + 0.7) + 0.35 * std::sin(7.0 * a + 2.1) +
                          0.2 * std::sin(13.0 * a + 0.3) + 0.1 * std::sin(29.0 * a + 1.0);
    return std::max(height, 0.15);
}

Rgb skyAt(double elevation) {
    return mix(kHorizonSky, kHighSky, std::sqrt(clamp01(elevation / 50.0)));
}

Rgb hillsAt(double elevation) {
    return mix(kHillFeet, kHillTops, clamp01(elevation / 2.4));
}

std::optional<int> fieldBand(double elevation) {
    if (elevation > -0.4) {
        return std::nullopt;  // too far to make out
    }
    // Distance on flat ground, in camera heights, in bands that widen with it.
    const double distance = 1.0 / std::tan(-elevation * kRadiansPerDegree);
    return static_cast<int>(std::floor(std::log2(distance) * 2.0));
}

int fieldSector(double azimuth) {
    return static_cast<int>(std::floor(normalAzimuth(azimuth) / 9.0));
}

int fieldCrop(int band, int sector) {
    // Neighbouring fields of unlike crops, without a visible pattern.
    auto mixed = static_cast<std::uint32_t>(band * 7919 + sector * 104729);
    mixed ^= mixed >> 13;
    mixed *= 0x5bd1e995u;
    mixed ^= mixed >> 15;
    return static_cast<int>(mixed % kFieldCrops);
}

Rgb groundAt(double elevation, int crop) {
    // Grass, young wheat, ripe wheat and ploughed earth.
    static constexpr std::array<Rgb, kFieldCrops> kCrops{
        {{74, 116, 50}, {112, 138, 58}, {176, 160, 92}, {124, 100, 72}}};
    const Rgb near = crop == kHaze ? kNearGround : kCrops[static_cast<std::size_t>(crop)];
    return mix(kFarGround, near, std::sqrt(clamp01(-elevation / 25.0)));
}

std::optional<Rgb> landmarkAt(const Landmark& landmark, double right, double up) {
    const double fromCentre = std::hypot(right, up);
    if (fromCentre <= kTargetRadius) {
        return landmark.target;
    }
    if (fromCentre <= kTargetRadius + kTargetRim) {
        return kBlack;
    }
    switch (landmark.shape) {
        case LandmarkShape::Tower:
            return tower(right, up);
        case LandmarkShape::Mast:
            return mast(right, up);
        case LandmarkShape::House:
            return house(right, up);
        case LandmarkShape::Tree:
            return tree(right, up);
        case LandmarkShape::Balloon:
            return balloon(right, up);
        case LandmarkShape::Church:
            return church(right, up);
    }
    return std::nullopt;
}

}  // namespace halvex::sim::video
