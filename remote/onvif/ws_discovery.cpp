#include "remote/onvif/ws_discovery.h"

#include <QNetworkInterface>
#include <QUuid>

#include "remote/onvif/soap_message.h"

namespace halvex::onvif {

namespace {
constexpr auto kProbeMatches = "http://schemas.xmlsoap.org/ws/2005/04/discovery/ProbeMatches";
constexpr auto kAnonymous = "http://schemas.xmlsoap.org/ws/2004/08/addressing/role/anonymous";
const QStringList kTypes = {QStringLiteral("NetworkVideoTransmitter"), QStringLiteral("Device")};
const QStringList kScopes = {
    QStringLiteral("onvif://www.onvif.org/type/ptz"),
    QStringLiteral("onvif://www.onvif.org/type/video_transmitter"),
    QStringLiteral("onvif://www.onvif.org/Profile/Streaming"),
    QStringLiteral("onvif://www.onvif.org/name/Halvex"),
    QStringLiteral("onvif://www.onvif.org/hardware/pan_tilt_unit"),
};

// Probe scopes match by path prefix, segment by segment.
bool scopeMatches(const QString& asked) {
    QString wanted = asked;
    while (wanted.endsWith(QLatin1Char('/'))) {
        wanted.chop(1);
    }
    for (const QString& scope : kScopes) {
        if (scope == wanted || scope.startsWith(wanted + QLatin1Char('/'))) {
            return true;
        }
    }
    return false;
}

// The addresses the prober can reach the device service at.
QStringList addressesFor(const QHostAddress& sender) {
    if (sender.isLoopback()) {
        return {QStringLiteral("127.0.0.1")};
    }
    QStringList addresses;
    for (const QHostAddress& address : QNetworkInterface::allAddresses()) {
        if (!address.isLoopback() && address.protocol() == QAbstractSocket::IPv4Protocol) {
            addresses << address.toString();
        }
    }
    return addresses;
}
}  // namespace

WsDiscovery::WsDiscovery(std::function<quint16()> httpPort, QObject* parent)
    : QObject(parent),
      httpPort_(std::move(httpPort)),
      endpoint_(QUuid::createUuid().toString(QUuid::WithoutBraces)) {
    connect(&socket_, &QUdpSocket::readyRead, this, &WsDiscovery::readProbes);
}

bool WsDiscovery::start(quint16 port) {
    stop();
    if (!socket_.bind(QHostAddress::AnyIPv4, port,
                      QUdpSocket::ShareAddress | QUdpSocket::ReuseAddressHint)) {
        return false;
    }
    // Where no interface takes multicast, probes sent to this host still
    // come.
    socket_.joinMulticastGroup(QHostAddress(QLatin1String(kGroup)));
    return true;
}

void WsDiscovery::stop() {
    socket_.close();
}

void WsDiscovery::readProbes() {
    while (socket_.hasPendingDatagrams()) {
        QHostAddress sender;
        quint16 senderPort = 0;
        QByteArray datagram(
            static_cast<qsizetype>(std::max<qint64>(socket_.pendingDatagramSize(), 0)), '\0');
        const qint64 read =
            socket_.readDatagram(datagram.data(), datagram.size(), &sender, &senderPort);
        if (read < 0) {
            continue;
        }
        datagram.truncate(read);
        if (const auto reply = answer(datagram, sender)) {
            socket_.writeDatagram(*reply, sender, senderPort);
        }
    }
}

std::optional<QByteArray> WsDiscovery::answer(const QByteArray& datagram,
                                              const QHostAddress& sender) const {
    const auto parsed = parseSoapRequest(datagram);
    const auto* probe = std::get_if<SoapRequest>(&parsed);
    if (probe == nullptr || !probe->body.is(ns::kDiscovery, "Probe")) {
        return std::nullopt;
    }
    if (const XmlElement* types = probe->body.child(ns::kDiscovery, "Types")) {
        const QStringList asked = types->value().split(QLatin1Char(' '), Qt::SkipEmptyParts);
        for (const QString& type : asked) {
            if (!kTypes.contains(type.section(QLatin1Char(':'), -1))) {
                return std::nullopt;
            }
        }
    }
    if (const XmlElement* scopes = probe->body.child(ns::kDiscovery, "Scopes")) {
        for (const QString& scope : scopes->value().split(QLatin1Char(' '), Qt::SkipEmptyParts)) {
            if (!scopeMatches(scope)) {
                return std::nullopt;
            }
        }
    }
    QStringList xaddrs;
    for (const QString& address : addressesFor(sender)) {
        xaddrs << QStringLiteral("http://%1:%2/onvif/device_service").arg(address).arg(httpPort_());
    }
    const QString relatesTo = probe->messageId;
    SoapWriter soap([&relatesTo](QXmlStreamWriter& xml) {
        const QLatin1String wsa(ns::kAddressing);
        xml.writeTextElement(
            wsa, QStringLiteral("MessageID"),
            QStringLiteral("urn:uuid:") + QUuid::createUuid().toString(QUuid::WithoutBraces));
        if (!relatesTo.isEmpty()) {
            xml.writeTextElement(wsa, QStringLiteral("RelatesTo"), relatesTo);
        }
        xml.writeTextElement(wsa, QStringLiteral("To"), QLatin1String(kAnonymous));
        xml.writeTextElement(wsa, QStringLiteral("Action"), QLatin1String(kProbeMatches));
    });
    QXmlStreamWriter& xml = soap.xml();
    const QLatin1String d(ns::kDiscovery);
    xml.writeStartElement(d, QStringLiteral("ProbeMatches"));
    xml.writeStartElement(d, QStringLiteral("ProbeMatch"));
    xml.writeStartElement(QLatin1String(ns::kAddressing), QStringLiteral("EndpointReference"));
    xml.writeTextElement(QLatin1String(ns::kAddressing), QStringLiteral("Address"),
                         QStringLiteral("urn:uuid:") + endpoint_);
    xml.writeEndElement();
    xml.writeTextElement(d, QStringLiteral("Types"),
                         QStringLiteral("dn:NetworkVideoTransmitter tds:Device"));
    xml.writeTextElement(d, QStringLiteral("Scopes"), kScopes.join(QLatin1Char(' ')));
    xml.writeTextElement(d, QStringLiteral("XAddrs"), xaddrs.join(QLatin1Char(' ')));
    xml.writeTextElement(d, QStringLiteral("MetadataVersion"), QStringLiteral("1"));
    xml.writeEndElement();
    xml.writeEndElement();
    return soap.finish();
}

}  // namespace halvex::onvif
