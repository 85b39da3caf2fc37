// The virtual unit's outputs as they were last looked at: a change to the
// landscape, a landmark, the camera, the blur or the on-screen display shows
// as a changed picture. HALVEX_WRITE_PICTURES=1 writes them again; look at
// them before keeping them.

#include <gtest/gtest.h>

#include <QImage>
#include <cstdlib>
#include <cstring>

#include "protocol/vocabulary.h"
#include "sim/video/output_picture.h"
#include "sim/video/picture.h"

namespace halvex::sim::video {
namespace {

namespace v = halvex::vocab;

struct View {
    const char* name;
    VideoSnapshot snapshot;
    int width = 480;
    int height = 270;
};

VideoSnapshot facing(double pan, double tilt, CameraLens lens) {
    VideoSnapshot snapshot;
    snapshot.pan = pan;
    snapshot.tilt = tilt;
    snapshot.lenses = {lens, lens};
    snapshot.videoPower = static_cast<Byte>(v::maskOf(v::video_configuration::kCamera1Power) |
                                            v::maskOf(v::video_configuration::kCamera2Power));
    return snapshot;
}

// Route 1 puts camera 1 on output 1 with the display; the angles signed on
// line 2 and the site name on line 10.
VideoSnapshot withDisplay(VideoSnapshot snapshot) {
    snapshot.videoMode = static_cast<Byte>(v::inPlace(v::video_configuration::kRoute, 1));
    snapshot.angleDisplay =
        static_cast<Byte>(v::inPlace(v::angle_display::kLine, 2) |
                          v::maskOf(v::angle_display::kOn) | v::maskOf(v::angle_display::kSigned));
    snapshot.nameDisplay =
        static_cast<Byte>(v::inPlace(v::name_display::kLine, 10) | v::maskOf(v::name_display::kOn));
    const char site[] = "NORTH GATE 2";
    std::memcpy(snapshot.siteName.data(), site, snapshot.siteName.size());
    return snapshot;
}

QImage imageOf(const Picture& picture) {
    QImage image(picture.width(), picture.height(), QImage::Format_RGB888);
    for (int y = 0; y < picture.height(); ++y) {
        std::memcpy(image.scanLine(y), picture.row(y), static_cast<std::size_t>(picture.stride()));
    }
    return image;
}

// How many pixels differ, and by how much at most in any channel.
std::pair<int, int> difference(const QImage& a, const QImage& b) {
    int pixels = 0;
    int most = 0;
    for (int y = 0; y < a.height(); ++y) {
        const uchar* left = a.constScanLine(y);
        const uchar* right = b.constScanLine(y);
        for (int x = 0; x < a.width(); ++x) {
            int here = 0;
            for (int c = 0; c < 3; ++c) {
                here = std::max(here, std::abs(left[3 * x + c] - right[3 * x + c]));
            }
            pixels += here > 0 ? 1 : 0;
            most = std::max(most, here);
        }
    }
    return {pixels, most};
}

TEST(VideoKeptPictures, EachViewLooksAsItWasKept) {
    const View views[] = {
        {"house", facing(0, 0, {128, 128})},
        {"tower-zoomed-soft", facing(37, 7.5, {200, 60})},
        {"balloon-display", withDisplay(facing(222, 20, {60, 128}))},
        {"church-wide", facing(-70, -4, {0, 128})},
        {"tree", facing(156, 1, {90, 128})},
        {"mast", facing(92, 15, {40, 128})},
        // A size from 720 lines up draws the display's letters large enough
        // for a thicker outline.
        {"display-720", withDisplay(facing(-12, 6, {70, 128})), 1280, 720},
        // A small picture keeps the counter's blocks big enough to read.
        {"house-small", facing(0, 0, {128, 128}), 160, 120},
        // Straight up: the marks stop short of the zenith.
        {"zenith", facing(30, 88, {0, 128})},
    };
    const QString folder = QStringLiteral(HALVEX_SIM_TEST_DATA "/pictures/");
    const bool write = qEnvironmentVariableIsSet("HALVEX_WRITE_PICTURES");
    for (const View& view : views) {
        SCOPED_TRACE(view.name);
        Picture picture(view.width, view.height);
        drawOutput(picture, view.snapshot, 0, 4660);
        const QImage drawn = imageOf(picture);
        const QString path = folder + QLatin1String(view.name) + QStringLiteral(".png");
        if (write) {
            ASSERT_TRUE(drawn.save(path));
            continue;
        }
        const QImage kept = QImage(path).convertToFormat(QImage::Format_RGB888);
        ASSERT_EQ(kept.size(), drawn.size()) << path.toStdString();
        // The drawing is plain arithmetic, the same from either compiler;
        // another processor's maths library may round a very few pixels the
        // other way. A colour one step off over the smallest landmark
        // changes more pixels than that.
        const auto [pixels, most] = difference(kept, drawn);
        EXPECT_LE(pixels, 16) << "pixels that differ";
        EXPECT_LE(most, 8) << "the largest difference in a channel";
    }
}

}  // namespace
}  // namespace halvex::sim::video
