#pragma once

#include <QHostAddress>
#include <QList>
#include <QObject>
#include <QString>
#include <QTcpServer>

#include "network/rotator.h"

namespace halvex::network {

class RotctldSession;

// Lets tracking programs steer the unit over TCP with Hamlib's rotctld
// protocol (rotctl -m 2 -r host:port). Many clients at once; each line is
// answered in order. Loopback only unless told otherwise: the protocol has no
// authentication.
class RotctldServer : public QObject {
    Q_OBJECT
  public:
    static constexpr quint16 kDefaultPort = 4533;

    explicit RotctldServer(Rotator& rotator, QObject* parent = nullptr);
    ~RotctldServer() override;

    // Port 0 picks a free one; serverPort() tells which.
    bool listen(const QHostAddress& address = QHostAddress::LocalHost, quint16 port = kDefaultPort);
    // Stops listening and drops every client.
    void close();
    bool isListening() const { return server_.isListening(); }
    quint16 serverPort() const { return server_.serverPort(); }
    QHostAddress serverAddress() const { return server_.serverAddress(); }
    QString errorString() const { return server_.errorString(); }
    int clientCount() const { return static_cast<int>(sessions_.size()); }

  signals:
    void clientCountChanged(int clients);
    // A set_pos the rotator took, with the client's "address:port".
    void moveAccepted(double azimuth, double elevation, const QString& peer);

  private:
    void acceptClients();
    void forget(RotctldSession* session);

    Rotator& rotator_;
    QTcpServer server_;
    QList<RotctldSession*> sessions_;
};

}  // namespace halvex::network
