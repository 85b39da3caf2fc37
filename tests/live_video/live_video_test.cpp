// The console's two outputs against an RTSP server in the test's own
// process: the sources chosen, the streams let go while out of sight, and
// the snapshot and record buttons.

#include <gtest/gtest.h>

#include <QDir>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QToolButton>
#include <algorithm>

#include "live_video/gstreamer.h"
#include "live_video/live_video.h"
#include "live_video/preset_thumbnails.h"
#include "live_video/video_pane.h"
#include "live_video/video_panel.h"
#include "session/session.h"
#include "tests/live_video/rtsp_test_server.h"
#include "tests/support/run_until.h"

namespace halvex::testing {
namespace {

class LiveVideoTest : public ::testing::Test {
  protected:
    void SetUp() override {
        ASSERT_NE(server.port(), 0);
        QObject::connect(&live.pipeline(1), &VideoPipeline::frameArrived, [this] { ++frames; });
        panel.show();
        live.setChoice({{server.url(), server.url()}, {}});
        ASSERT_TRUE(runUntil([&] { return pane(0).hasPicture() && pane(1).hasPicture(); }, 8000));
    }

    VideoPane& pane(int output) { return panel.pane(output); }
    QToolButton* button(const char* name) {
        return panel.findChild<QToolButton*>(QLatin1String(name));
    }

    bool gstreamer = (ensureGStreamer(), true);
    RtspTestServer server{320, 240};
    Session session{nullptr, 10};
    VideoPanel panel;
    std::vector<QString> told;
    int frames = 0;  // of output 2
    LiveVideo live{session, panel, [this](const QString& text) { told.push_back(text); }};
};

TEST_F(LiveVideoTest, TheStreamsStopAWhileOutOfSightAndComeBackInSight) {
    live.setOutOfSightMs(300);
    panel.hide();
    runUntil([] { return false; }, 150);
    EXPECT_EQ(live.pipeline(0).state(), VideoPipeline::State::Playing);
    EXPECT_EQ(live.pipeline(1).state(), VideoPipeline::State::Playing);
    EXPECT_TRUE(runUntil(
        [&] {
            return live.pipeline(0).state() == VideoPipeline::State::Off &&
                   live.pipeline(1).state() == VideoPipeline::State::Off;
        },
        3000));
    panel.show();
    EXPECT_TRUE(runUntil([&] { return pane(0).hasPicture() && pane(1).hasPicture(); }, 8000));
}

TEST_F(LiveVideoTest, TheButtonsSaveWhatTheOutputShows) {
    QTemporaryDir folder;
    live.setSaveFolder(folder.path());
    QSignalSpy events(&live, &LiveVideo::eventOccurred);

    // Two snapshots of output 1, however soon after each other, in two files.
    button("VideoSnapshot_0")->click();
    button("VideoSnapshot_0")->click();
    const QStringList pictures = QDir(folder.path()).entryList({QStringLiteral("*.png")});
    ASSERT_EQ(pictures.size(), 2);
    for (const QString& name : pictures) {
        EXPECT_TRUE(name.startsWith(QLatin1String("output1-"))) << name.toStdString();
        EXPECT_EQ(QImage(folder.filePath(name)).size(), QSize(320, 240));
        const QString said = QStringLiteral("Output 1: snapshot saved to ") + folder.filePath(name);
        EXPECT_NE(std::find(told.cbegin(), told.cend(), said), told.cend()) << name.toStdString();
    }
    // Taken within one second, the second file's name takes a number.
    if (pictures[0].left(23) == pictures[1].left(23)) {
        EXPECT_TRUE(pictures[0].endsWith(QLatin1String("-2.png"))) << pictures[0].toStdString();
    }

    // A recording of output 2, from the Record button down to its saved file.
    button("VideoRecord_1")->click();
    ASSERT_TRUE(live.pipeline(1).recording());
    EXPECT_TRUE(panel.recordButton(1).isChecked());
    const QString recording = told.back().section(QStringLiteral(" to "), 1);
    EXPECT_TRUE(told.back().startsWith(QLatin1String("Output 2: recording to ")));
    EXPECT_TRUE(QFileInfo(recording).fileName().startsWith(QLatin1String("output2-")));
    EXPECT_TRUE(recording.endsWith(QLatin1String(".mkv")));
    // A keyframe comes every half second; a few frames follow it.
    const int until = frames + 25;
    ASSERT_TRUE(runUntil([&] { return frames >= until; }, 5000));
    button("VideoRecord_1")->click();
    EXPECT_FALSE(panel.recordButton(1).isChecked());
    const QString saved = QStringLiteral("Output 2: recording saved: ") + recording;
    ASSERT_TRUE(runUntil(
        [&] {
            return std::any_of(events.cbegin(), events.cend(),
                               [&](const QList<QVariant>& event) { return event.at(0) == saved; });
        },
        10000));

    // A preset stored now would keep output 1's picture.
    EXPECT_EQ(pictureToKeep(live).cacheKey(), live.pipeline(0).lastFrame().cacheKey());
    // "OK" in the sources dialog with one source changed: the other output's
    // stream goes on; with none, the pane says how to choose one, and neither
    // button saves anything.
    live.setChoice({{QStringLiteral("none"), server.url()}, {}});
    EXPECT_EQ(live.pipeline(1).state(), VideoPipeline::State::Playing);
    EXPECT_EQ(live.pipeline(0).state(), VideoPipeline::State::Off);
    EXPECT_EQ(pane(0).message(), QStringLiteral("no source: choose one with Sources..."));
    EXPECT_FALSE(pane(0).hasPicture());
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
