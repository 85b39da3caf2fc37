#pragma once

#include <QString>
#include <optional>

namespace halvex {

// What a device string names: a local serial device, a device server's raw
// TCP port (socket://HOST:PORT) or its RFC 2217 port (rfc2217://HOST:PORT).
enum class PortKind { Local, RawTcp, Rfc2217 };

PortKind portKindOf(const QString& device);

// A serial port on a device server.
struct NetworkDevice {
    PortKind kind = PortKind::RawTcp;
    QString host;  // a name, an IPv4 address or an IPv6 address without brackets
    quint16 port = 0;

    // "socket://10.0.0.5:4001", "rfc2217://[fd00::5]:2001"
    QString toString() const;
};

// The network device a device string names, when it is a well-formed one.
std::optional<NetworkDevice> parseNetworkDevice(const QString& device);

// What is wrong with a typed host name or address, as a sentence for the
// operator; empty when it will do. Surrounding blanks and the brackets of an
// IPv6 address are allowed.
QString hostProblem(const QString& host);
// The same for a typed port number; `port` gets the number when it will do.
QString portProblem(const QString& text, quint16* port = nullptr);
// The host as it is kept: trimmed, an IPv6 address without its brackets.
QString normalisedHost(const QString& host);

}  // namespace halvex
