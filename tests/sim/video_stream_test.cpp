// halvex-sim --video as a program runs it, and a real GStreamer client
// pulling an output over RTSP.

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QRegularExpression>
#include <QTest>
#include <memory>
#include <optional>
#include <string>

#include "protocol/vocabulary_video.h"
#include "sim/video/frame_counter.h"
#include "sim/video/video_server.h"
#include "tests/support/sim_process.h"

// GLib's headers name struct members "signals", which Qt's keyword macro
// would replace.
#undef signals
#include <gst/app/gstappsink.h>
#include <gst/gst.h>
#include <gst/video/video-info.h>

namespace halvex::sim::testing {
namespace {

// A client of one output: rtspsrc to decoded RGB frames, pulled one by one.
class Receiver {
  public:
    struct Frame {
        int width = 0;
        int height = 0;
        std::uint32_t counter = 0;
    };

    explicit Receiver(const std::string& url) {
        video::initialiseGstreamer();
        const std::string description =
            "rtspsrc location=" + url +
            " latency=0 ! rtph264depay ! avdec_h264 ! videoconvert ! video/x-raw,format=RGB "
            "! appsink name=frames max-buffers=8 drop=true sync=false";
        GError* error = nullptr;
        pipeline_ = gst_parse_launch(description.c_str(), &error);
        if (error != nullptr) {
            ADD_FAILURE() << error->message;
            g_clear_error(&error);
        }
        if (pipeline_ != nullptr) {
            sink_ = gst_bin_get_by_name(GST_BIN(pipeline_), "frames");
            gst_element_set_state(pipeline_, GST_STATE_PLAYING);
        }
    }
    ~Receiver() {
        if (sink_ != nullptr) {
            gst_object_unref(sink_);
        }
        if (pipeline_ != nullptr) {
            gst_element_set_state(pipeline_, GST_STATE_NULL);
            gst_object_unref(pipeline_);
        }
    }
    Receiver(const Receiver&) = delete;
    Receiver& operator=(const Receiver&) = delete;

    // The next decoded frame whose counter reads, within `timeoutMs`.
    std::optional<Frame> next(int timeoutMs) {
        QElapsedTimer clock;
        clock.start();
        while (sink_ != nullptr && clock.elapsed() < timeoutMs) {
            // A server in this process draws its frames on this thread's
            // event loop.
            QCoreApplication::processEvents();
            GstSample* sample = gst_app_sink_try_pull_sample(GST_APP_SINK(sink_), 10 * GST_MSECOND);
            if (sample == nullptr) {
                continue;
            }
            GstVideoInfo info;
            GstMapInfo map;
            GstBuffer* buffer = gst_sample_get_buffer(sample);
            std::optional<Frame> frame;
            if (gst_video_info_from_caps(&info, gst_sample_get_caps(sample)) &&
                gst_buffer_map(buffer, &map, GST_MAP_READ)) {
                const int width = GST_VIDEO_INFO_WIDTH(&info);
                const int height = GST_VIDEO_INFO_HEIGHT(&info);
                if (const auto counter = video::readFrameCounter(
                        map.data, width, height, GST_VIDEO_INFO_PLANE_STRIDE(&info, 0))) {
                    frame = Frame{width, height, *counter};
                }
                gst_buffer_unmap(buffer, &map);
            }
            gst_sample_unref(sample);
            if (frame) {
                return frame;
            }
        }
        return std::nullopt;
    }

  private:
    GstElement* pipeline_ = nullptr;
    GstElement* sink_ = nullptr;
};

TEST(VideoStream, AClientGetsCountedFramesOfEachOutputAndAnIdleSimRests) {
    SimProcess sim({"--tcp", "0", "--video", "0", "--video-size", "640x480", "--video-rate", "30"});
    ASSERT_FALSE(sim.device().isEmpty());
    // The "video on ..." line's port, once halvex-sim has said it.
    static const QRegularExpression line(QStringLiteral(
        "video on rtsp://127\\.0\\.0\\.1:(\\d+)/out1 and rtsp://127\\.0\\.0\\.1:\\1/out2\\n"));
    QRegularExpressionMatch said;
    ASSERT_TRUE(QTest::qWaitFor([&] { return (said = line.match(sim.errorOutput())).hasMatch(); }))
        << sim.errorOutput().toStdString();
    const std::string base = "rtsp://127.0.0.1:" + said.captured(1).toStdString() + "/out";

    {
        Receiver first(base + "1");
        Receiver second(base + "2");
        const auto one = first.next(4000);
        ASSERT_TRUE(one.has_value()) << "no readable frame from out1";
        EXPECT_EQ(one->width, 640);
        EXPECT_EQ(one->height, 480);
        ASSERT_TRUE(second.next(4000).has_value()) << "none from out2";
        QTest::qWait(150);
        const auto later = first.next(2000);
        ASSERT_TRUE(later.has_value());
        EXPECT_GT(later->counter, one->counter);
        EXPECT_LT(later->counter, one->counter + 300) << "counting frames, not time";
    }
    // The clients gone, drawing stops: ticks are hundredths of a second.
    QTest::qWait(500);
    const long after = sim.cpuTicks();
    QTest::qWait(400);
    EXPECT_LT(sim.cpuTicks() - after, 4) << "still drawing after the clients left";
    sim.stop();
    EXPECT_TRUE(sim.endedCleanly());
}

TEST(VideoStream, ThePictureFollowsTheStandardWhileStreamingAndTheServerStopsUnderAClient) {
    video::VideoSnapshot snapshot;
    snapshot.videoPower = vocab::maskOf(vocab::video_configuration::kCamera1Power);
    const auto snapshotNow = [&snapshot] { return snapshot; };
    auto server = std::make_unique<video::VideoServer>(video::VideoServerOptions{}, snapshotNow);
    std::string error;
    ASSERT_TRUE(server->start(&error)) << error;

    // A port in use is refused with the reason.
    video::VideoServerOptions same;
    same.port = server->port();
    video::VideoServer second(same, snapshotNow);
    EXPECT_FALSE(second.start(&error));
    EXPECT_EQ(error.rfind("cannot serve video on 127.0.0.1 port " + std::to_string(same.port), 0),
              0u)
        << error;

    Receiver receiver(server->url(0));
    const auto ntsc = receiver.next(4000);
    ASSERT_TRUE(ntsc.has_value());
    EXPECT_EQ(ntsc->width, 640);
    EXPECT_EQ(ntsc->height, 480);
    EXPECT_EQ(server->outputsStreaming(), 1);

    // PAL from now on: the same stream goes on at the new size.
    snapshot.videoMode = vocab::maskOf(vocab::video_configuration::kPal);
    std::optional<Receiver::Frame> pal;
    QElapsedTimer clock;
    clock.start();
    while (clock.elapsed() < 4000 && (!pal || pal->width != 768)) {
        pal = receiver.next(1000);
    }
    ASSERT_TRUE(pal.has_value());
    EXPECT_EQ(pal->width, 768);
    EXPECT_EQ(pal->height, 576);
    EXPECT_GT(pal->counter, ntsc->counter) << "the output went on counting";
    server.reset();  // with the client still there
}

// The encoder makes a key frame every second by itself; a viewer who
// joins just after one must not wait for the next.
TEST(VideoStream, AViewerJoiningARunningOutputGetsAKeyFrameAtOnce) {
    video::VideoServerOptions options;
    options.rate = 10;  // key frames at frames 0, 10, 20...
    std::uint32_t drawn = 0;
    video::VideoServer server(options, [] { return video::VideoSnapshot{}; });
    server.onFrameDrawn([&drawn](int, std::uint32_t frame) { drawn = frame; });
    ASSERT_TRUE(server.start());
    Receiver first(server.url(0));
    while (drawn < 100 && first.next(4000) && (drawn < 10 || drawn % 10 != 1)) {
    }
    const std::uint32_t joined = drawn;
    ASSERT_EQ(joined % 10, 1u);

    Receiver second(server.url(0));
    const auto seen = second.next(4000);
    ASSERT_TRUE(seen.has_value());
    EXPECT_LT(seen->counter, joined + 9) << "waited for the periodic key frame";
}

}  // namespace
}  // namespace halvex::sim::testing
