#pragma once

#include <QByteArray>
#include <QHostAddress>
#include <QObject>
#include <QString>
#include <QUdpSocket>
#include <functional>
#include <optional>

namespace halvex::onvif {

// WS-Discovery for the ONVIF server: answers a Probe for a
// NetworkVideoTransmitter (or for any type) with a ProbeMatch that names the
// device service, sent back to the prober.
class WsDiscovery : public QObject {
    Q_OBJECT
  public:
    static constexpr auto kGroup = "239.255.255.250";

    // `httpPort` tells the device service's port when a probe comes.
    WsDiscovery(std::function<quint16()> httpPort, QObject* parent = nullptr);

    // Binds `port` (0 picks a free one) and joins the discovery group where
    // the interfaces allow it.
    bool start(quint16 port);
    void stop();
    quint16 port() const { return socket_.localPort(); }
    QString errorString() const { return socket_.errorString(); }

    // The answer to one datagram from `sender`, if it is a probe that this
    // device matches.
    std::optional<QByteArray> answer(const QByteArray& datagram, const QHostAddress& sender) const;

  private:
    void readProbes();

    std::function<quint16()> httpPort_;
    QString endpoint_;
    QUdpSocket socket_;
};

}  // namespace halvex::onvif
