// Measures how long a stick move takes to reach the line: from the moment a
// virtual game controller's stick is pushed to the jog message that carries
// it, with the console online against the virtual unit on a pseudo-terminal
// and the line's real 100 ms tick. Moves come at random moments of the tick.
//
//   halvex-input-latency [SAMPLES]

#include <SDL.h>

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QPushButton>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QTest>
#include <algorithm>
#include <cstdio>
#include <vector>

#include "bench/cpu_time.h"
#include "input/controller_jog.h"
#include "sim/pty_unit.h"
#include "window/vornixu.h"

namespace {
using halvex::bench::cpuSeconds;

double percentile(std::vector<double> values, double fraction) {
    std::sort(values.begin(), values.end());
    const auto index = static_cast<std::size_t>(fraction * static_cast<double>(values.size() - 1));
    return values[index];
}
}  // namespace

int main(int argc, char* argv[]) {
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) {
        qputenv("QT_QPA_PLATFORM", "offscreen");
    }
    QApplication app(argc, argv);
    const int samples = argc > 1 ? std::max(2, std::atoi(argv[1])) : 200;
    QTemporaryDir scratch;
    QDir::setCurrent(scratch.path());

    halvex::sim::PtyUnit unit{halvex::sim::PtyUnitOptions{}};
    if (!unit.open()) {
        std::printf("cannot open a pseudo-terminal\n");
        return 1;
    }
    qputenv("HALVEX_COM1", unit.slavePath().toLocal8Bit());
    halvex::VornixU window;
    window.Form_Load();
    window.show();
    window.activateWindow();
    window.findChild<QPushButton*>(QStringLiteral("StartBut"))->click();
    if (!QTest::qWaitFor([&] { return window.windowTitle().endsWith(QStringLiteral(" Online")); },
                         60000)) {
        std::printf("the console did not come online\n");
        return 1;
    }

    SDL_InitSubSystem(SDL_INIT_JOYSTICK);
    const int index = SDL_JoystickAttachVirtual(
        SDL_JOYSTICK_TYPE_GAMECONTROLLER, SDL_CONTROLLER_AXIS_MAX, SDL_CONTROLLER_BUTTON_MAX, 0);
    SDL_Joystick* stick = index >= 0 ? SDL_JoystickOpen(index) : nullptr;
    if (stick == nullptr ||
        !QTest::qWaitFor([&] { return window.input().controller->deviceInUse().has_value(); },
                         5000)) {
        std::printf("the virtual controller was not taken\n");
        return 1;
    }

    // Each sample pushes the stick the other way; the jog message that
    // carries the new direction at full speed ends it.
    QElapsedTimer clock;
    clock.start();
    bool waiting = false;
    bool wantClockwise = false;
    qint64 pushedAt = 0;
    std::vector<double> latencies;
    int otherFrames = 0;
    QObject::connect(&window.link(), &halvex::Link::frameSent, [&] {
        const auto& tx = window.state().TxBuffer;
        if (waiting && tx[0] != 0x31) {
            ++otherFrames;  // a request took the tick: the jog waits for the next
        }
        if (waiting && tx[0] == 0x31 && tx[2] == 255 && ((tx[1] & 0x80) != 0) == wantClockwise) {
            latencies.push_back(static_cast<double>(clock.nsecsElapsed() - pushedAt) / 1e6);
            waiting = false;
        }
    });
    for (int i = 0; i < samples; ++i) {
        QTest::qWait(static_cast<int>(QRandomGenerator::global()->bounded(100, 200)));
        wantClockwise = !wantClockwise;
        waiting = true;
        pushedAt = clock.nsecsElapsed();
        SDL_JoystickSetVirtualAxis(stick, SDL_CONTROLLER_AXIS_LEFTX,
                                   wantClockwise ? SDL_JOYSTICK_AXIS_MAX : SDL_JOYSTICK_AXIS_MIN);
        if (!QTest::qWaitFor([&] { return !waiting; }, 2000)) {
            std::printf("a stick move never reached the line\n");
            return 1;
        }
    }
    SDL_JoystickSetVirtualAxis(stick, SDL_CONTROLLER_AXIS_LEFTX, 0);
    QTest::qWait(300);

    // Idle with the controller read (the virtual unit in this process counted too).
    const double cpuBefore = cpuSeconds();
    QElapsedTimer idle;
    idle.start();
    QTest::qWait(10000);
    const double idleShare =
        (cpuSeconds() - cpuBefore) / (static_cast<double>(idle.elapsed()) / 1000.0);

    std::printf(
        "stick to jog message, %d moves: p50 %.1f ms, p99 %.1f ms, max %.1f ms "
        "(one tick: %d ms)\n",
        samples, percentile(latencies, 0.5), percentile(latencies, 0.99),
        *std::max_element(latencies.begin(), latencies.end()), halvex::Link::kTickMs);
    std::printf("requests that took a tick while a move waited: %d\n", otherFrames);
    std::printf("idle online with the controller plugged in: %.2f %% of one core\n",
                100.0 * idleShare);
    return 0;
}
