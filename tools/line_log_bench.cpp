// Measures what the Line Log costs: CPU with the window open against the
// same console with it closed, at the line's own pace (a jog message and its
// report ten times a second) and in a burst of 200 frames a second each way;
// whether the window keeps up with the burst; and what a full ring of
// 100 000 frames takes in memory and in a text filter over it.
//
//   halvex-line-log-bench [SECONDS] [steady|burst|ring]   (all three by default)

#include <malloc.h>

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <algorithm>
#include <cstdio>
#include <memory>

#include "bench/cpu_time.h"
#include "protocol/in_process_port.h"
#include "recorder/line_log_model.h"
#include "recorder/line_log_window.h"
#include "recorder/line_recorder.h"
#include "sim/unit.h"
#include "window/vornixu.h"

namespace {
using halvex::bench::cpuSeconds;

// Bytes handed out by the allocator.
double allocatedMb() {
    return static_cast<double>(mallinfo2().uordblks) / (1024.0 * 1024.0);
}

struct Sample {
    double cpuShare = 0;         // of one core
    double framesPerSecond = 0;  // each way
    int worstLateMs = 0;         // the event loop's longest delay of a 10 ms timer
};

// Runs the event loop for `ms`, sleeping, and measures.
Sample measure(halvex::VornixU& window, int ms) {
    Sample sample;
    QElapsedTimer wall;
    QElapsedTimer beat;
    QTimer heart;
    heart.setTimerType(Qt::PreciseTimer);
    heart.setInterval(10);
    QObject::connect(&heart, &QTimer::timeout, [&] {
        sample.worstLateMs = std::max(sample.worstLateMs, static_cast<int>(beat.restart()) - 10);
    });
    const quint64 frames = window.link().framesSent();
    const double cpu = cpuSeconds();
    wall.start();
    beat.start();
    heart.start();
    QEventLoop loop;
    QTimer::singleShot(ms, &loop, &QEventLoop::quit);
    loop.exec();
    const double seconds = static_cast<double>(wall.elapsed()) / 1000.0;
    sample.cpuShare = (cpuSeconds() - cpu) / seconds;
    sample.framesPerSecond = static_cast<double>(window.link().framesSent() - frames) / seconds;
    return sample;
}

struct Console {
    explicit Console(int tickMs)
        : port(new halvex::InProcessPort(&unit)),
          window(
              port, [](QWidget*, const halvex::Message&) { return true; }, tickMs) {
        window.Form_Load();
        window.show();
    }
    bool connect() {
        window.findChild<QPushButton*>(QStringLiteral("StartBut"))->click();
        return QTest::qWaitFor(
            [&] { return window.windowTitle().endsWith(QStringLiteral(" Online")); }, 60000);
    }
    halvex::sim::Unit unit;
    halvex::InProcessPort* port;
    halvex::VornixU window;
};

void report(const char* what, const Sample& closed, const Sample& open) {
    std::printf(
        "%s: %.0f frames/s each way; CPU %.2f %% of one core with the Line Log closed, "
        "%.2f %% open: the Line Log costs %.2f %%; event loop late by at most %d ms\n",
        what, open.framesPerSecond, 100 * closed.cpuShare, 100 * open.cpuShare,
        100 * (open.cpuShare - closed.cpuShare), open.worstLateMs);
}

}  // namespace

int main(int argc, char* argv[]) {
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) {
        qputenv("QT_QPA_PLATFORM", "offscreen");
    }
    QApplication app(argc, argv);
    const int seconds = argc > 1 ? std::max(2, std::atoi(argv[1])) : 20;
    const QString only = argc > 2 ? QString::fromLocal8Bit(argv[2]) : QString();
    const auto wanted = [&only](const char* part) {
        return only.isEmpty() || only == QLatin1String(part);
    };
    QTemporaryDir scratch;
    QDir::setCurrent(scratch.path());

    if (wanted("steady")) {
        // The line's own pace: the 100 ms tick of a real unit.
        Console console(halvex::Link::kTickMs);
        if (!console.connect()) {
            std::printf("the console did not come online\n");
            return 1;
        }
        const Sample closed = measure(console.window, seconds * 1000);
        console.window.lineRecorder().showLog();
        const Sample open = measure(console.window, seconds * 1000);
        report("steady", closed, open);
        console.window.lineRecorder().startRecording(scratch.filePath(QStringLiteral("r.pcapng")));
        const Sample recording = measure(console.window, seconds * 1000);
        std::printf("steady, also recording: CPU %.2f %% of one core\n", 100 * recording.cpuShare);
    }
    if (wanted("burst")) {
        // A burst: a tick of 4 ms, some 200 frames a second each way (the
        // link's timer is not a precise one).
        Console console(4);
        if (!console.connect()) {
            std::printf("the console did not come online\n");
            return 1;
        }
        halvex::LineRecorder& recorder = console.window.lineRecorder();
        const Sample closed = measure(console.window, seconds * 1000);
        recorder.showLog();
        const Sample open = measure(console.window, seconds * 1000);
        report("burst", closed, open);
        // Keeping up: what is taken in but not shown is at most one batch.
        std::printf(
            "burst: %zu records waiting to be shown at the end (one batch of %d ms "
            "holds about %.0f)\n",
            recorder.model().waiting(), halvex::LineLogModel::kBatchMs,
            2 * open.framesPerSecond * halvex::LineLogModel::kBatchMs / 1000.0);
    }
    if (wanted("ring")) {
        // A full ring: a report and a jog message, as the line mostly carries.
        const double before = allocatedMb();
        halvex::LineLogModel model;
        const auto jog = halvex::encodeFrame(halvex::kStx, 0, {0x31, 0, 0, 0, 0, 0, 0, 0}, 0);
        const auto reply = halvex::encodeFrame(
            halvex::kAck, 0,
            {0x31, 0x10, 0x27, 0, 0x9C, 0xFF, 0xFF, 0, 0, 0, 128, 128, 128, 128, 0, 0}, 0);
        QElapsedTimer clock;
        clock.start();
        for (std::size_t i = 0; i < halvex::LineLogModel::kDefaultCapacity; ++i) {
            model.append({static_cast<std::int64_t>(i) * 50000, halvex::recording::LineKind::Sent,
                          halvex::recording::Verdict::Good, i % 2 == 0 ? jog : reply});
        }
        model.flush();
        const qint64 fillMs = clock.restart();
        halvex::LineFilter filter;
        filter.text = QStringLiteral("pan 100.00");
        model.setFilter(filter);
        const qint64 filterMs = clock.elapsed();
        std::printf(
            "full ring: %zu records in %.1f MB (taken in and shown in %lld ms); a text "
            "filter over all of them takes %lld ms\n",
            model.kept(), allocatedMb() - before, static_cast<long long>(fillMs),
            static_cast<long long>(filterMs));
    }
    return 0;
}
