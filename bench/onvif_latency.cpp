// Measures how long an ONVIF request takes to reach the line: from the
// moment a client's signed SOAP request goes out over the server's TCP port
// to the frame it puts on the line, with the console online against the
// virtual unit in process and the line's real 100 ms tick. Requests come at
// random moments of the tick: absolute moves (their own message), then
// continuous moves (the next jog message), each followed by a Stop.
//
//   halvex-onvif-latency [SAMPLES]

#include <QCoreApplication>
#include <QDateTime>
#include <QRandomGenerator>
#include <QTcpSocket>
#include <QUuid>
#include <algorithm>
#include <cstdio>
#include <functional>
#include <iterator>
#include <vector>

#include "bench/bridge_bench.h"
#include "protocol/vocabulary.h"
#include "remote/onvif/onvif_server.h"
#include "remote/onvif/soap_message.h"
#include "remote/onvif/username_token.h"

namespace {

constexpr auto kUser = "admin";
constexpr auto kPassword = "bench";

// A POST of `operation` to the PTZ service, signed as a client signs it.
QByteArray request(const QString& operation) {
    const QString nonce = QString::fromLatin1(QUuid::createUuid().toRfc4122().toBase64());
    const QString created = QDateTime::currentDateTimeUtc().toString(Qt::ISODateWithMs);
    const QByteArray body =
        QStringLiteral(
            "<s:Envelope xmlns:s=\"%1\"><s:Header><Security xmlns=\"%2\"><UsernameToken>"
            "<Username>%3</Username><Password Type=\"http://docs.oasis-open.org/wss/2004/01/"
            "oasis-200401-wss-username-token-profile-1.0#PasswordDigest\">%4</Password>"
            "<Nonce>%5</Nonce><Created xmlns=\"%6\">%7</Created></UsernameToken></Security>"
            "</s:Header><s:Body xmlns:tt=\"http://www.onvif.org/ver10/schema\">%8</s:Body>"
            "</s:Envelope>")
            .arg(
                QLatin1String(halvex::onvif::ns::kEnvelope),
                QLatin1String(halvex::onvif::ns::kSecurity), QLatin1String(kUser),
                halvex::onvif::UsernameTokenCheck::digest(nonce, created, QLatin1String(kPassword)),
                nonce, QLatin1String(halvex::onvif::ns::kSecurityUtility), created, operation)
            .toUtf8();
    return "POST /onvif/ptz_service HTTP/1.1\r\nHost: 127.0.0.1\r\nContent-Type: "
           "application/soap+xml\r\nContent-Length: " +
           QByteArray::number(body.size()) + "\r\n\r\n" + body;
}

QString ptz(const char* operation, const QString& inside) {
    return QStringLiteral(
               "<%1 xmlns=\"http://www.onvif.org/ver20/ptz/wsdl\"><ProfileToken>profile1"
               "</ProfileToken>%2</%1>")
        .arg(QLatin1String(operation), inside);
}

}  // namespace

int main(int argc, char* argv[]) {
    QCoreApplication app(argc, argv);
    const int samples = argc > 1 ? std::max(2, std::atoi(argv[1])) : 200;
    using namespace halvex;

    bench::Rig rig;
    std::function<bool(const halvex::testing::RecordingPeer::Frame&)> awaited;
    qint64 seenAt = -1;
    rig.line.onFrame = [&](const halvex::testing::RecordingPeer::Frame& frame) {
        if (awaited && seenAt < 0 && awaited(frame)) {
            seenAt = rig.now();
        }
    };
    if (!rig.bringOnline()) {
        std::printf("the console did not come online\n");
        return 1;
    }
    OnvifServer server{rig.session};
    server.setCredentials(QLatin1String(kUser), QLatin1String(kPassword));
    if (!server.listen(QHostAddress::LocalHost, 0)) {
        std::printf("cannot listen: %s\n", qPrintable(server.errorString()));
        return 1;
    }
    QTcpSocket client;
    client.connectToHost(QHostAddress::LocalHost, server.serverPort());
    if (!bench::runUntil([&] { return client.state() == QAbstractSocket::ConnectedState; }, 5000)) {
        std::printf("cannot connect\n");
        return 1;
    }
    // Sends a request, waits for the frame it causes, then its answer.
    const auto measure =
        [&](const QByteArray& bytes,
            std::function<bool(const halvex::testing::RecordingPeer::Frame&)> frame) -> double {
        // A random moment of the tick.
        bench::pause(QRandomGenerator::global()->bounded(Link::kTickMs));
        seenAt = -1;
        awaited = std::move(frame);
        const qint64 sentAt = rig.now();
        client.write(bytes);
        client.flush();
        QByteArray answer;
        bench::runUntil(
            [&] {
                answer += client.readAll();
                return seenAt >= 0 && answer.contains("</env:Envelope>");
            },
            5000);
        awaited = nullptr;
        if (!answer.startsWith("HTTP/1.1 200")) {
            std::printf("refused: %s\n", answer.left(400).constData());
        }
        return seenAt < 0 ? -1.0 : bench::milliseconds(seenAt - sentAt);
    };
    const auto isJog = [](const halvex::testing::RecordingPeer::Frame& frame) {
        return frame.message.at(0) == vocab::JogMessage::kCode;
    };

    std::vector<double> absolute;
    std::vector<double> continuous;
    for (int i = 0; i < samples; ++i) {
        const double pan = (i % 2 == 0) ? 0.1 : -0.1;
        absolute.push_back(measure(
            request(ptz(
                "AbsoluteMove",
                QStringLiteral("<Position><tt:PanTilt x=\"%1\" y=\"0\"/></Position>").arg(pan))),
            [](const halvex::testing::RecordingPeer::Frame& frame) {
                return frame.message.at(0) == vocab::AbsoluteMove::kCode;
            }));
    }
    for (int i = 0; i < samples; ++i) {
        continuous.push_back(measure(
            request(ptz("ContinuousMove",
                        QStringLiteral("<Velocity><tt:PanTilt x=\"0.3\" y=\"0\"/></Velocity>"))),
            [&](const halvex::testing::RecordingPeer::Frame& frame) {
                return isJog(frame) && vocab::get(frame.message, vocab::jog::kPanSpeed) != 0;
            }));
        measure(request(ptz("Stop", {})), [&](const halvex::testing::RecordingPeer::Frame& frame) {
            return isJog(frame) && vocab::get(frame.message, vocab::jog::kPanSpeed) == 0;
        });
    }
    for (const auto& [name, latencies] :
         {std::pair{"AbsoluteMove to its message", &absolute},
          std::pair{"ContinuousMove to the jog message", &continuous}}) {
        const auto missed = std::count(latencies->begin(), latencies->end(), -1.0);
        std::vector<double> seen;
        std::copy_if(latencies->begin(), latencies->end(), std::back_inserter(seen),
                     [](double ms) { return ms >= 0.0; });
        if (seen.empty()) {
            std::printf("%s: no frame seen\n", name);
            return 1;
        }
        const bench::Spread spread = bench::spread(seen);
        std::printf(
            "%s, %zu requests at the %d ms tick: p50 %.1f ms, p99 %.1f ms, max %.1f ms, "
            "%ld without a frame\n",
            name, seen.size(), Link::kTickMs, spread.p50, spread.p99, spread.max,
            static_cast<long>(missed));
    }
    return 0;
}
