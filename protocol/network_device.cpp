#include "protocol/network_device.h"

#include <QHostAddress>
#include <algorithm>

namespace halvex {

namespace {
const QString kRawScheme = QStringLiteral("socket://");
const QString kRfc2217Scheme = QStringLiteral("rfc2217://");
// The longest a host name may be (RFC 1035).
constexpr int kMaxHostLength = 253;

bool isIpv6(const QString& host) {
    return host.contains(QLatin1Char(':')) &&
           QHostAddress(host).protocol() == QAbstractSocket::IPv6Protocol;
}

bool isHostNameCharacter(QChar c) {
    return (c >= QLatin1Char('a') && c <= QLatin1Char('z')) ||
           (c >= QLatin1Char('A') && c <= QLatin1Char('Z')) ||
           (c >= QLatin1Char('0') && c <= QLatin1Char('9')) || c == QLatin1Char('.') ||
           c == QLatin1Char('-') || c == QLatin1Char('_');
}
}  // namespace

PortKind portKindOf(const QString& device) {
    if (device.startsWith(kRawScheme, Qt::CaseInsensitive)) {
        return PortKind::RawTcp;
    }
    if (device.startsWith(kRfc2217Scheme, Qt::CaseInsensitive)) {
        return PortKind::Rfc2217;
    }
    return PortKind::Local;
}

QString NetworkDevice::toString() const {
    const QString scheme = kind == PortKind::Rfc2217 ? kRfc2217Scheme : kRawScheme;
    const QString where = host.contains(QLatin1Char(':')) ? QStringLiteral("[%1]").arg(host) : host;
    return QStringLiteral("%1%2:%3").arg(scheme, where).arg(port);
}

QString normalisedHost(const QString& host) {
    QString kept = host.trimmed();
    if (kept.startsWith(QLatin1Char('[')) && kept.endsWith(QLatin1Char(']'))) {
        kept = kept.mid(1, kept.size() - 2);
    }
    return kept;
}

QString hostProblem(const QString& host) {
    const QString kept = normalisedHost(host);
    if (kept.isEmpty()) {
        return QStringLiteral("Enter the device server's name or address.");
    }
    if (isIpv6(kept)) {
        return {};
    }
    if (kept.size() > kMaxHostLength ||
        !std::all_of(kept.cbegin(), kept.cend(), isHostNameCharacter)) {
        return QStringLiteral(
            "A host name holds only letters, digits, dots and dashes (or give an address).");
    }
    return {};
}

QString portProblem(const QString& text, quint16* port) {
    const QString kept = text.trimmed();
    bool number = !kept.isEmpty() &&
                  std::all_of(kept.cbegin(), kept.cend(), [](QChar c) { return c.isDigit(); });
    const uint value = number ? kept.toUInt(&number) : 0;
    if (!number || value < 1 || value > 65535) {
        return QStringLiteral("Enter a port number from 1 to 65535.");
    }
    if (port != nullptr) {
        *port = static_cast<quint16>(value);
    }
    return {};
}

std::optional<NetworkDevice> parseNetworkDevice(const QString& device) {
    NetworkDevice parsed;
    parsed.kind = portKindOf(device);
    if (parsed.kind == PortKind::Local) {
        return std::nullopt;
    }
    const QString rest =
        device.mid((parsed.kind == PortKind::RawTcp ? kRawScheme : kRfc2217Scheme).size());
    // The port follows the last colon; an IPv6 address keeps its own colons
    // inside brackets.
    const qsizetype colon = rest.lastIndexOf(QLatin1Char(':'));
    if (colon < 0) {
        return std::nullopt;
    }
    QString host = rest.left(colon);
    const bool bracketed = host.startsWith(QLatin1Char('[')) && host.endsWith(QLatin1Char(']'));
    if (host.contains(QLatin1Char(':')) && !bracketed) {
        return std::nullopt;
    }
    host = normalisedHost(host);
    if (host != rest.left(colon) && !bracketed) {
        return std::nullopt;  // blanks around the host
    }
    if (!hostProblem(host).isEmpty() || (bracketed && !isIpv6(host))) {
        return std::nullopt;
    }
    const QString portText = rest.mid(colon + 1);
    if (portText != portText.trimmed() || !portProblem(portText, &parsed.port).isEmpty()) {
        return std::nullopt;
    }
    parsed.host = host;
    return parsed;
}

}  // namespace halvex
