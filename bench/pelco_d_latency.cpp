// Measures how long a Pelco-D keyboard's frame takes to reach the line: from
// the moment the frame is written on a TCP connection to the bridge to the
// jog message that carries it, with the virtual unit in this process behind
// the in-process port and the line's real 100 ms tick. Frames come at
// random moments of the tick, each turning the pan the other way at turbo.
//
//   halvex-pelco-d-latency [SAMPLES]

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QRandomGenerator>
#include <QTcpSocket>
#include <QTimer>
#include <algorithm>
#include <cstdio>
#include <functional>
#include <vector>

#include "protocol/in_process_port.h"
#include "protocol/vocabulary.h"
#include "remote/pelco_d/pelco_d_bridge.h"
#include "session/session.h"
#include "session/unit_connection.h"
#include "sim/unit.h"
#include "tests/support/recording_peer.h"

namespace {

namespace pelco_d = halvex::pelco_d;

double percentile(std::vector<double> values, double fraction) {
    std::sort(values.begin(), values.end());
    const auto index = static_cast<std::size_t>(fraction * static_cast<double>(values.size() - 1));
    return values[index];
}

// Runs the event loop until `done` holds; false after `timeoutMs`.
bool waitFor(const std::function<bool()>& done, int timeoutMs) {
    QElapsedTimer clock;
    clock.start();
    while (!done()) {
        if (clock.elapsed() > timeoutMs) {
            return false;
        }
        QEventLoop loop;
        QTimer::singleShot(1, &loop, &QEventLoop::quit);
        loop.exec();
    }
    return true;
}

void pause(int ms) {
    QEventLoop loop;
    QTimer::singleShot(ms, Qt::PreciseTimer, &loop, &QEventLoop::quit);
    loop.exec();
}

}  // namespace

int main(int argc, char* argv[]) {
    QCoreApplication app(argc, argv);
    const int samples = argc > 1 ? std::max(2, std::atoi(argv[1])) : 300;

    halvex::sim::Unit unit;
    halvex::testing::RecordingPeer line{unit};
    auto* port = new halvex::InProcessPort(&line);
    halvex::Session session{port, halvex::Link::kTickMs};
    halvex::UnitConnection connection{
        session,
        {[] { return QStringLiteral("virtual"); }, [] { return 9600; },
         [] { return QStringLiteral("the virtual unit"); }}};
    auto starting = connection.start();
    if (!waitFor([&] { return session.online(); }, 60000)) {
        std::printf("the console did not come online\n");
        return 1;
    }

    halvex::PelcoDBridge bridge{session};
    QTcpSocket keyboard;
    if (!bridge.listen(QHostAddress::LocalHost, 0)) {
        std::printf("cannot listen: %s\n", qPrintable(bridge.errorString()));
        return 1;
    }
    keyboard.connectToHost(QHostAddress::LocalHost, bridge.serverPort());
    if (!keyboard.waitForConnected(5000) ||
        !waitFor([&] { return bridge.clientCount() == 1; }, 5000)) {
        std::printf("the keyboard did not connect\n");
        return 1;
    }

    // Each sample turns the pan the other way at turbo; the jog message
    // that carries the new way at the unit's fastest ends it.
    namespace jog = halvex::vocab::jog;
    QElapsedTimer clock;
    clock.start();
    bool waiting = false;
    bool wantRight = false;
    qint64 sentAt = 0;
    int otherFrames = 0;
    std::vector<double> latencies;
    line.onFrame = [&](const halvex::testing::RecordingPeer::Frame& frame) {
        if (!waiting) {
            return;
        }
        if (frame.message.at(0) != halvex::vocab::JogMessage::kCode) {
            ++otherFrames;  // a request took the tick: the jog waits for the next
            return;
        }
        const bool right = halvex::vocab::isSet(frame.message.at(1), jog::kPanCw);
        if (halvex::vocab::get(frame.message, jog::kPanSpeed) == 255 && right == wantRight) {
            latencies.push_back(static_cast<double>(clock.nsecsElapsed() - sentAt) / 1e6);
            waiting = false;
        }
    };
    for (int i = 0; i < samples; ++i) {
        pause(static_cast<int>(QRandomGenerator::global()->bounded(100, 200)));
        wantRight = !wantRight;
        const pelco_d::Frame frame{1, 0, wantRight ? pelco_d::kPanRight : pelco_d::kPanLeft,
                                   pelco_d::kTurbo, 0};
        const auto bytes = pelco_d::encode(frame);
        waiting = true;
        sentAt = clock.nsecsElapsed();
        keyboard.write(reinterpret_cast<const char*>(bytes.data()),
                       static_cast<qint64>(bytes.size()));
        keyboard.flush();
        if (!waitFor([&] { return !waiting; }, 2000)) {
            std::printf("a keyboard frame never reached the line\n");
            return 1;
        }
    }
    const auto stop = pelco_d::encode(pelco_d::Frame{1, 0, 0, 0, 0});
    keyboard.write(reinterpret_cast<const char*>(stop.data()), static_cast<qint64>(stop.size()));
    keyboard.flush();
    pause(300);

    std::printf(
        "Pelco-D frame (TCP) to jog message, %d frames: p50 %.1f ms, p99 %.1f ms, max %.1f ms "
        "(one tick: %d ms)\n",
        samples, percentile(latencies, 0.5), percentile(latencies, 0.99),
        *std::max_element(latencies.begin(), latencies.end()), halvex::Link::kTickMs);
    std::printf("requests that took a tick while a frame waited: %d\n", otherFrames);
    return 0;
}
