// WS-Discovery: a probe for a video transmitter is answered with the device
// service's address; one for something else is not.

#include <QNetworkDatagram>
#include <QUdpSocket>

#include "tests/remote/onvif/onvif_rig.h"

namespace halvex::testing {
namespace {

QByteArray probe(int n, const QString& inside = {}) {
    return QStringLiteral(
               "<?xml version=\"1.0\"?><s:Envelope xmlns:s=\"%1\" xmlns:a=\"%2\" xmlns:d=\"%3\" "
               "xmlns:dn=\"%4\"><s:Header><a:MessageID>urn:uuid:probe-%5</a:MessageID>"
               "<a:To>urn:schemas-xmlsoap-org:ws:2005:04:discovery</a:To><a:Action>"
               "http://schemas.xmlsoap.org/ws/2005/04/discovery/Probe</a:Action></s:Header>"
               "<s:Body><d:Probe>%6</d:Probe></s:Body></s:Envelope>")
        .arg(QLatin1String(onvif::ns::kEnvelope), QLatin1String(onvif::ns::kAddressing),
             QLatin1String(onvif::ns::kDiscovery), QLatin1String(onvif::ns::kNetwork))
        .arg(n)
        .arg(inside)
        .toUtf8();
}

TEST_F(OnvifTest, AProbeForAVideoTransmitterIsAnsweredWithTheDeviceService) {
    ASSERT_TRUE(server.startDiscovery(0)) << server.errorString().toStdString();
    ASSERT_NE(server.discoveryPort(), 0);
    QUdpSocket prober;
    ASSERT_TRUE(prober.bind(QHostAddress::LocalHost, 0));
    // The answers to the datagrams sent, in order, up to and with the one to
    // `last`: a probe not answered shows as the next answer being another's.
    const auto answersTo = [&](const QList<QByteArray>& datagrams, int last, int timeoutMs = 2000) {
        for (const QByteArray& datagram : datagrams) {
            prober.writeDatagram(datagram, QHostAddress::LocalHost, server.discoveryPort());
        }
        QList<QByteArray> answers;
        const QByteArray relatesTo =
            "<wsa:RelatesTo>urn:uuid:probe-" + QByteArray::number(last) + "</wsa:RelatesTo>";
        runUntil(
            [&] {
                while (prober.hasPendingDatagrams()) {
                    answers << prober.receiveDatagram().data();
                }
                return !answers.isEmpty() && answers.last().contains(relatesTo);
            },
            timeoutMs);
        return answers;
    };

    // Another type or scope, or no probe at all: not answered.
    const QList<QByteArray> match =
        answersTo({probe(4, "<d:Types>dn:Printer</d:Types>"),
                   probe(5, "<d:Scopes>onvif://www.onvif.org/location/roof</d:Scopes>"),
                   "<not a probe/>", probe(1, "<d:Types>dn:NetworkVideoTransmitter</d:Types>")},
                  1);
    ASSERT_EQ(match.size(), 1);
    EXPECT_EQ(faultOf(match[0]), QStringLiteral("ProbeMatches"));
    EXPECT_TRUE(
        match[0].contains("XAddrs>http://127.0.0.1:" + QByteArray::number(server.serverPort()) +
                          "/onvif/device_service</"))
        << match[0].toStdString();

    // Our scopes, a trailing slash aside: answered.
    EXPECT_EQ(answersTo({probe(3, "<d:Scopes>onvif://www.onvif.org/type/</d:Scopes>")}, 3).size(),
              1);

    server.close();
    EXPECT_TRUE(answersTo({probe(6)}, 6, 100).isEmpty());
}

}  // namespace
}  // namespace halvex::testing
