// The console's live video against halvex-sim's video outputs over RTSP: the
// picture is shown, a click on a landmark brings it to the centre, a box
// zooms in on it, a route change on the unit changes what a pane shows, and
// a stream server that goes away and comes back brings the picture back.

#include <gtest/gtest.h>

#include <QDir>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QToolButton>
#include <algorithm>
#include <cmath>
#include <memory>

#include "live_video/live_video.h"
#include "live_video/preset_thumbnails.h"
#include "live_video/video_aim.h"
#include "live_video/video_pane.h"
#include "live_video/video_panel.h"
#include "session/session.h"
#include "session/unit_connection.h"
#include "sim/video/scene.h"
#include "tests/live_video/recorded_video.h"
#include "tests/support/finish.h"
#include "tests/support/run_until.h"
#include "tests/support/sim_process.h"

namespace halvex::testing {
namespace {

// Where a landmark's round target shows in a picture, as fractions, and how
// many pixels it covers; nothing when it is out of sight.
struct Seen {
    QPointF centre;
    int pixels = 0;
};
std::optional<Seen> targetIn(const QImage& picture, const sim::video::Landmark& landmark) {
    const auto near = [](int a, int b) { return std::abs(a - b) < 60; };
    double x = 0;
    double y = 0;
    int count = 0;
    for (int row = 0; row < picture.height(); ++row) {
        const auto* line = reinterpret_cast<const QRgb*>(picture.constScanLine(row));
        for (int column = 0; column < picture.width(); ++column) {
            const QRgb pixel = line[column];
            if (near(qRed(pixel), landmark.target.r) && near(qGreen(pixel), landmark.target.g) &&
                near(qBlue(pixel), landmark.target.b)) {
                x += column + 0.5;
                y += row + 0.5;
                ++count;
            }
        }
    }
    if (count < 20) {
        return std::nullopt;
    }
    return Seen{{x / count / picture.width(), y / count / picture.height()}, count};
}

class VideoEndToEnd : public ::testing::Test {
  protected:
    static constexpr int kWidth = 640;
    static constexpr int kHeight = 360;

    void SetUp() override {
        startServer(QStringLiteral("0"));
        ASSERT_FALSE(videoPort.isEmpty()) << sim->errorOutput().toStdString();
        VideoPipeline::Timing timing;
        timing.stallMs = 1000;
        timing.firstRetryMs = 200;
        timing.longestRetryMs = 600;
        for (int output : {0, 1}) {
            live.pipeline(output).setTiming(timing);
            QObject::connect(&live.pipeline(output), &VideoPipeline::frameArrived,
                             [this, output] { ++frames[output]; });
        }
        panel.resize(1300, 420);
        panel.show();
        live.setChoice({{QStringLiteral("rtsp://127.0.0.1:%1/out1").arg(videoPort),
                         QStringLiteral("rtsp://127.0.0.1:%1/out2").arg(videoPort)},
                        {}});
        ASSERT_TRUE(finish(connection.start(), 30000) && session.online());
        ASSERT_TRUE(runUntil([&] { return pane().hasPicture(); }, 15000));
    }

    void startServer(const QString& port) {
        sim = std::make_unique<SimProcess>(QStringList{
            QStringLiteral("--tcp"), QStringLiteral("0"), QStringLiteral("--video"), port,
            QStringLiteral("--video-size"), QStringLiteral("%1x%2").arg(kWidth).arg(kHeight)});
        runUntil(
            [&] {
                const auto found =
                    QRegularExpression(QStringLiteral("rtsp://127.0.0.1:(\\d+)/out1"))
                        .match(sim->errorOutput());
                videoPort = found.hasMatch() ? found.captured(1) : QString();
                return !videoPort.isEmpty();
            },
            5000);
    }

    VideoPane& pane(int output = 0) { return panel.pane(output); }

    void idle(int ms) {
        runUntil([] { return false; }, ms);
    }

    // Waits for `count` more frames of an output.
    bool moreFrames(int count, int output = 0) {
        const int until = frames[output] + count;
        return runUntil([&] { return frames[output] >= until; }, 5000);
    }

    // The picture once the platform and lenses have come to rest (the
    // lenses are not in the moving bits: they have stopped when a while
    // passes with no change) and frames drawn after that have arrived; the
    // stream has no latency.
    QImage settledPicture() {
        for (int i = 0; i < 200; ++i) {
            const UnitStatus before = session.status();
            idle(100);
            if (!before.Moving() && !session.status().Moving() &&
                session.status().Lens == before.Lens) {
                break;
            }
        }
        EXPECT_TRUE(moreFrames(3));
        return live.pipeline(0).lastFrame();
    }

    const sim::video::Landmark& house = sim::video::kLandmarks[0];
    std::unique_ptr<SimProcess> sim;
    QString videoPort;
    Session session{nullptr, 10};
    UnitConnection connection{session,
                              {[this] { return sim->device(); }, [] { return 57600; },
                               [] { return QStringLiteral("COM1"); }}};
    VideoPanel panel;
    std::vector<QString> told;
    std::array<int, 2> frames{};
    LiveVideo live{session, panel, [this](const QString& text) { told.push_back(text); }};
};

TEST_F(VideoEndToEnd, AClickBringsALandmarkToTheCentreAndABoxZoomsInOnIt) {
    const QImage first = live.pipeline(0).lastFrame();
    EXPECT_EQ(first.size(), QSize(kWidth, kHeight));
    // A preset stored now would keep output 1's picture.
    EXPECT_EQ(pictureToKeep(live).cacheKey(), live.pipeline(0).lastFrame().cacheKey());
    const auto before = targetIn(first, house);
    ASSERT_TRUE(before) << "the house is in view at the start";
    ASSERT_GT(std::abs(before->centre.x() - 0.5), 0.1) << "and away from the centre";

    emit pane().centreRequested(before->centre);
    const auto centred = targetIn(settledPicture(), house);
    ASSERT_TRUE(centred);
    EXPECT_LT(std::abs(centred->centre.x() - 0.5), 0.02);
    EXPECT_LT(std::abs(centred->centre.y() - 0.5) * kHeight / kWidth, 0.02);
    EXPECT_TRUE(told.empty());

    // A box two fifths of the picture's width about the target, a little
    // off centre: the lens narrows to about two fifths of its field, and the
    // target moves 2.5 times as far from the centre.
    const int zoomBefore = session.status().Lens[0];
    const QPointF middle = centred->centre + QPointF(0.06, 0.02);
    emit pane().boxRequested(QRectF(middle - QPointF(0.2, 0.2), QSizeF(0.4, 0.4)));
    const auto zoomed = targetIn(settledPicture(), house);
    ASSERT_TRUE(zoomed);
    EXPECT_GT(session.status().Lens[0], zoomBefore);
    EXPECT_GT(zoomed->pixels, centred->pixels * 4);
    EXPECT_LT(std::abs(zoomed->centre.x() - (0.5 - 0.06 * 2.5)), 0.05);
}

TEST_F(VideoEndToEnd, ARouteChangeOnTheUnitChangesWhatThePaneShows) {
    // Camera 2's lens opens wide; route 6 puts camera 2 on both outputs.
    ASSERT_TRUE(finish(session.moveToWithLenses({0, 0}, {128, 128, 0, 128})).isDone());
    const auto camera1 = targetIn(settledPicture(), house);
    ASSERT_TRUE(camera1);
    // The route is sent with the power and blanking as the unit has them.
    ASSERT_TRUE(finish(session.readVideo()).isDone());
    VideoSettings video = session.status().Video;
    video.route = 6;
    ASSERT_TRUE(finish(session.setVideo(video)).isDone());
    EXPECT_EQ(live.aim(0).camera(), 1);
    const auto camera2 = targetIn(settledPicture(), house);
    ASSERT_TRUE(camera2);
    // The wide lens shows the target far smaller.
    EXPECT_LT(camera2->pixels * 8, camera1->pixels);
}

// "OK" in the sources dialog with one source changed: the other output's
// stream goes on, the changed one plays the new source at once.
TEST_F(VideoEndToEnd, AChoiceRestartsOnlyTheOutputWhoseSourceChanged) {
    ASSERT_TRUE(runUntil([&] { return pane(1).hasPicture(); }, 15000));
    LiveVideoChoice choice = live.choice();
    choice.sources[0] = choice.sources[1];
    live.setChoice(choice);
    EXPECT_EQ(live.pipeline(1).state(), VideoPipeline::State::Playing);
    EXPECT_EQ(live.pipeline(0).source().address, choice.sources[1]);
    EXPECT_TRUE(runUntil([&] { return pane(0).hasPicture(); }, 15000));
}

TEST_F(VideoEndToEnd, TheStreamsStopAWhileOutOfSightAndComeBackInSightAndWithTheirServer) {
    live.setOutOfSightMs(300);
    panel.hide();
    idle(150);
    EXPECT_EQ(live.pipeline(0).state(), VideoPipeline::State::Playing);
    EXPECT_EQ(live.pipeline(1).state(), VideoPipeline::State::Playing);
    EXPECT_TRUE(runUntil(
        [&] {
            return live.pipeline(0).state() == VideoPipeline::State::Off &&
                   live.pipeline(1).state() == VideoPipeline::State::Off;
        },
        3000));
    panel.show();
    EXPECT_TRUE(runUntil([&] { return pane().hasPicture(); }, 15000));

    // The stream server goes away and comes back on the same port.
    const QString port = videoPort;
    sim.reset();
    ASSERT_TRUE(runUntil([&] { return !pane().hasPicture(); }, 8000));
    EXPECT_EQ(live.pipeline(0).state(), VideoPipeline::State::Lost);
    EXPECT_FALSE(pane().message().isEmpty());
    startServer(port);
    ASSERT_EQ(videoPort, port);
    EXPECT_TRUE(runUntil([&] { return pane().hasPicture() && pane(1).hasPicture(); }, 15000));
}

TEST_F(VideoEndToEnd, TheButtonsSaveWhatTheOutputShows) {
    QTemporaryDir folder;
    live.setSaveFolder(folder.path());
    QSignalSpy events(&live, &LiveVideo::eventOccurred);
    const auto button = [&](const char* name) {
        return panel.findChild<QToolButton*>(QLatin1String(name));
    };

    // Two snapshots of output 1, however soon after each other, in two files.
    button("VideoSnapshot_0")->click();
    button("VideoSnapshot_0")->click();
    const QStringList pictures = QDir(folder.path()).entryList({QStringLiteral("*.png")});
    ASSERT_EQ(pictures.size(), 2);
    for (const QString& name : pictures) {
        EXPECT_TRUE(name.startsWith(QLatin1String("output1-"))) << name.toStdString();
        EXPECT_EQ(QImage(folder.filePath(name)).size(), QSize(kWidth, kHeight));
    }
    // Taken within one second, the second file's name takes a number.
    if (pictures[0].left(23) == pictures[1].left(23)) {
        EXPECT_TRUE(pictures[0].endsWith(QLatin1String("-2.png"))) << pictures[0].toStdString();
    }
    QStringList saidSaved;
    for (const QString& text : told) {
        saidSaved << text.section(QStringLiteral("Output 1: snapshot saved to "), 1);
    }
    saidSaved.sort();
    EXPECT_EQ(saidSaved, (QStringList{folder.filePath(pictures[0]), folder.filePath(pictures[1])}));

    // A recording of output 2, from the Record button down to its saved file.
    ASSERT_TRUE(runUntil([&] { return pane(1).hasPicture(); }, 15000));
    button("VideoRecord_1")->click();
    ASSERT_TRUE(live.pipeline(1).recording());
    EXPECT_TRUE(panel.recordButton(1).isChecked());
    const QString recording = told.back().section(QStringLiteral(" to "), 1);
    EXPECT_TRUE(told.back().startsWith(QLatin1String("Output 2: recording to ")));
    EXPECT_TRUE(QFileInfo(recording).fileName().startsWith(QLatin1String("output2-")));
    EXPECT_TRUE(recording.endsWith(QLatin1String(".mkv")));
    // A keyframe comes every second; a few frames follow it.
    ASSERT_TRUE(moreFrames(34, 1));
    button("VideoRecord_1")->click();
    EXPECT_FALSE(panel.recordButton(1).isChecked());
    const QString saved = QStringLiteral("Output 2: recording saved: ") + recording;
    ASSERT_TRUE(runUntil(
        [&] {
            return std::any_of(events.cbegin(), events.cend(),
                               [&](const QList<QVariant>& event) { return event.at(0) == saved; });
        },
        10000));
    const RecordedVideo file = readRecording(recording);
    EXPECT_EQ(file.decodedSize, QSize(kWidth, kHeight));
    EXPECT_GE(file.frames, 3);  // however slowly a checked build draws

    // With no picture shown, neither button saves anything, and each says so.
    live.setChoice({{QStringLiteral("none"), QStringLiteral("none")}, {}});
    told.clear();
    button("VideoSnapshot_0")->click();
    button("VideoRecord_0")->click();
    EXPECT_FALSE(panel.recordButton(0).isChecked());
    EXPECT_EQ(told, (std::vector<QString>{QStringLiteral("Output 1: no picture to save"),
                                          QStringLiteral("Output 1: nothing to record")}));
    EXPECT_EQ(QDir(folder.path()).entryList(QDir::Files).size(), 3);
}

}  // namespace
}  // namespace halvex::testing
