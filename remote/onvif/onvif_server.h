#pragma once

#include <QHostAddress>
#include <QList>
#include <QObject>
#include <QString>
#include <QTcpServer>
#include <memory>

namespace halvex {

class Session;

namespace onvif {
class HttpConnection;
class OnvifServices;
class WsDiscovery;
}  // namespace onvif

// Lets video management systems and their joysticks drive the unit as an
// ONVIF Profile S device (device, media and PTZ services) over HTTP/1.1 on
// a port of its own, each request signed with a WS-Security username token.
// WS-Discovery answers on UDP once startDiscovery() is called.
class OnvifServer : public QObject {
    Q_OBJECT
  public:
    static constexpr quint16 kDefaultPort = 8080;
    static constexpr quint16 kDiscoveryPort = 3702;
    // A request cut short gets this long for the rest, an idle kept-alive
    // connection this long for its next request.
    static constexpr int kRequestTimeoutMs = 10000;
    static constexpr int kIdleTimeoutMs = 60000;

    explicit OnvifServer(Session& session, QObject* parent = nullptr);
    ~OnvifServer() override;

    // The user and password that requests must be signed with.
    void setCredentials(const QString& user, const QString& password);
    // Requests without a token answered too (for a closed network only).
    void setAnonymousAllowed(bool allowed);
    void setTimeouts(int requestMs, int idleMs);

    // Port 0 picks a free one; serverPort() tells which.
    bool listen(const QHostAddress& address = QHostAddress::Any, quint16 port = kDefaultPort);
    // Answers probes for a NetworkVideoTransmitter on the discovery group
    // (239.255.255.250) and `port`, naming this server's device service.
    bool startDiscovery(quint16 port = kDiscoveryPort);
    // Stops listening and discovery and drops every client.
    void close();
    bool isListening() const { return server_.isListening(); }
    quint16 serverPort() const { return server_.serverPort(); }
    // The discovery socket's port, 0 when discovery is off.
    quint16 discoveryPort() const;
    QString errorString() const { return errorString_; }
    int clientCount() const { return static_cast<int>(connections_.size()); }

    onvif::OnvifServices& services() { return *services_; }

  signals:
    void clientCountChanged(int clients);
    // A request answered, by its operation ("ContinuousMove"), with the
    // client's "address:port".
    void commandHandled(const QString& what, const QString& peer);

  private:
    void acceptClients();
    void forget(onvif::HttpConnection* connection);

    onvif::OnvifServices* services_;
    QTcpServer server_;
    std::unique_ptr<onvif::WsDiscovery> discovery_;
    QList<onvif::HttpConnection*> connections_;
    QString errorString_;
    int requestTimeoutMs_ = kRequestTimeoutMs;
    int idleTimeoutMs_ = kIdleTimeoutMs;
};

}  // namespace halvex
