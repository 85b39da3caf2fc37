// The outputs follow the unit: which camera each shows, blanking, the
// cameras' power, the on-screen display, and the unit's state copied out.

#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "protocol/vocabulary_video.h"
#include "sim/unit_state.h"
#include "sim/video/frame_counter.h"
#include "sim/video/output_picture.h"
#include "sim/video/unit_snapshot.h"
#include "sim/video/video_server.h"

namespace halvex::sim::video {
namespace {

namespace mode = vocab::video_configuration;
using AngleDisplay = vocab::angle_display;
using NameDisplay = vocab::name_display;
using ModeBit = vocab::Bit<vocab::VideoConfiguration>;

constexpr int kWidth = 320;
constexpr int kHeight = 240;

Byte modeByte(int route, std::initializer_list<ModeBit> bits = {}) {
    auto byte = static_cast<Byte>(vocab::inPlace(mode::kRoute, static_cast<std::uint32_t>(route)));
    for (const ModeBit bit : bits) {
        byte = vocab::withBit(byte, bit, true);
    }
    return byte;
}

template <class M>
Byte displayByte(int line, bool signedAngles = false) {
    using Display = vocab::DisplaySetting<M>;
    auto byte = static_cast<Byte>(vocab::inPlace(Display::kLine, static_cast<std::uint32_t>(line)));
    byte = vocab::withBit(byte, Display::kOn, true);
    return vocab::withBit(byte, Display::kSigned, signedAngles);
}

Byte powerByte(bool camera1, bool camera2) {
    return vocab::withBit(vocab::withBit(Byte{0}, mode::kCamera1Power, camera1),
                          mode::kCamera2Power, camera2);
}

// Aimed at the tower, camera 1 wide and camera 2 narrow: every part of the
// two pictures differs.
VideoSnapshot aimedAtTheTower() {
    VideoSnapshot snapshot;
    snapshot.pan = 37.0;
    snapshot.tilt = 3.0;
    snapshot.lenses = {CameraLens{0, kSharpFocus}, CameraLens{200, kSharpFocus}};
    snapshot.videoPower = powerByte(true, true);
    const std::string name = "NORTH GATE  ";
    std::copy(name.begin(), name.end(), snapshot.siteName.begin());
    return snapshot;
}

Picture output(const VideoSnapshot& snapshot, int which) {
    Picture picture(kWidth, kHeight);
    drawOutput(picture, snapshot, which, 0);
    return picture;
}

Picture camera(const VideoSnapshot& snapshot, int which) {
    Picture picture(kWidth, kHeight);
    const CameraLens& lens = snapshot.lenses[static_cast<std::size_t>(which)];
    drawCameraPicture(picture, snapshot.pan, snapshot.tilt, {lens.zoom, lens.focus});
    return picture;
}

bool inCounter(int x, int y) {
    const CounterLayout layout = counterLayout(kWidth);
    return x < layout.bandWidth && y < layout.bandHeight;
}

// Pixels that differ, leaving out the frame counter and the rows of one
// screen line (-1: none).
int differences(const Picture& a, const Picture& b, int skippedLine = -1) {
    const ScreenLine skipped = skippedLine >= 0 ? screenLine(skippedLine, kHeight) : ScreenLine{};
    int count = 0;
    for (int y = 0; y < kHeight; ++y) {
        if (y >= skipped.top && y < skipped.bottom) {
            continue;
        }
        for (int x = 0; x < kWidth; ++x) {
            count += !inCounter(x, y) && a.at(x, y) != b.at(x, y) ? 1 : 0;
        }
    }
    return count;
}

bool blackButTheCounter(const Picture& picture) {
    return differences(picture, Picture(kWidth, kHeight)) == 0;
}

// The rows holding a white pixel: the display's text (the cameras off, so
// nothing else is white).
std::vector<int> litRows(const Picture& picture) {
    std::vector<int> rows;
    for (int y = 0; y < kHeight; ++y) {
        for (int x = 0; x < kWidth; ++x) {
            if (!inCounter(x, y) && picture.at(x, y) == kWhite) {
                rows.push_back(y);
                break;
            }
        }
    }
    return rows;
}

TEST(VideoOutputs, EachRoutePutsTheRightCameraAndTheDisplayOnTheRightOutput) {
    constexpr int kNameLine = 8;
    for (int route = 0; route < 8; ++route) {
        SCOPED_TRACE("route " + std::to_string(route));
        VideoSnapshot snapshot = aimedAtTheTower();
        snapshot.videoMode = modeByte(route);
        snapshot.nameDisplay = displayByte<vocab::NameDisplay>(kNameLine);
        const vocab::VideoRoute& expected = vocab::kVideoRoutes[static_cast<std::size_t>(route)];
        const std::array<Picture, 2> cameras{camera(snapshot, 0), camera(snapshot, 1)};
        for (int which = 0; which < kOutputs; ++which) {
            SCOPED_TRACE("output " + std::to_string(which + 1));
            const Picture picture = output(snapshot, which);
            const int shown = expected.camera[static_cast<std::size_t>(which)];
            EXPECT_EQ(differences(picture, cameras[static_cast<std::size_t>(shown)], kNameLine), 0);
            EXPECT_GT(differences(picture, cameras[static_cast<std::size_t>(1 - shown)], kNameLine),
                      kWidth * kHeight / 2);
            const bool display = differences(picture, cameras[static_cast<std::size_t>(shown)]) > 0;
            EXPECT_EQ(display, expected.displayOutput == which);
        }
    }
}

TEST(VideoOutputs, ABlankedOutputIsBlackAndTheOtherCarriesOn) {
    struct Case {
        std::initializer_list<ModeBit> bits;
        bool blank1;
        bool blank2;
    };
    for (const Case& c : {Case{{}, false, false}, Case{{mode::kBlankOutput1}, true, false},
                          Case{{mode::kBlankOutput2}, false, true},
                          Case{{mode::kBlankOutput1, mode::kBlankOutput2}, true, true}}) {
        SCOPED_TRACE(std::to_string(c.blank1) + std::to_string(c.blank2));
        VideoSnapshot snapshot = aimedAtTheTower();
        // Route 1 puts camera 1 on both and the display on output 1: blanking
        // hides the display too.
        snapshot.videoMode = modeByte(1, c.bits);
        snapshot.angleDisplay = displayByte<vocab::AngleDisplay>(3);
        EXPECT_EQ(blackButTheCounter(output(snapshot, 0)), c.blank1);
        EXPECT_EQ(blackButTheCounter(output(snapshot, 1)), c.blank2);
        // The counter runs on, blank or not.
        const Picture blank = output(snapshot, 0);
        EXPECT_EQ(readFrameCounter(blank.bytes(), kWidth, kHeight, blank.stride()), 0u);
    }
}

TEST(VideoOutputs, ACameraWithoutPowerGivesBlackUnderTheDisplay) {
    for (const auto& [power1, power2] : {std::pair{true, true}, std::pair{false, true},
                                         std::pair{true, false}, std::pair{false, false}}) {
        SCOPED_TRACE(std::to_string(power1) + std::to_string(power2));
        VideoSnapshot snapshot = aimedAtTheTower();
        snapshot.videoMode = modeByte(3);  // camera 2 on output 1, camera 1 on output 2
        snapshot.videoPower = powerByte(power1, power2);
        EXPECT_EQ(blackButTheCounter(output(snapshot, 0)), !power2);
        EXPECT_EQ(blackButTheCounter(output(snapshot, 1)), !power1);

        snapshot.nameDisplay = displayByte<vocab::NameDisplay>(12);
        EXPECT_FALSE(litRows(output(snapshot, 0)).empty()) << "the display over black";
    }
}

TEST(OnScreenDisplay, TheNameAndTheAnglesAreOnTheirLinesAndOnlyWhenOn) {
    struct Case {
        int nameLine;  // -1: off
        int angleLine;
    };
    for (const Case& c :
         {Case{1, -1}, Case{-1, 1}, Case{7, 15}, Case{15, 7}, Case{9, 9}, Case{-1, -1}}) {
        SCOPED_TRACE("name " + std::to_string(c.nameLine) + ", angles " +
                     std::to_string(c.angleLine));
        VideoSnapshot snapshot = aimedAtTheTower();
        snapshot.videoPower = powerByte(false, false);
        snapshot.videoMode = modeByte(1);
        // A display that is off has a line all the same: it shows nothing.
        snapshot.nameDisplay =
            vocab::withBit(displayByte<vocab::NameDisplay>(c.nameLine >= 0 ? c.nameLine : 5),
                           NameDisplay::kOn, c.nameLine >= 0);
        snapshot.angleDisplay =
            vocab::withBit(displayByte<vocab::AngleDisplay>(c.angleLine >= 0 ? c.angleLine : 6),
                           AngleDisplay::kOn, c.angleLine >= 0);
        const std::vector<int> rows = litRows(output(snapshot, 0));
        std::set<int> linesLit;
        for (int row : rows) {
            linesLit.insert(row * kScreenLines / kHeight);
        }
        std::set<int> expected;
        for (int line : {c.nameLine, c.angleLine}) {
            if (line >= 0) {
                expected.insert(line);
            }
        }
        EXPECT_EQ(linesLit, expected);
        EXPECT_TRUE(litRows(output(snapshot, 1)).empty()) << "route 1 has no display on output 2";
    }
}

TEST(OnScreenDisplay, SignedAndUnsignedAnglesReadDifferentlyBelowZero) {
    struct Case {
        double pan;
        double tilt;
        bool signedAngles;
        std::string text;
    };
    for (const Case& c : {
             Case{0.0, 0.0, true, "PAN +000.00 TILT +00.00"},
             Case{-10.5, -5.0, true, "PAN -010.50 TILT -05.00"},
             Case{-10.5, -5.0, false, "PAN 349.50 TILT 355.00"},
             Case{190.25, 12.34, true, "PAN -169.75 TILT +12.34"},
             Case{190.25, 12.34, false, "PAN 190.25 TILT 012.34"},
             Case{-180.0, 90.0, true, "PAN +180.00 TILT +90.00"},
             Case{180.01, -180.01, true, "PAN -179.99 TILT +179.99"},
             Case{359.996, -0.004, false, "PAN 000.00 TILT 000.00"},
             Case{-719.5, 0.0, false, "PAN 000.50 TILT 000.00"},
         }) {
        SCOPED_TRACE(c.text);
        EXPECT_EQ(angleText(c.pan, c.tilt, c.signedAngles), c.text);
    }
    VideoSnapshot snapshot = aimedAtTheTower();
    snapshot.tilt = -5.0;
    snapshot.videoMode = modeByte(1);
    snapshot.angleDisplay = displayByte<vocab::AngleDisplay>(4, true);
    const Picture signedPicture = output(snapshot, 0);
    snapshot.angleDisplay = displayByte<vocab::AngleDisplay>(4, false);
    EXPECT_GT(differences(signedPicture, output(snapshot, 0)), 0);
}

TEST(VideoOutputs, TheStandardFollowsThePalBit) {
    EXPECT_EQ(standardFormat(modeByte(0)), (VideoFormat{640, 480, 30}));
    EXPECT_EQ(standardFormat(modeByte(5, {mode::kPal})), (VideoFormat{768, 576, 25}));
}

TEST(VideoOutputs, TheSizeAndRateGivenOverrideTheStandardsEachOnItsOwn) {
    VideoSnapshot pal;
    pal.videoMode = modeByte(0, {mode::kPal});
    struct Case {
        VideoServerOptions options;
        VideoFormat format;
    };
    const Case cases[] = {
        {{}, {768, 576, 25}},
        {{0, "127.0.0.1", 1280, 720, 0}, {1280, 720, 25}},
        {{0, "127.0.0.1", 0, 0, 30}, {768, 576, 30}},
        {{0, "127.0.0.1", 0, 0, 1}, {768, 576, 1}},
        {{0, "127.0.0.1", 320, 180, 60}, {320, 180, 60}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.format.width * 100 + c.format.rate);
        const VideoServer server(c.options, [pal] { return pal; });
        EXPECT_EQ(server.formatFor(pal), c.format);
    }
}

TEST(UnitSnapshot, TakesTheReportedAnglesAndEachCamerasOwnLens) {
    UnitState state{UnitOptions{}};
    state.settings.panOffset = -1050;
    state.settings.tiltOffset = 250;
    state.motion.moveToMechanical(3000, -1000, state.settings);
    state.lenses.moveTo({10, 20, 30, 40}, state.settings);
    for (int step = 0; step < 60000 && (state.motion.moving() || state.lenses.moving()); ++step) {
        state.motion.step(0.01, state.settings);
        state.lenses.step(0.01);
    }
    state.settings.videoMode = modeByte(6, {mode::kPal});
    state.settings.videoPower = powerByte(false, true);
    state.settings.angleDisplay = displayByte<vocab::AngleDisplay>(2, true);
    state.settings.nameDisplay = displayByte<vocab::NameDisplay>(14);
    state.settings.siteName = {'H', 'I', 'L', 'L', ' ', ' ', ' ', ' ', ' ', ' ', ' ', ' '};

    const VideoSnapshot snapshot = videoSnapshotOf(state);
    EXPECT_DOUBLE_EQ(snapshot.pan, 19.5) << "30.00 mechanical, -10.50 offset";
    EXPECT_DOUBLE_EQ(snapshot.tilt, -7.5);
    EXPECT_EQ(snapshot.lenses[0].zoom, 10);
    EXPECT_EQ(snapshot.lenses[0].focus, 20);
    EXPECT_EQ(snapshot.lenses[1].zoom, 30);
    EXPECT_EQ(snapshot.lenses[1].focus, 40);
    EXPECT_EQ(snapshot.videoMode, state.settings.videoMode);
    EXPECT_EQ(snapshot.videoPower, state.settings.videoPower);
    EXPECT_EQ(snapshot.angleDisplay, state.settings.angleDisplay);
    EXPECT_EQ(snapshot.nameDisplay, state.settings.nameDisplay);
    EXPECT_EQ(snapshot.siteName, state.settings.siteName);
}

}  // namespace
}  // namespace halvex::sim::video
