#include <gtest/gtest.h>

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
#include "tests/live_video/mjpeg_test_server.h"
#include "tests/live_video/recorded_video.h"
#include "tests/live_video/rtsp_test_server.h"
#include "tests/support/run_until.h"

namespace halvex {
namespace {

using halvex::testing::runUntil;
using testing::RtspTestServer;
using State = VideoPipeline::State;

// Short enough for the suite, long enough for a loaded machine.
VideoPipeline::Timing quickTiming() {
    VideoPipeline::Timing timing;
    timing.stallMs = 1000;
    timing.connectMs = 4000;
    timing.firstRetryMs = 200;
    timing.longestRetryMs = 600;
    timing.deviceRetryMs = 200;
    return timing;
}

// A pipeline and what it said.
struct Watched {
    Watched() {
        ensureGStreamer();
        pipeline->setTiming(quickTiming());
        QObject::connect(pipeline.get(), &VideoPipeline::stateChanged,
                         [this](State state, const QString&) { states.push_back(state); });
        QObject::connect(pipeline.get(), &VideoPipeline::frameArrived,
                         [this](const QImage& frame) { frames.push_back(frame.size()); });
        QObject::connect(pipeline.get(), &VideoPipeline::eventOccurred,
                         [this](const QString& text) { events.push_back(text); });
    }
    bool framesOfSize(QSize size, int count, int timeoutMs) {
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

int freeUdpPort() {
    QUdpSocket probe;
    probe.bind(QHostAddress::LocalHost, 0);
    return probe.localPort();
}

TEST(VideoPipelineRetry, ThePauseDoublesUpToTheLongest) {
    struct Case {
        int retries;
        int delayMs;
    };
    for (const Case entry : {Case{0, 1000}, Case{1, 2000}, Case{2, 4000}, Case{3, 5000},
                             Case{4, 5000}, Case{1000000, 5000}}) {
        SCOPED_TRACE(entry.retries);
        EXPECT_EQ(retryDelayMs(entry.retries, 1000, 5000), entry.delayMs);
    }
    EXPECT_EQ(retryDelayMs(5, 200, 600), 600);
}

TEST(VideoPipelineRtsp, FramesOfTheStreamsSizeArriveAfterConnecting) {
    RtspTestServer server(320, 240);
    ASSERT_NE(server.port(), 0);
    Watched watched;
    watched.pipeline->play(rtsp(server.url()));
    EXPECT_EQ(watched.pipeline->state(), State::Connecting);
    EXPECT_TRUE(watched.pipeline->message().contains(server.url()));

    ASSERT_TRUE(watched.framesOfSize(QSize(320, 240), 3, 8000));
    EXPECT_EQ(watched.pipeline->state(), State::Playing);
    EXPECT_EQ(watched.states.front(), State::Connecting);
    EXPECT_EQ(watched.states.back(), State::Playing);
    EXPECT_EQ(watched.pipeline->lastFrame().size(), QSize(320, 240));

    // Stopped, it shows nothing more of the stream.
    watched.pipeline->stop();
    EXPECT_EQ(watched.pipeline->state(), State::Off);
    const std::size_t shown = watched.frames.size();
    runUntil([] { return false; }, 300);
    EXPECT_EQ(watched.frames.size(), shown);
}

TEST(VideoPipelineRtsp, AStreamThatDropsComesBackByItselfAtItsNewSize) {
    auto server = std::make_unique<RtspTestServer>(320, 240);
    const int port = server->port();
    const QString url = server->url();
    Watched watched;
    watched.pipeline->play(rtsp(url));
    ASSERT_TRUE(watched.framesOfSize(QSize(320, 240), 1, 8000));

    // The unit restarts: gone for a while, then back on the same port with
    // another picture size.
    server.reset();
    ASSERT_TRUE(runUntil([&] { return watched.pipeline->state() == State::Lost; }, 5000));
    EXPECT_TRUE(watched.pipeline->message().startsWith(QLatin1String("stream lost")));
    EXPECT_TRUE(watched.saidSomething(QStringLiteral("video ") + url));
    server = std::make_unique<RtspTestServer>(480, 360, port);
    ASSERT_EQ(server->port(), port);

    ASSERT_TRUE(watched.framesOfSize(QSize(480, 360), 2, 8000));
    EXPECT_EQ(watched.pipeline->state(), State::Playing);
    EXPECT_TRUE(watched.pipeline->message().isEmpty());
}

TEST(VideoPipelineRtsp, ARecordingIsTheStreamsH264InMatroska) {
    RtspTestServer server(320, 240);
    Watched watched;
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("out1.mkv"));

    EXPECT_FALSE(watched.pipeline->startRecording(path));  // nothing to record yet
    EXPECT_TRUE(watched.saidSomething(QStringLiteral("cannot record")));

    watched.pipeline->play(rtsp(server.url()));
    ASSERT_TRUE(watched.framesOfSize(QSize(320, 240), 1, 8000));
    ASSERT_TRUE(watched.pipeline->startRecording(path));
    EXPECT_TRUE(watched.pipeline->recording());
    EXPECT_FALSE(watched.pipeline->startRecording(dir.filePath(QStringLiteral("second.mkv"))));
    runUntil([] { return false; }, 1000);
    watched.pipeline->stopRecording();
    EXPECT_FALSE(watched.pipeline->recording());
    ASSERT_TRUE(runUntil(
        [&] { return watched.saidSomething(QStringLiteral("recording saved: ") + path); }, 3000));

    const testing::RecordedVideo recorded = testing::readRecording(path);
    EXPECT_EQ(recorded.encoding, QStringLiteral("video/x-h264"));
    EXPECT_TRUE(recorded.startsWithKeyframe);
    EXPECT_EQ(recorded.decodedSize, QSize(320, 240));
    EXPECT_GE(recorded.frames, 10);
    // The picture went on all the while.
    EXPECT_EQ(watched.pipeline->state(), State::Playing);
}

TEST(VideoPipelineRtsp, ARecordingEndedWithItsStreamIsStillAWholeFile) {
    RtspTestServer server(320, 240);
    Watched watched;
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("out1.mkv"));
    watched.pipeline->play(rtsp(server.url()));
    ASSERT_TRUE(watched.framesOfSize(QSize(320, 240), 1, 8000));
    ASSERT_TRUE(watched.pipeline->startRecording(path));
    runUntil([] { return false; }, 1000);

    watched.pipeline->stop();
    EXPECT_TRUE(watched.saidSomething(QStringLiteral("recording ended with the stream")));
    // The stream is taken down away from this thread, once the file's end
    // is written.
    testing::RecordedVideo recorded;
    EXPECT_TRUE(runUntil(
        [&] {
            recorded = testing::readRecording(path);
            return recorded.durationMs > 0;
        },
        4000));
    EXPECT_GE(recorded.durationMs, 500);
    EXPECT_GE(recorded.frames, 10);
}

TEST(VideoPipelineRtsp, ARecordingThatCannotBeWrittenEndsAndThePictureGoesOn) {
    RtspTestServer server(320, 240);
    Watched watched;
    watched.pipeline->play(rtsp(server.url()));
    ASSERT_TRUE(watched.framesOfSize(QSize(320, 240), 1, 8000));

    EXPECT_FALSE(watched.pipeline->startRecording(QStringLiteral("/nonexistent/folder/x.mkv")));
    EXPECT_TRUE(watched.saidSomething(QStringLiteral("cannot record: cannot write")));

    // A disk that is full: the file opens, writing fails.
    ASSERT_TRUE(watched.pipeline->startRecording(QStringLiteral("/dev/full")));
    ASSERT_TRUE(runUntil([&] { return !watched.pipeline->recording(); }, 3000));
    // The failure is told from the stream's thread, and may come a moment
    // after the branch is gone.
    EXPECT_TRUE(
        runUntil([&] { return watched.saidSomething(QStringLiteral("recording failed")); }, 3000))
        << QStringList(watched.events.begin(), watched.events.end())
               .join(QLatin1Char(';'))
               .toStdString();
    EXPECT_TRUE(watched.framesOfSize(QSize(320, 240), 10, 3000));
    EXPECT_EQ(watched.pipeline->state(), State::Playing);
}

TEST(VideoPipelineHttp, AnMjpegCamerasPicturesShowAndRecordAsJpegs) {
    testing::MjpegTestServer camera(160, 120);
    Watched watched;
    watched.pipeline->play(*parseVideoSource(camera.url()));
    ASSERT_TRUE(watched.framesOfSize(QSize(160, 120), 2, 5000));
    EXPECT_EQ(watched.pipeline->state(), State::Playing);

    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("camera.mkv"));
    ASSERT_TRUE(watched.pipeline->startRecording(path));
    runUntil([] { return false; }, 500);
    watched.pipeline->stopRecording();
    ASSERT_TRUE(runUntil(
        [&] { return watched.saidSomething(QStringLiteral("recording saved: ") + path); }, 3000));
    const testing::RecordedVideo recorded = testing::readRecording(path);
    EXPECT_EQ(recorded.encoding, QStringLiteral("image/jpeg"));
    EXPECT_EQ(recorded.decodedSize, QSize(160, 120));
    EXPECT_GE(recorded.frames, 3);
}

TEST(VideoPipelineSources, AnAddressThatIsNoSourceFailsAtOnce) {
    const VideoSource refused[] = {
        {VideoSource::Kind::Rtsp, QStringLiteral("not an address")},
        {VideoSource::Kind::Udp, QStringLiteral("rtsp://127.0.0.1/out1")},
        {VideoSource::Kind::Device, QStringLiteral("/etc/passwd")},
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
    runUntil([] { return false; }, 500);
    EXPECT_EQ(watched.pipeline->state(), State::Failed);
    EXPECT_EQ(watched.states.size(), 2u);  // connecting, then failed
}

TEST(VideoPipelineSources, AnAddressIsNeverTakenAsPipelineSyntax) {
    QTemporaryDir dir;
    const QString target = dir.filePath(QStringLiteral("y"));
    struct Case {
        QString address;
        State state;
    };
    // As typed, refused; percent-encoded, a valid address that the RTSP
    // source tries and fails.
    const Case cases[] = {
        {QStringLiteral("rtsp://127.0.0.1:1/x ! filesink location=") + target, State::Failed},
        {QStringLiteral("rtsp://127.0.0.1:1/x%20!%20filesink%20location=") + target, State::Lost},
    };
    for (const Case& entry : cases) {
        SCOPED_TRACE(entry.address.toStdString());
        Watched watched;
        watched.pipeline->play(rtsp(entry.address));
        EXPECT_TRUE(runUntil([&] { return watched.pipeline->state() == entry.state; }, 5000));
        EXPECT_FALSE(QFile::exists(target));
    }
}

// The longest gap between ticks of a 20 ms timer while `during` runs: how
// long the user-interface thread was held up.
template <typename During>
qint64 longestStall(During during) {
    QElapsedTimer sinceTick;
    sinceTick.start();
    qint64 longest = 0;
    QTimer tick;
    QObject::connect(&tick, &QTimer::timeout,
                     [&] { longest = std::max(longest, sinceTick.restart()); });
    tick.start(20);
    during();
    return std::max(longest, sinceTick.elapsed());
}

TEST(VideoPipelineSources, GarbageOverUdpNeitherCrashesNorHoldsUpTheConsole) {
    const char* schemes[] = {"udp", "rtp"};
    for (const char* scheme : schemes) {
        SCOPED_TRACE(scheme);
        const int port = freeUdpPort();
        Watched watched;
        watched.pipeline->play(*parseVideoSource(
            QStringLiteral("%1://127.0.0.1:%2").arg(QLatin1String(scheme)).arg(port)));
        QUdpSocket sender;
        const qint64 stall = longestStall([&] {
            QTimer send;
            QObject::connect(&send, &QTimer::timeout, [&] {
                for (int i = 0; i < 20; ++i) {
                    QByteArray junk(1000 + i * 20, Qt::Uninitialized);
                    QRandomGenerator::global()->fillRange(reinterpret_cast<quint32*>(junk.data()),
                                                          junk.size() / 4);
                    sender.writeDatagram(junk, QHostAddress::LocalHost, static_cast<quint16>(port));
                }
            });
            send.start(10);
            runUntil([] { return false; }, 800);
        });
        EXPECT_LT(stall, 500);
        EXPECT_NE(watched.pipeline->state(), State::Playing);
        EXPECT_TRUE(watched.frames.empty());
        QElapsedTimer destroying;
        destroying.start();
        watched.pipeline.reset();
        EXPECT_LT(destroying.elapsed(), 200);
    }
}

TEST(VideoPipelineSources, AStreamThatWarnsAtEveryPacketFillsNoEventList) {
    const int port = freeUdpPort();
    Watched watched;
    watched.pipeline->play(*parseVideoSource(QStringLiteral("rtp://127.0.0.1:%1").arg(port)));
    // Well-formed RTP whose H.264 payload is a unit of an undefined type:
    // the depayloader warns at each one and passes nothing on.
    QUdpSocket sender;
    quint16 sequence = 0;
    QTimer send;
    QObject::connect(&send, &QTimer::timeout, [&] {
        for (int i = 0; i < 10; ++i, ++sequence) {
            const quint32 stamp = sequence * 3000u;
            const char packet[] = {'\x80',
                                   '\x60',
                                   static_cast<char>(sequence >> 8),
                                   static_cast<char>(sequence),
                                   static_cast<char>(stamp >> 24),
                                   static_cast<char>(stamp >> 16),
                                   static_cast<char>(stamp >> 8),
                                   static_cast<char>(stamp),
                                   0x12,
                                   0x34,
                                   0x56,
                                   0x78,
                                   0x00,
                                   0x55};
            sender.writeDatagram(packet, sizeof packet, QHostAddress::LocalHost,
                                 static_cast<quint16>(port));
        }
    });
    send.start(10);
    runUntil([] { return false; }, 1000);
    EXPECT_EQ(watched.events.size(), 8u);
    EXPECT_EQ(watched.pipeline->state(), State::Connecting);
}

TEST(VideoPipelineSources, GarbageOverHttpNeitherCrashesNorHoldsUpTheConsole) {
    QTcpServer camera;
    ASSERT_TRUE(camera.listen(QHostAddress::LocalHost));
    QObject::connect(&camera, &QTcpServer::newConnection, [&] {
        QTcpSocket* client = camera.nextPendingConnection();
        QObject::connect(client, &QTcpSocket::readyRead, client, [client] {
            client->readAll();
            client->write(
                "HTTP/1.0 200 OK\r\n"
                "Content-Type: multipart/x-mixed-replace; boundary=frame\r\n\r\n");
            for (int i = 0; i < 50; ++i) {
                QByteArray junk(4000, Qt::Uninitialized);
                QRandomGenerator::global()->fillRange(reinterpret_cast<quint32*>(junk.data()),
                                                      junk.size() / 4);
                client->write(i % 5 == 0
                                  ? QByteArray("--frame\r\nContent-Type: image/jpeg\r\n\r\n") + junk
                                  : junk);
            }
            client->disconnectFromHost();
        });
    });
    Watched watched;
    watched.pipeline->play(*parseVideoSource(
        QStringLiteral("http://127.0.0.1:%1/video.mjpg").arg(camera.serverPort())));
    const qint64 stall = longestStall([&] { runUntil([] { return false; }, 1000); });
    EXPECT_LT(stall, 500);
    EXPECT_NE(watched.pipeline->state(), State::Playing);
    EXPECT_TRUE(watched.frames.empty());
}

TEST(VideoPipelineSources, LettingGoOfAServerThatNeverAnswersDoesNotWait) {
    // Takes the connection and says nothing, as a unit that hangs.
    QTcpServer silent;
    ASSERT_TRUE(silent.listen(QHostAddress::LocalHost));
    for (const bool destroy : {false, true}) {
        SCOPED_TRACE(destroy ? "destroyed" : "stopped");
        Watched watched;
        watched.pipeline->play(
            rtsp(QStringLiteral("rtsp://127.0.0.1:%1/out1").arg(silent.serverPort())));
        ASSERT_TRUE(runUntil([&] { return silent.hasPendingConnections(); }, 3000));
        QElapsedTimer clock;
        clock.start();
        if (destroy) {
            watched.pipeline.reset();
        } else {
            watched.pipeline->stop();
            EXPECT_EQ(watched.pipeline->state(), State::Off);
        }
        EXPECT_LT(clock.elapsed(), 200);
        delete silent.nextPendingConnection();
    }
}

}  // namespace
}  // namespace halvex
