// Measures what a preset reload costs the console: CPU time against wall
// time while it re-reads all 32 presets from the virtual unit, each request
// waiting for its reply.
//
//   halvex-reload-bench [ROUNDS]

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <cstdio>
#include <functional>

#include "bench/cpu_time.h"
#include "connection/connection_sequence.h"
#include "sim/pty_unit.h"
#include "window/vornixu.h"

namespace {
using halvex::bench::cpuSeconds;

// Waits without polling hard, so the harness does not add to the figure.
bool waitSleeping(const std::function<bool()>& done, int timeoutMs) {
    QElapsedTimer clock;
    clock.start();
    QEventLoop loop;
    QTimer check;
    check.setInterval(50);
    QObject::connect(&check, &QTimer::timeout, &loop, [&] {
        if (done() || clock.elapsed() > timeoutMs) {
            loop.quit();
        }
    });
    check.start();
    if (!done()) {
        loop.exec();
    }
    return done();
}
}  // namespace

int main(int argc, char* argv[]) {
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) {
        qputenv("QT_QPA_PLATFORM", "offscreen");
    }
    QApplication app(argc, argv);
    const int rounds = argc > 1 ? std::max(1, std::atoi(argv[1])) : 3;
    QTemporaryDir scratch;
    QDir::setCurrent(scratch.path());

    // As `halvex --simulate` runs: the virtual unit on a pseudo-terminal in
    // this process, the console on a real serial port.
    halvex::sim::PtyUnit unit{halvex::sim::PtyUnitOptions{}};
    if (!unit.open()) {
        std::printf("cannot open a pseudo-terminal\n");
        return 1;
    }
    qputenv("HALVEX_COM1", unit.slavePath().toLocal8Bit());
    halvex::VornixU window;
    window.Form_Load();
    window.show();
    window.findChild<QPushButton*>(QStringLiteral("StartBut"))->click();
    if (!QTest::qWaitFor([&] { return window.windowTitle().endsWith(QStringLiteral(" Online")); },
                         60000)) {
        std::printf("the console did not come online\n");
        return 1;
    }
    waitSleeping([] { return false; }, 1000);

    // The same console idle for as long, as the baseline.
    const double idleBefore = cpuSeconds();
    QElapsedTimer idleClock;
    idleClock.start();
    waitSleeping([] { return false; }, 4000 * rounds);
    const double idleShare =
        (cpuSeconds() - idleBefore) / (static_cast<double>(idleClock.elapsed()) / 1000.0);

    // The preset reload itself: 32 requests, each waiting for its reply.
    double reloadCpu = 0.0;
    double reloadWall = 0.0;
    for (int round = 0; round < rounds; ++round) {
        QElapsedTimer clock;
        const double before = cpuSeconds();
        clock.start();
        // As the connection sequence and an offset change ask for it.
        QCoro::Task<> reload = window.events().presetsReload();
        if (!QTest::qWaitFor([&] { return reload.isReady(); }, 60000)) {
            std::fprintf(stderr, "a preset reload did not end within a minute\n");
            return 1;
        }
        reloadCpu += cpuSeconds() - before;
        reloadWall += static_cast<double>(clock.elapsed()) / 1000.0;
    }

    std::printf("idle online:   %.2f %% of one core (console and virtual unit in one process)\n",
                100.0 * idleShare);
    std::printf("preset reload: %.2f %% of one core over %.1f s (%d reloads of 32 requests)\n",
                100.0 * reloadCpu / reloadWall, reloadWall, rounds);
    return 0;
}
