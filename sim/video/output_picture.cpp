#include "sim/video/output_picture.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstdlib>
#include <iomanip>
#include <sstream>
#include <string_view>

#include "protocol/vocabulary_video.h"
#include "sim/video/bitmap_font.h"
#include "sim/video/frame_counter.h"

namespace halvex::sim::video {

namespace {

namespace mode = vocab::video_configuration;
using AngleDisplay = vocab::angle_display;
using NameDisplay = vocab::name_display;

constexpr VideoFormat kPal{768, 576, 25};
constexpr VideoFormat kNtsc{640, 480, 30};

// A setting byte put back in its message, so that its fields read by name.
template <class M>
std::uint32_t fieldOf(Byte setting, vocab::Field<M> field) {
    std::array<Byte, M::kLength> message{};
    vocab::begin<M>(message);
    vocab::put(message, vocab::Field<M>{field.offset}, setting);
    return vocab::get(message, field);
}

// Hundredths folded into [low, low + 360.00).
long foldHundredths(long hundredths, long low) {
    constexpr long kTurn = 36000;
    long folded = (hundredths - low) % kTurn;
    if (folded < 0) {
        folded += kTurn;
    }
    return folded + low;
}

// 12.34 as "+012.34" or "012.34", with `digits` before the point.
std::string formatAngle(long hundredths, bool withSign, int digits) {
    const long magnitude = std::labs(hundredths);
    std::ostringstream text;
    if (withSign) {
        text << (hundredths < 0 ? '-' : '+');
    }
    text << std::setfill('0') << std::setw(digits) << magnitude / 100 << '.' << std::setw(2)
         << magnitude % 100;
    return text.str();
}

bool powered(const VideoSnapshot& snapshot, int camera) {
    return vocab::isSet(snapshot.videoPower,
                        camera == 0 ? mode::kCamera1Power : mode::kCamera2Power);
}

bool blanked(const VideoSnapshot& snapshot, int output) {
    return vocab::isSet(snapshot.videoMode,
                        output == 0 ? mode::kBlankOutput1 : mode::kBlankOutput2);
}

// The on-screen display: the site name from the left, the angles to the
// right, each on its own line (both may share one).
void drawDisplay(Picture& picture, const VideoSnapshot& snapshot) {
    const int lineHeight = picture.height() / kScreenLines;
    const int scale = std::max(1, lineHeight * 3 / 4 / kGlyphHeight);
    const int margin = picture.width() / 32;
    const auto topOf = [&](int line) {
        return screenLine(line, picture.height()).top + (lineHeight - kGlyphHeight * scale) / 2;
    };
    if (vocab::isSet(snapshot.nameDisplay, NameDisplay::kOn)) {
        const int line = static_cast<int>(fieldOf(snapshot.nameDisplay, NameDisplay::kLine));
        const std::string name(snapshot.siteName.begin(), snapshot.siteName.end());
        drawText(picture, margin, topOf(line), name, TextStyle{scale});
    }
    if (vocab::isSet(snapshot.angleDisplay, AngleDisplay::kOn)) {
        const int line = static_cast<int>(fieldOf(snapshot.angleDisplay, AngleDisplay::kLine));
        const std::string angles =
            angleText(snapshot.pan, snapshot.tilt,
                      vocab::isSet(snapshot.angleDisplay, AngleDisplay::kSigned));
        drawText(picture, picture.width() - margin - textWidth(angles, scale), topOf(line), angles,
                 TextStyle{scale});
    }
}

}  // namespace

VideoFormat standardFormat(Byte videoMode) {
    return vocab::isSet(videoMode, mode::kPal) ? kPal : kNtsc;
}

// The settings' line fields name one of the display's lines, each of them.
static_assert((1u << std::popcount(NameDisplay::kLine.mask)) == kScreenLines &&
              (1u << std::popcount(AngleDisplay::kLine.mask)) == kScreenLines);

ScreenLine screenLine(int line, int pictureHeight) {
    return {line * pictureHeight / kScreenLines, (line + 1) * pictureHeight / kScreenLines};
}

std::string angleText(double pan, double tilt, bool signedAngles) {
    const long panHundredths = std::lround(pan * 100.0);
    const long tiltHundredths = std::lround(tilt * 100.0);
    if (signedAngles) {
        // Folded into (-180.00, +180.00].
        return "PAN " + formatAngle(-foldHundredths(-panHundredths, -18000), true, 3) + " TILT " +
               formatAngle(-foldHundredths(-tiltHundredths, -18000), true, 2);
    }
    return "PAN " + formatAngle(foldHundredths(panHundredths, 0), false, 3) + " TILT " +
           formatAngle(foldHundredths(tiltHundredths, 0), false, 3);
}

void drawOutput(Picture& picture, const VideoSnapshot& snapshot, int output, std::uint32_t frame) {
    const std::uint32_t routeIndex = fieldOf(snapshot.videoMode, mode::kRoute);
    const vocab::VideoRoute& route = vocab::kVideoRoutes[routeIndex];
    const int camera = route.camera[static_cast<std::size_t>(output)];
    if (blanked(snapshot, output)) {
        picture.fill(kBlack);
    } else {
        if (powered(snapshot, camera)) {
            const CameraLens& lens = snapshot.lenses[static_cast<std::size_t>(camera)];
            drawCameraPicture(picture, snapshot.pan, snapshot.tilt, {lens.zoom, lens.focus});
        } else {
            picture.fill(kBlack);
        }
        if (route.displayOutput == output) {
            drawDisplay(picture, snapshot);
        }
    }
    writeFrameCounter(picture, frame);
}

}  // namespace halvex::sim::video
