#include "sim/video/camera_picture.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <functional>
#include <iomanip>
#include <sstream>
#include <string>
#include <utility>

#include "sim/video/bitmap_font.h"
#include "sim/video/scene.h"

namespace halvex::sim::video {

namespace {

constexpr int kMarkStep = 10;          // degrees between marks, both ways
constexpr int kLabelledMarkStep = 30;  // elevation marks labelled this far apart
constexpr double kMarkTint = 0.8;      // how white the marks are drawn
constexpr Rgb kMarkColour = kWhite;

// What one frame looks up per pixel: each column's azimuth, each row's
// elevation.
struct Rays {
    std::vector<double> azimuths;
    std::vector<double> elevations;
};

// Sizes that follow the picture, so a label reads the same at any size.
struct Sizes {
    int line;       // width of a mark's line
    int tick;       // length of an azimuth tick
    int arm;        // half the span of an elevation cross
    int textScale;  // of the scene's labels
};

Sizes sizesFor(const Picture& picture) {
    const int height = picture.height();
    return {.line = std::max(1, height / 360),
            .tick = std::max(4, height / 30),
            .arm = std::max(3, height / 80),
            .textScale = std::max(1, height / 240)};
}

// The first index at which `values` (in order, `rising` or not) passes
// `limit`.
std::size_t firstPast(const std::vector<double>& values, double limit, bool rising) {
    if (rising) {
        return static_cast<std::size_t>(std::lower_bound(values.begin(), values.end(), limit) -
                                        values.begin());
    }
    return static_cast<std::size_t>(
        std::lower_bound(values.begin(), values.end(), limit, std::greater<>()) - values.begin());
}

void drawLandscape(Picture& picture, const Rays& rays) {
    const int width = picture.width();
    std::vector<double> skyline(rays.azimuths.size());
    std::vector<int> sector(rays.azimuths.size());
    std::transform(rays.azimuths.begin(), rays.azimuths.end(), skyline.begin(), skylineAt);
    std::transform(rays.azimuths.begin(), rays.azimuths.end(), sector.begin(), fieldSector);
    const double highestHill = *std::max_element(skyline.begin(), skyline.end());
    for (int y = 0; y < picture.height(); ++y) {
        const double elevation = rays.elevations[static_cast<std::size_t>(y)];
        Rgb* row = picture.row(y);
        if (elevation >= highestHill) {
            std::fill(row, row + width, skyAt(elevation));
        } else if (elevation >= 0.0) {
            const Rgb sky = skyAt(elevation);
            const Rgb hills = hillsAt(elevation);
            for (std::size_t x = 0; x < skyline.size(); ++x) {
                row[x] = elevation >= skyline[x] ? sky : hills;
            }
        } else if (const auto band = fieldBand(elevation)) {
            std::array<Rgb, kFieldCrops> crops{};
            for (int crop = 0; crop < kFieldCrops; ++crop) {
                crops[static_cast<std::size_t>(crop)] = groundAt(elevation, crop);
            }
            for (std::size_t x = 0; x < sector.size(); ++x) {
                row[x] = crops[static_cast<std::size_t>(fieldCrop(*band, sector[x]))];
            }
        } else {
            std::fill(row, row + width, groundAt(elevation, kHaze));
        }
    }
}

void drawLandmark(Picture& picture, double pan, const Rays& rays, const Landmark& landmark) {
    // The landmark's azimuth on the same turn as the columns' azimuths.
    const double azimuth = pan + azimuthOffset(landmark.centre.azimuth, pan);
    const double elevation = landmark.centre.elevation;
    const Extent& extent = landmark.extent;
    const std::size_t left = firstPast(rays.azimuths, azimuth + extent.left, true);
    const std::size_t right = firstPast(rays.azimuths, azimuth + extent.right, true);
    const std::size_t top = firstPast(rays.elevations, elevation + extent.top, false);
    const std::size_t bottom = firstPast(rays.elevations, elevation + extent.bottom, false);
    for (std::size_t y = top; y < bottom; ++y) {
        Rgb* row = picture.row(static_cast<int>(y));
        const double up = rays.elevations[y] - elevation;
        for (std::size_t x = left; x < right; ++x) {
            if (const auto colour = landmarkAt(landmark, rays.azimuths[x] - azimuth, up)) {
                row[x] = *colour;
            }
        }
    }
}

// Draws `text` centred on x, its top at y.
void drawCentredText(Picture& picture, int x, int y, const std::string& text, int scale) {
    drawText(picture, x - textWidth(text, scale) / 2, y, text, TextStyle{scale});
}

std::string threeDigits(int degrees) {
    std::ostringstream text;
    text << std::setfill('0') << std::setw(3) << degrees;
    return text.str();
}

std::string signedDegrees(int degrees) {
    std::ostringstream text;
    text << std::showpos << degrees;
    return text.str();
}

// The multiples of `step` from `low` to `high`.
std::pair<int, int> multiplesBetween(double low, double high, int step) {
    return {static_cast<int>(std::ceil(low / step)), static_cast<int>(std::floor(high / step))};
}

// The horizon, a tick every ten degrees of azimuth hanging from it with the
// azimuth under it, and a cross every ten degrees of elevation above each
// tick, the elevation beside every third.
void drawMarks(Picture& picture, const CameraView& view, const Rays& rays, const Sizes& sizes) {
    const auto [firstAzimuth, lastAzimuth] =
        multiplesBetween(rays.azimuths.front(), rays.azimuths.back(), kMarkStep);
    const auto columnOf = [&view](double azimuth) {
        return static_cast<int>(std::floor(view.pointOf({azimuth, view.tilt})->x));
    };
    const auto rowOf = [&view](double elevation) {
        return static_cast<int>(std::floor(view.pointOf({view.pan, elevation})->y));
    };
    if (std::abs(view.tilt) < 80.0) {
        const int horizon = rowOf(0.0);
        picture.tintRect(0, horizon - sizes.line / 2, picture.width(), sizes.line, kMarkColour,
                         0.45);
        for (int step = firstAzimuth; step <= lastAzimuth; ++step) {
            const int x = columnOf(step * kMarkStep);
            const int tick = step % 3 == 0 ? sizes.tick * 3 / 2 : sizes.tick;
            picture.tintRect(x - sizes.line / 2, horizon, sizes.line, tick, kMarkColour, kMarkTint);
            const int degrees = static_cast<int>(std::lround(normalAzimuth(step * kMarkStep)));
            drawCentredText(picture, x, horizon + tick + sizes.line * 2, threeDigits(degrees),
                            sizes.textScale);
        }
    }
    const auto [firstElevation, lastElevation] =
        multiplesBetween(rays.elevations.back(), rays.elevations.front(), kMarkStep);
    for (int level = firstElevation; level <= lastElevation; ++level) {
        if (level == 0 || std::abs(level * kMarkStep) >= 90) {
            continue;
        }
        const int y = rowOf(level * kMarkStep);
        for (int step = firstAzimuth; step <= lastAzimuth; ++step) {
            const int x = columnOf(step * kMarkStep);
            picture.tintRect(x - sizes.arm, y - sizes.line / 2, 2 * sizes.arm + 1, sizes.line,
                             kMarkColour, kMarkTint);
            picture.tintRect(x - sizes.line / 2, y - sizes.arm, sizes.line, 2 * sizes.arm + 1,
                             kMarkColour, kMarkTint);
            if ((step * kMarkStep) % kLabelledMarkStep == 0) {
                drawText(picture, x + sizes.arm * 2, y - kGlyphHeight * sizes.textScale / 2,
                         signedDegrees(level * kMarkStep), TextStyle{sizes.textScale});
            }
        }
    }
}

// Each landmark's name over its top, clear of the marks along the horizon.
void drawLabels(Picture& picture, const CameraView& view, const Sizes& sizes) {
    for (const Landmark& landmark : kLandmarks) {
        const auto top = view.pointOf(
            {landmark.centre.azimuth, landmark.centre.elevation + landmark.extent.top});
        if (top) {
            const int textTop =
                static_cast<int>(top->y) - sizes.line * 3 - kGlyphHeight * sizes.textScale;
            drawCentredText(picture, static_cast<int>(top->x), textTop, std::string(landmark.label),
                            sizes.textScale);
        }
    }
}

}  // namespace

int blurRadius(int focus) {
    const int away = std::abs(focus - kSharpFocus);
    return away < 8 ? 0 : std::max(1, away / 12);
}

CameraView cameraView(const Picture& picture, double pan, double tilt, int zoom) {
    return {pan, tilt, fieldOfViewDegrees(zoom), picture.width(), picture.height()};
}

void drawCameraPicture(Picture& picture, double pan, double tilt, LensSetting lens) {
    if (picture.width() == 0 || picture.height() == 0) {
        return;
    }
    const CameraView view = cameraView(picture, pan, tilt, lens.zoom);
    const Rays rays{view.columnAzimuths(), view.rowElevations()};
    const Sizes sizes = sizesFor(picture);
    // The marks are painted on the landscape: a landmark stands in front.
    drawLandscape(picture, rays);
    drawMarks(picture, view, rays, sizes);
    for (const Landmark& landmark : kLandmarks) {
        drawLandmark(picture, pan, rays, landmark);
    }
    drawLabels(picture, view, sizes);
    boxBlur(picture, blurRadius(lens.focus));
}

}  // namespace halvex::sim::video
