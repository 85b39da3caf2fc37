// Measures how long a Pelco-D keyboard's frame takes to reach the line: from
// the moment the frame is written on a TCP connection to the bridge to the
// jog message that carries it, with the virtual unit in this process behind
// the in-process port and the line's real 100 ms tick. Frames come at
// random moments of the tick, each turning the pan the other way at turbo.
//
//   halvex-pelco-d-latency [SAMPLES]

#include <QCoreApplication>
#include <QRandomGenerator>
#include <QTcpSocket>
#include <algorithm>
#include <cstdio>
#include <vector>

#include "bench/bridge_bench.h"
#include "protocol/vocabulary.h"
#include "remote/pelco_d/pelco_d_bridge.h"

int main(int argc, char* argv[]) {
    QCoreApplication app(argc, argv);
    const int samples = argc > 1 ? std::max(2, std::atoi(argv[1])) : 300;

    namespace bench = halvex::bench;
    namespace pelco_d = halvex::pelco_d;
    bench::Rig rig;
    if (!rig.bringOnline()) {
        std::printf("the console did not come online\n");
        return 1;
    }

    halvex::PelcoDBridge bridge{rig.session};
    QTcpSocket keyboard;
    if (!bridge.listen(QHostAddress::LocalHost, 0)) {
        std::printf("cannot listen: %s\n", qPrintable(bridge.errorString()));
        return 1;
    }
    keyboard.connectToHost(QHostAddress::LocalHost, bridge.serverPort());
    if (!keyboard.waitForConnected(5000) ||
        !bench::runUntil([&] { return bridge.clientCount() == 1; }, 5000)) {
        std::printf("the keyboard did not connect\n");
        return 1;
    }

    // Each sample turns the pan the other way at turbo; the jog message
    // that carries the new way at the unit's fastest ends it.
    namespace jog = halvex::vocab::jog;
    bool waiting = false;
    bool wantRight = false;
    qint64 sentAt = 0;
    int otherFrames = 0;
    std::vector<double> latencies;
    rig.line.onFrame = [&](const halvex::testing::RecordingPeer::Frame& frame) {
        if (!waiting) {
            return;
        }
        if (frame.message.at(0) != halvex::vocab::JogMessage::kCode) {
            ++otherFrames;  // a request took the tick: the jog waits for the next
            return;
        }
        const bool right = halvex::vocab::isSet(frame.message.at(1), jog::kPanCw);
        if (halvex::vocab::get(frame.message, jog::kPanSpeed) == 255 && right == wantRight) {
            latencies.push_back(bench::milliseconds(rig.now() - sentAt));
            waiting = false;
        }
    };
    for (int i = 0; i < samples; ++i) {
        bench::pause(static_cast<int>(QRandomGenerator::global()->bounded(100, 200)));
        wantRight = !wantRight;
        const pelco_d::Frame frame{1, 0, wantRight ? pelco_d::kPanRight : pelco_d::kPanLeft,
                                   pelco_d::kTurbo, 0};
        const auto bytes = pelco_d::encode(frame);
        waiting = true;
        sentAt = rig.now();
        keyboard.write(reinterpret_cast<const char*>(bytes.data()),
                       static_cast<qint64>(bytes.size()));
        keyboard.flush();
        if (!bench::runUntil([&] { return !waiting; }, 2000)) {
            std::printf("a keyboard frame never reached the line\n");
            return 1;
        }
    }
    const auto stop = pelco_d::encode(pelco_d::Frame{1, 0, 0, 0, 0});
    keyboard.write(reinterpret_cast<const char*>(stop.data()), static_cast<qint64>(stop.size()));
    keyboard.flush();
    bench::pause(300);

    const bench::Spread spread = bench::spread(latencies);
    std::printf(
        "Pelco-D frame (TCP) to jog message, %d frames: p50 %.1f ms, p99 %.1f ms, max %.1f ms "
        "(one tick: %d ms)\n",
        samples, spread.p50, spread.p99, spread.max, halvex::Link::kTickMs);
    std::printf("requests that took a tick while a frame waited: %d\n", otherFrames);
    return 0;
}
