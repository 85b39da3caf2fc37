// Measures how long a VISCA controller's request takes to reach the line:
// from the datagram sent to the bridge's UDP port to the frame it makes,
// with the session online against the virtual unit in this process and the
// line's real 100 ms tick. Two kinds of request, each at random moments of
// the tick: an absolute position (a move frame of its own) and a pan-tilt
// drive (the next jog message carries it).
//
//   halvex-visca-latency [SAMPLES]

#include <QCoreApplication>
#include <QNetworkDatagram>
#include <QRandomGenerator>
#include <QUdpSocket>
#include <algorithm>
#include <cstdio>
#include <functional>
#include <vector>

#include "bench/bridge_bench.h"
#include "protocol/vocabulary.h"
#include "remote/visca/visca_bridge.h"

namespace {

using halvex::Byte;
using Packet = std::vector<std::uint8_t>;

Packet datagram(std::uint32_t sequence, const Packet& packet) {
    Packet d{0x01,
             0x00,
             0x00,
             static_cast<std::uint8_t>(packet.size()),
             static_cast<std::uint8_t>(sequence >> 24),
             static_cast<std::uint8_t>(sequence >> 16),
             static_cast<std::uint8_t>(sequence >> 8),
             static_cast<std::uint8_t>(sequence)};
    d.insert(d.end(), packet.begin(), packet.end());
    return d;
}

}  // namespace

int main(int argc, char* argv[]) {
    QCoreApplication app(argc, argv);
    const int samples = argc > 1 ? std::max(2, std::atoi(argv[1])) : 300;

    namespace bench = halvex::bench;
    bench::Rig rig;
    if (!rig.bringOnline()) {
        std::printf("the session did not come online\n");
        return 1;
    }
    halvex::ViscaBridge bridge{rig.session};
    QUdpSocket client;
    if (!bridge.listen(QHostAddress::LocalHost, 0) || !client.bind(QHostAddress::LocalHost, 0)) {
        std::printf("cannot listen: %s\n", qPrintable(bridge.errorString()));
        return 1;
    }

    if (qEnvironmentVariableIsSet("HALVEX_VISCA_TRACE")) {
        QObject::connect(&bridge, &halvex::ViscaBridge::commandHandled,
                         [](const QString& what, const QString& peer) {
                             std::printf("%s: %s\n", qPrintable(peer), qPrintable(what));
                         });
    }
    std::function<bool(const std::vector<Byte>&)> awaited;
    qint64 sentAt = 0;
    std::vector<double> latencies;
    rig.line.onFrame = [&](const halvex::testing::RecordingPeer::Frame& frame) {
        if (awaited && awaited(frame.message)) {
            latencies.push_back(bench::milliseconds(rig.now() - sentAt));
            awaited = nullptr;
        }
    };
    std::uint32_t sequence = 0;
    const auto measure = [&](const char* what, const std::function<Packet(int)>& request,
                             const std::function<bool(int, const std::vector<Byte>&)>& frameOf) {
        latencies.clear();
        for (int i = 0; i < samples; ++i) {
            bench::pause(static_cast<int>(QRandomGenerator::global()->bounded(100, 200)));
            while (client.hasPendingDatagrams()) {
                client.receiveDatagram();
            }
            const Packet d = datagram(++sequence, request(i));
            awaited = [&frameOf, i](const std::vector<Byte>& m) { return frameOf(i, m); };
            sentAt = rig.now();
            client.writeDatagram(reinterpret_cast<const char*>(d.data()),
                                 static_cast<qint64>(d.size()), QHostAddress::LocalHost,
                                 bridge.serverPort());
            if (!bench::runUntil([&] { return !awaited; }, 2000)) {
                std::printf("%s: a request never reached the line\n", what);
                return false;
            }
        }
        const bench::Spread spread = bench::spread(latencies);
        std::printf("%s, %d requests: p50 %.1f ms, p99 %.1f ms, max %.1f ms\n", what, samples,
                    spread.p50, spread.p99, spread.max);
        return true;
    };

    namespace vocab = halvex::vocab;
    // Pan 1.00 and 2.00 in turn: 0x0064 and 0x00C8.
    const bool moved = measure(
        "absolute position to its move frame",
        [](int i) {
            return i % 2 == 0 ? Packet{0x81, 0x01, 0x06, 0x02, 0x18, 0x14, 0x00, 0x00,
                                       0x06, 0x04, 0x00, 0x00, 0x00, 0x00, 0xFF}
                              : Packet{0x81, 0x01, 0x06, 0x02, 0x18, 0x14, 0x00, 0x00,
                                       0x0C, 0x08, 0x00, 0x00, 0x00, 0x00, 0xFF};
        },
        [](int i, const std::vector<Byte>& m) {
            return m.at(0) == vocab::AbsoluteMove::kCode &&
                   static_cast<std::int32_t>(vocab::get(m, vocab::absolute_move::kPan)) ==
                       (i % 2 == 0 ? 100 : 200);
        });
    // Right and left at full speed in turn.
    const bool drove = moved && measure(
                                    "pan-tilt drive to its jog message",
                                    [](int i) {
                                        return Packet{0x81,
                                                      0x01,
                                                      0x06,
                                                      0x01,
                                                      0x18,
                                                      0x14,
                                                      static_cast<std::uint8_t>(i % 2 == 0 ? 2 : 1),
                                                      0x03,
                                                      0xFF};
                                    },
                                    [](int i, const std::vector<Byte>& m) {
                                        namespace jog = vocab::jog;
                                        return m.at(0) == vocab::JogMessage::kCode &&
                                               vocab::get(m, jog::kPanSpeed) == 255 &&
                                               vocab::isSet(m.at(1), jog::kPanCw) == (i % 2 == 0);
                                    });
    std::printf("(one tick: %d ms)\n", halvex::Link::kTickMs);
    return drove ? 0 : 1;
}
