#include <gtest/gtest.h>

#include <QDataStream>
#include <QElapsedTimer>
#include <QFile>
#include <QRandomGenerator>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTemporaryDir>
#include <QUdpSocket>
#include <memory>

#include "live_video/gstreamer.h"
#include "live_video/video_pipeline.h"
#include "tests/live_video/recorded_video.h"
#include "tests/live_video/rtsp_test_server.h"
#include "tests/support/run_until.h"

namespace halvex {
namespace {

using halvex::testing::runUntil;
using testing::RtspTestServer;
using State = VideoPipeline::State;

// A pipeline with short waits, and what it said.
struct Watched {
    Watched() {
        ensureGStreamer();
        VideoPipeline::Timing timing;
        timing.stallMs = 1000;
        timing.connectMs = 4000;
        timing.firstRetryMs = 200;
        timing.longestRetryMs = 600;
        timing.deviceRetryMs = 100;
        pipeline->setTiming(timing);
        QObject::connect(pipeline.get(), &VideoPipeline::stateChanged,
                         [this](State state, const QString&) { states.push_back(state); });
        QObject::connect(pipeline.get(), &VideoPipeline::frameArrived,
                         [this](const QImage& frame) { frames.push_back(frame.size()); });
        QObject::connect(pipeline.get(), &VideoPipeline::eventOccurred,
                         [this](const QString& text) { events.push_back(text); });
    }
    bool framesOfSize(QSize size, int count, int timeoutMs = 8000) {
        const std::size_t before = frames.size();
        return runUntil(
            [&] {
                return std::count(frames.begin() + static_cast<std::ptrdiff_t>(before),
                                  frames.end(), size) >= count;
            },
            timeoutMs);
    }
    bool saidSomething(const QString& start) const {
        return std::any_of(events.begin(), events.end(),
                           [&](const QString& text) { return text.startsWith(start); });
    }

    std::unique_ptr<VideoPipeline> pipeline = std::make_unique<VideoPipeline>();
    std::vector<State> states;
    std::vector<QSize> frames;
    std::vector<QString> events;
};

VideoSource rtsp(const QString& url) {
    return VideoSource{VideoSource::Kind::Rtsp, url};
}

void idle(int ms) {
    runUntil([] { return false; }, ms);
}

TEST(VideoPipelineRetry, ThePauseDoublesUpToTheLongest) {
    const std::pair<int, int> cases[] = {{0, 1000}, {2, 4000}, {3, 5000}, {1000000, 5000}};
    for (const auto& [retries, delayMs] : cases) {
        EXPECT_EQ(retryDelayMs(retries, 1000, 5000), delayMs) << retries;
    }
}

// 30 frames a second with a keyframe every 15: 25 frames hold at least 10
// from a keyframe on.
TEST(VideoPipelineRtsp, FramesArriveAndARecordingEndedWithTheStreamIsAWholeH264File) {
    RtspTestServer server(320, 240);
    ASSERT_NE(server.port(), 0);
    Watched watched;
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("out1.mkv"));
    EXPECT_FALSE(watched.pipeline->startRecording(path));  // nothing to record yet
    EXPECT_TRUE(watched.saidSomething(QStringLiteral("cannot record")));

    watched.pipeline->play(rtsp(server.url()));
    EXPECT_EQ(watched.pipeline->state(), State::Connecting);
    EXPECT_TRUE(watched.pipeline->message().contains(server.url()));
    ASSERT_TRUE(watched.framesOfSize(QSize(320, 240), 3));
    EXPECT_EQ(watched.pipeline->state(), State::Playing);

    // Files that cannot be written: refused at once, or failing as a full
    // disk does; the picture goes on.
    EXPECT_FALSE(watched.pipeline->startRecording(QStringLiteral("/nonexistent/folder/x.mkv")));
    EXPECT_TRUE(watched.saidSomething(QStringLiteral("cannot record: cannot write")));
    ASSERT_TRUE(watched.pipeline->startRecording(QStringLiteral("/dev/full")));
    ASSERT_TRUE(runUntil([&] { return !watched.pipeline->recording(); }, 3000));
    // Told from the stream's thread, possibly after the branch is gone.
    EXPECT_TRUE(
        runUntil([&] { return watched.saidSomething(QStringLiteral("recording failed")); }, 3000));
    EXPECT_TRUE(watched.framesOfSize(QSize(320, 240), 3, 3000));

    ASSERT_TRUE(watched.pipeline->startRecording(path));
    EXPECT_FALSE(watched.pipeline->startRecording(dir.filePath(QStringLiteral("second.mkv"))));
    ASSERT_TRUE(watched.framesOfSize(QSize(320, 240), 25, 3000));

    watched.pipeline->stop();
    EXPECT_EQ(watched.pipeline->state(), State::Off);
    EXPECT_TRUE(watched.saidSomething(QStringLiteral("recording ended with the stream")));
    const std::size_t shown = watched.frames.size();
    // The stream is taken down away from this thread, once the file's end
    // is written.
    testing::RecordedVideo recorded;
    EXPECT_TRUE(runUntil(
        [&] {
            recorded = testing::readRecording(path);
            return recorded.durationMs > 0;
        },
        4000));
    EXPECT_EQ(recorded.encoding, QStringLiteral("video/x-h264"));
    EXPECT_TRUE(recorded.startsWithKeyframe);
    EXPECT_EQ(recorded.decodedSize, QSize(320, 240));
    EXPECT_GE(recorded.durationMs, 300);
    idle(100);
    EXPECT_EQ(watched.frames.size(), shown);  // nothing more shown once stopped
}

TEST(VideoPipelineRtsp, AStreamThatDropsComesBackByItselfAtItsNewSize) {
    auto server = std::make_unique<RtspTestServer>(320, 240);
    const int port = server->port();
    const QString url = server->url();
    Watched watched;
    watched.pipeline->play(rtsp(url));
    ASSERT_TRUE(watched.framesOfSize(QSize(320, 240), 1));

    // The unit restarts: gone for a while, then back on the same port with
    // another picture size.
    server.reset();
    ASSERT_TRUE(runUntil([&] { return watched.pipeline->state() == State::Lost; }, 5000));
    EXPECT_TRUE(watched.pipeline->message().startsWith(QLatin1String("stream lost")));
    EXPECT_TRUE(watched.saidSomething(QStringLiteral("video ") + url));
    server = std::make_unique<RtspTestServer>(480, 360, port);
    ASSERT_EQ(server->port(), port);

    ASSERT_TRUE(watched.framesOfSize(QSize(480, 360), 2));
    EXPECT_TRUE(watched.pipeline->message().isEmpty());
    EXPECT_EQ(std::count(watched.states.begin(), watched.states.end(), State::Connecting), 1)
        << "looked for again as lost, not as a new source";
}

TEST(VideoPipelineSources, AnAddressThatIsNoSourceFailsAtOnce) {
    const VideoSource refused[] = {
        {VideoSource::Kind::Rtsp, QStringLiteral("not an address")},
        {VideoSource::Kind::Udp, QStringLiteral("rtsp://127.0.0.1/out1")},
    };
    for (const VideoSource& source : refused) {
        SCOPED_TRACE(source.address.toStdString());
        Watched watched;
        watched.pipeline->play(source);
        EXPECT_EQ(watched.pipeline->state(), State::Failed);
        EXPECT_TRUE(watched.pipeline->message().startsWith(QLatin1String("not a video source: ")));
        EXPECT_EQ(watched.events.size(), 1u);
    }
}

TEST(VideoPipelineSources, AMissingDeviceIsNamedAndLookedForAgain) {
    const QString device = QStringLiteral("/dev/video7");
    if (QFile::exists(device)) {
        GTEST_SKIP() << "this machine has " << device.toStdString();
    }
    Watched watched;
    watched.pipeline->play(VideoSource{VideoSource::Kind::Device, device});
    EXPECT_EQ(watched.pipeline->state(), State::Failed);
    EXPECT_EQ(watched.pipeline->message(), QStringLiteral("no such device: /dev/video7"));
    // Still looked for, without a word each time.
    idle(250);
    EXPECT_EQ(watched.pipeline->state(), State::Failed);
    EXPECT_EQ(watched.states.size(), 2u);  // connecting, then failed
}

QByteArray junk(int size) {
    QByteArray bytes(size, Qt::Uninitialized);
    QRandomGenerator::global()->fillRange(reinterpret_cast<quint32*>(bytes.data()), size / 4);
    return bytes;
}

// Well-formed RTP whose H.264 payload is a unit of an undefined type: the
// depayloader warns at each one and passes nothing on.
QByteArray undefinedUnit(quint16 sequence) {
    QByteArray packet;
    QDataStream(&packet, QIODevice::WriteOnly)
        << quint8(0x80) << quint8(0x60) << sequence << quint32(sequence * 3000u)
        << quint32(0x12345678) << quint8(0x00) << quint8(0x55);
    return packet;
}

// Random datagrams to a UDP source, and to an RTP source a stream that
// warns at every packet; meanwhile a 20 ms timer measures how long the
// user-interface thread is held up.
TEST(VideoPipelineSources, GarbageNeitherCrashesNorHoldsUpTheConsoleNorFillsTheEventList) {
    // Free ports, both held until both are chosen so that they differ.
    QUdpSocket probes[2];
    for (QUdpSocket& probe : probes) {
        probe.bind(QHostAddress::LocalHost, 0);
    }
    const quint16 junkPort = probes[0].localPort();
    const quint16 warningPort = probes[1].localPort();
    for (QUdpSocket& probe : probes) {
        probe.close();
    }
    Watched junked;
    junked.pipeline->play(*parseVideoSource(QStringLiteral("udp://127.0.0.1:%1").arg(junkPort)));
    Watched warned;
    warned.pipeline->play(*parseVideoSource(QStringLiteral("rtp://127.0.0.1:%1").arg(warningPort)));
    QUdpSocket sender;
    quint16 sequence = 0;
    QTimer send;
    QObject::connect(&send, &QTimer::timeout, [&] {
        for (int i = 0; i < 20; ++i) {
            sender.writeDatagram(junk(1000 + i * 20), QHostAddress::LocalHost, junkPort);
        }
        for (int i = 0; i < 10; ++i) {
            sender.writeDatagram(undefinedUnit(sequence++), QHostAddress::LocalHost, warningPort);
        }
    });
    send.start(10);
    QElapsedTimer sinceTick;
    sinceTick.start();
    qint64 longest = 0;
    QTimer tick;
    QObject::connect(&tick, &QTimer::timeout,
                     [&] { longest = std::max(longest, sinceTick.restart()); });
    tick.start(20);
    idle(400);
    EXPECT_LT(std::max(longest, sinceTick.elapsed()), 500);
    send.stop();

    EXPECT_NE(junked.pipeline->state(), State::Playing);
    EXPECT_TRUE(junked.frames.empty());
    EXPECT_EQ(warned.events.size(), 8u);
    EXPECT_EQ(warned.pipeline->state(), State::Connecting);
}

// Takes the connection and says nothing, as a unit that hangs.
TEST(VideoPipelineSources, LettingGoOfAServerThatNeverAnswersDoesNotWait) {
    QTcpServer silent;
    ASSERT_TRUE(silent.listen(QHostAddress::LocalHost));
    Watched watched;
    watched.pipeline->play(
        rtsp(QStringLiteral("rtsp://127.0.0.1:%1/out1").arg(silent.serverPort())));
    ASSERT_TRUE(runUntil([&] { return silent.hasPendingConnections(); }, 3000));
    QElapsedTimer clock;
    clock.start();
    watched.pipeline.reset();
    EXPECT_LT(clock.elapsed(), 200);
    delete silent.nextPendingConnection();
}

}  // namespace
}  // namespace halvex
