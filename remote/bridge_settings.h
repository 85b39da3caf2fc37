#pragma once

#include <QHostAddress>
#include <QString>
#include <optional>

namespace halvex {

// Which standard PTZ bridges run and where: every one is off until asked for,
// and each network bridge listens on the loopback address until told
// otherwise.
struct BridgeSettings {
    QHostAddress listen{QHostAddress::LocalHost};

    std::optional<quint16> onvifPort;
    QString onvifUser;
    QString onvifPassword;

    std::optional<quint16> viscaPort;
    // How long a drive goes on with nothing heard from its client; 0: until
    // its stop. Some VISCA controllers send one drive and nothing until the
    // stop; a Pelco-D keyboard repeats its frame while the stick is held.
    static constexpr int kViscaRefreshMs = 10000;
    static constexpr int kPelcoRefreshMs = 800;
    static constexpr int kLongestRefreshMs = 600000;
    int viscaRefreshMs = kViscaRefreshMs;
    int pelcoRefreshMs = kPelcoRefreshMs;

    // A serial device of its own, or a TCP port: at most one of them.
    QString pelcoDevice;
    std::optional<quint16> pelcoTcpPort;
    int pelcoAddress = 1;
    qint32 pelcoBaud = 2400;

    bool any() const { return onvifPort || viscaPort || !pelcoDevice.isEmpty() || pelcoTcpPort; }
};

}  // namespace halvex
