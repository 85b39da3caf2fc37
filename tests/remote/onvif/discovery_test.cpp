// WS-Discovery: a probe for a video transmitter is answered with the device
// service's address; one for something else is not.

#include <QUdpSocket>

#include "tests/remote/onvif/onvif_rig.h"

namespace halvex::testing {
namespace {

QByteArray probe(const QString& messageId, const QString& inside) {
    return QStringLiteral(
               "<?xml version=\"1.0\"?><s:Envelope xmlns:s=\"%1\" xmlns:a=\"%2\" xmlns:d=\"%3\" "
               "xmlns:dn=\"%4\"><s:Header><a:MessageID>%5</a:MessageID>"
               "<a:To>urn:schemas-xmlsoap-org:ws:2005:04:discovery</a:To><a:Action>"
               "http://schemas.xmlsoap.org/ws/2005/04/discovery/Probe</a:Action></s:Header>"
               "<s:Body><d:Probe>%6</d:Probe></s:Body></s:Envelope>")
        .arg(QLatin1String(onvif::ns::kEnvelope), QLatin1String(onvif::ns::kAddressing),
             QLatin1String(onvif::ns::kDiscovery), QLatin1String(onvif::ns::kNetwork), messageId,
             inside)
        .toUtf8();
}

TEST_F(OnvifTest, AProbeForAVideoTransmitterIsAnsweredWithTheDeviceService) {
    EXPECT_EQ(server.discoveryPort(), 0);
    ASSERT_TRUE(server.startDiscovery(0)) << server.errorString().toStdString();
    ASSERT_NE(server.discoveryPort(), 0);
    QUdpSocket prober;
    ASSERT_TRUE(prober.bind(QHostAddress::LocalHost, 0));
    const auto answerTo = [&](const QByteArray& datagram) {
        prober.writeDatagram(datagram, QHostAddress::LocalHost, server.discoveryPort());
        QByteArray answer;
        runUntil(
            [&] {
                if (!prober.hasPendingDatagrams()) {
                    return false;
                }
                answer.resize(static_cast<qsizetype>(prober.pendingDatagramSize()));
                prober.readDatagram(answer.data(), answer.size());
                return true;
            },
            500);
        return answer;
    };

    const QByteArray match = answerTo(
        probe(QStringLiteral("urn:uuid:probe-1"), "<d:Types>dn:NetworkVideoTransmitter</d:Types>"));
    const auto parsed = onvif::parseSoapRequest(match);
    const auto* matches = std::get_if<onvif::SoapRequest>(&parsed);
    ASSERT_NE(matches, nullptr) << match.toStdString();
    EXPECT_EQ(matches->body.name, QStringLiteral("ProbeMatches"));
    const onvif::XmlElement* found = matches->body.child(onvif::ns::kDiscovery, "ProbeMatch");
    ASSERT_NE(found, nullptr);
    EXPECT_EQ(found->child(onvif::ns::kDiscovery, "XAddrs")->value(),
              QStringLiteral("http://127.0.0.1:%1/onvif/device_service").arg(server.serverPort()));
    EXPECT_TRUE(found->child(onvif::ns::kDiscovery, "Types")
                    ->value()
                    .split(QLatin1Char(' '))
                    .contains(QStringLiteral("dn:NetworkVideoTransmitter")));
    EXPECT_TRUE(match.contains("<wsa:RelatesTo>urn:uuid:probe-1</wsa:RelatesTo>"));

    // Any type, and our scopes (a trailing slash aside): answered; another
    // type or scope: not.
    EXPECT_FALSE(answerTo(probe(QStringLiteral("urn:uuid:probe-2"), {})).isEmpty());
    EXPECT_FALSE(answerTo(probe(QStringLiteral("urn:uuid:probe-3"),
                                "<d:Scopes>onvif://www.onvif.org/type/</d:Scopes>"))
                     .isEmpty());
    EXPECT_TRUE(answerTo(probe(QStringLiteral("urn:uuid:probe-4"), "<d:Types>dn:Printer</d:Types>"))
                    .isEmpty());
    EXPECT_TRUE(answerTo(probe(QStringLiteral("urn:uuid:probe-5"),
                               "<d:Scopes>onvif://www.onvif.org/location/roof</d:Scopes>"))
                    .isEmpty());
    EXPECT_TRUE(answerTo("<not a probe/>").isEmpty());

    server.close();
    EXPECT_TRUE(answerTo(probe(QStringLiteral("urn:uuid:probe-6"), {})).isEmpty());
}

}  // namespace
}  // namespace halvex::testing
