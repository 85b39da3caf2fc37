// halvex-video-latency: how long a frame takes from being drawn by the
// virtual unit to being shown by the console, and what showing one or two
// outputs costs the console's processor.
//
// Latency: the unit's video server runs in a thread of this process and
// notes the moment it hands each frame to its encoder; the console's
// pipeline reads the frame counter off each picture as it reaches the
// user-interface thread. Both clocks are this process's steady clock.
// Processor: halvex-sim serves the video from a process of its own, so that
// only the console's decoding and drawing count.

#include <QApplication>
#include <QProcess>
#include <QRegularExpression>
#include <QThread>
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <map>
#include <mutex>
#include <vector>

#include "bench/cpu_time.h"
#include "live_video/video_pane.h"
#include "live_video/video_pipeline.h"
#include "sim/unit.h"
#include "sim/video/frame_counter.h"
#include "sim/video/unit_snapshot.h"
#include "sim/video/video_server.h"
#include "tests/support/run_until.h"

namespace {

using Clock = std::chrono::steady_clock;
namespace video = halvex::sim::video;

constexpr int kWidth = 1280;
constexpr int kHeight = 720;
constexpr int kRate = 30;
constexpr int kWarmUpMs = 3000;
constexpr int kMeasureMs = 10000;

void pause(int ms) {
    halvex::testing::runUntil([] { return false; }, ms);
}

// The counter in the picture's top left corner; only the rows it takes are
// converted (its blocks are sized by the picture's width).
std::optional<std::uint32_t> counterOf(const QImage& frame) {
    const int block = std::max(4, frame.width() / 60);
    const QImage corner =
        frame.copy(0, 0, frame.width(), block * 2).convertToFormat(QImage::Format_RGB888);
    return video::readFrameCounter(corner.constBits(), corner.width(), corner.height(),
                                   static_cast<int>(corner.bytesPerLine()));
}

double percentile(std::vector<double> values, double share) {
    std::sort(values.begin(), values.end());
    const auto at = static_cast<std::size_t>(share * static_cast<double>(values.size() - 1));
    return values.at(at);
}

int measureLatency() {
    halvex::sim::Unit unit;
    const video::VideoSnapshot still = video::videoSnapshotOf(unit.state());
    std::mutex drawnMutex;
    std::map<std::uint32_t, Clock::time_point> drawn;

    QThread serverThread;
    serverThread.start();
    QObject inServerThread;
    inServerThread.moveToThread(&serverThread);
    video::VideoServer* server = nullptr;
    QMetaObject::invokeMethod(
        &inServerThread,
        [&] {
            server = new video::VideoServer({0, "127.0.0.1", kWidth, kHeight, kRate},
                                            [still] { return still; });
            server->onFrameDrawn([&](int output, std::uint32_t frame) {
                if (output == 0) {
                    const std::lock_guard lock(drawnMutex);
                    drawn[frame] = Clock::now();
                }
            });
            if (!server->start()) {
                delete server;
                server = nullptr;
            }
        },
        Qt::BlockingQueuedConnection);
    if (server == nullptr) {
        std::fprintf(stderr, "the video server did not start\n");
        return 1;
    }

    halvex::VideoPane pane(QStringLiteral("Output 1"));
    pane.resize(960, 540);
    pane.show();
    halvex::VideoPipeline pipeline;
    std::vector<double> latenciesMs;
    bool measuring = false;
    int unread = 0;
    QObject::connect(&pipeline, &halvex::VideoPipeline::frameArrived, [&](const QImage& frame) {
        pane.setFrame(frame);
        const auto shown = Clock::now();
        const auto counter = counterOf(frame);
        if (!counter) {
            ++unread;
            return;
        }
        const std::lock_guard lock(drawnMutex);
        const auto found = drawn.find(*counter);
        if (measuring && found != drawn.end()) {
            latenciesMs.push_back(
                std::chrono::duration<double, std::milli>(shown - found->second).count());
        }
    });
    pipeline.play({halvex::VideoSource::Kind::Rtsp, QString::fromStdString(server->url(0))});
    pause(kWarmUpMs);
    measuring = true;
    pause(kMeasureMs);
    measuring = false;
    pipeline.stop();
    QMetaObject::invokeMethod(
        &inServerThread, [&] { delete server; }, Qt::BlockingQueuedConnection);
    serverThread.quit();
    serverThread.wait();
    if (latenciesMs.empty()) {
        std::fprintf(stderr, "no frame was read (%d without a readable counter)\n", unread);
        return 1;
    }
    std::printf(
        "latency, drawn to shown, %dx%d at %d/s over loopback RTSP: p50 %.1f ms, p99 "
        "%.1f ms, %zu frames (%d without a readable counter)\n",
        kWidth, kHeight, kRate, percentile(latenciesMs, 0.5), percentile(latenciesMs, 0.99),
        latenciesMs.size(), unread);
    return 0;
}

int measureProcessor() {
    QProcess sim;
    sim.start(QStringLiteral(HALVEX_SIM_PATH),
              {QStringLiteral("--tcp"), QStringLiteral("0"), QStringLiteral("--video"),
               QStringLiteral("0"), QStringLiteral("--video-size"),
               QStringLiteral("%1x%2").arg(kWidth).arg(kHeight), QStringLiteral("--video-rate"),
               QString::number(kRate)});
    QString said;
    QString port;
    halvex::testing::runUntil(
        [&] {
            said += QString::fromLocal8Bit(sim.readAllStandardError());
            const auto found =
                QRegularExpression(QStringLiteral("rtsp://127.0.0.1:(\\d+)/out1")).match(said);
            port = found.hasMatch() ? found.captured(1) : QString();
            return !port.isEmpty();
        },
        5000);
    if (port.isEmpty()) {
        std::fprintf(stderr, "halvex-sim did not serve video: %s\n", qPrintable(said));
        return 1;
    }
    std::vector<std::unique_ptr<halvex::VideoPane>> panes;
    std::vector<std::unique_ptr<halvex::VideoPipeline>> pipelines;
    for (int output = 0; output < 2; ++output) {
        auto& pane = panes.emplace_back(
            std::make_unique<halvex::VideoPane>(QStringLiteral("Output %1").arg(output + 1)));
        pane->resize(960, 540);
        pane->show();
        auto& pipeline = pipelines.emplace_back(std::make_unique<halvex::VideoPipeline>());
        QObject::connect(pipeline.get(), &halvex::VideoPipeline::frameArrived, pane.get(),
                         &halvex::VideoPane::setFrame);
        pipeline->play({halvex::VideoSource::Kind::Rtsp,
                        QStringLiteral("rtsp://127.0.0.1:%1/out%2").arg(port).arg(output + 1)});
        pause(kWarmUpMs);
        const double before = halvex::bench::cpuSeconds();
        pause(kMeasureMs);
        const double used = halvex::bench::cpuSeconds() - before;
        std::printf(
            "processor, the console showing %d pane%s of %dx%d at %d/s: %.1f %% of a "
            "core\n",
            output + 1, output == 0 ? "" : "s", kWidth, kHeight, kRate,
            100.0 * used / (kMeasureMs / 1000.0));
    }
    pipelines.clear();
    sim.terminate();
    sim.waitForFinished(3000);
    return 0;
}

}  // namespace

int main(int argc, char* argv[]) {
    QApplication app(argc, argv);
    const int latency = measureLatency();
    const int processor = measureProcessor();
    return latency != 0 ? latency : processor;
}
