// Measures how long a VISCA controller's request takes to reach the line:
// from the datagram sent to the bridge's UDP port to the frame it makes,
// with the session online against the virtual unit in this process and the
// line's real 100 ms tick. Two kinds of request, each at random moments of
// the tick: an absolute position (a move frame of its own) and a pan-tilt
// drive (the next jog message carries it).
//
//   halvex-visca-latency [SAMPLES]

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QNetworkDatagram>
#include <QRandomGenerator>
#include <QTimer>
#include <QUdpSocket>
#include <algorithm>
#include <cstdio>
#include <functional>
#include <vector>

#include "protocol/in_process_port.h"
#include "protocol/vocabulary.h"
#include "remote/visca/visca_bridge.h"
#include "session/unit_connection.h"
#include "sim/unit.h"
#include "tests/support/recording_peer.h"

namespace {

using halvex::Byte;
using Packet = std::vector<std::uint8_t>;

bool waitFor(const std::function<bool()>& done, int timeoutMs) {
    QElapsedTimer clock;
    clock.start();
    QTimer wake;
    wake.start(5);
    while (!done()) {
        if (clock.elapsed() > timeoutMs) {
            return false;
        }
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    return true;
}

void pause(int ms) {
    QElapsedTimer clock;
    clock.start();
    waitFor([&] { return clock.elapsed() >= ms; }, ms + 1000);
}

double percentile(std::vector<double> values, double fraction) {
    std::sort(values.begin(), values.end());
    const auto index = static_cast<std::size_t>(fraction * static_cast<double>(values.size() - 1));
    return values[index];
}

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

    halvex::sim::Unit unit;
    halvex::testing::RecordingPeer line{unit};
    auto* port = new halvex::InProcessPort(&line);
    halvex::Session session{port, halvex::Link::kTickMs};
    halvex::UnitConnection connection{
        session,
        {[] { return QStringLiteral("virtual"); }, [] { return 9600; },
         [] { return QStringLiteral("the virtual unit"); }}};
    static_cast<void>(connection.start());
    if (!waitFor([&] { return session.online(); }, 60000)) {
        std::printf("the session did not come online\n");
        return 1;
    }
    halvex::ViscaBridge bridge{session};
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
    QElapsedTimer clock;
    clock.start();
    std::function<bool(const std::vector<Byte>&)> awaited;
    qint64 sentAt = 0;
    std::vector<double> latencies;
    line.onFrame = [&](const halvex::testing::RecordingPeer::Frame& frame) {
        if (awaited && awaited(frame.message)) {
            latencies.push_back(static_cast<double>(clock.nsecsElapsed() - sentAt) / 1e6);
            awaited = nullptr;
        }
    };
    std::uint32_t sequence = 0;
    const auto measure = [&](const char* what, const std::function<Packet(int)>& request,
                             const std::function<bool(int, const std::vector<Byte>&)>& frameOf) {
        latencies.clear();
        for (int i = 0; i < samples; ++i) {
            pause(static_cast<int>(QRandomGenerator::global()->bounded(100, 200)));
            while (client.hasPendingDatagrams()) {
                client.receiveDatagram();
            }
            const Packet d = datagram(++sequence, request(i));
            awaited = [&frameOf, i](const std::vector<Byte>& m) { return frameOf(i, m); };
            sentAt = clock.nsecsElapsed();
            client.writeDatagram(reinterpret_cast<const char*>(d.data()),
                                 static_cast<qint64>(d.size()), QHostAddress::LocalHost,
                                 bridge.serverPort());
            if (!waitFor([&] { return !awaited; }, 2000)) {
                std::printf("%s: a request never reached the line\n", what);
                return false;
            }
        }
        std::printf("%s, %d requests: p50 %.1f ms, p99 %.1f ms, max %.1f ms\n", what, samples,
                    percentile(latencies, 0.5), percentile(latencies, 0.99),
                    *std::max_element(latencies.begin(), latencies.end()));
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
