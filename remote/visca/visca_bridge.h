#pragma once

#include <QHostAddress>
#include <QObject>
#include <QPointer>
#include <QString>
#include <QTcpServer>
#include <QTimer>
#include <QUdpSocket>
#include <array>
#include <map>
#include <memory>
#include <optional>

#include "remote/remote_jog.h"
#include "remote/visca/visca_protocol.h"
#include "session/session.h"

class QTcpSocket;

namespace halvex {

// Lets broadcast controllers and streaming programs' PTZ plugins drive the
// unit as VISCA camera 1: VISCA over IP on UDP and plain VISCA over TCP on
// the same port number (52381 by default). Many clients at once, each
// answered on its own sockets 1 and 2.
//
// Pan-tilt, zoom and focus drives are this bridge's jog (camera 1's lens);
// positions, home and memories are the session's moves, acknowledged at
// once and completed when the unit has answered them. Every request is
// checked as any program's is: offline, tables being read again, a
// procedure running, the operator jogging or outside the soft limits, it is
// not executable and nothing is sent.
//
// Position units are hundredths of a degree (see visca_protocol.h). Loopback
// only unless told otherwise: VISCA has no authentication.
class ViscaBridge : public QObject {
    Q_OBJECT
  public:
    static constexpr quint16 kDefaultPort = visca::kDefaultPort;
    // Some controllers send one drive and nothing more until its stop, so
    // the jog is only stopped after a long silence: long enough for a slow
    // pan held on a button, short enough to bound a stop lost on UDP.
    static constexpr int kDefaultRefreshMs = 10000;
    // A UDP client is forgotten after this long without a datagram, when
    // nothing of it is still running.
    static constexpr int kForgetUdpClientMs = 60000;

    explicit ViscaBridge(Session& session, QObject* parent = nullptr);
    ~ViscaBridge() override;

    // UDP and TCP on the same port; port 0 picks a free one for both.
    bool listen(const QHostAddress& address = QHostAddress::LocalHost, quint16 port = kDefaultPort);
    // Stops listening, stops the jog and drops every client.
    void close();
    bool isListening() const { return server_.isListening(); }
    quint16 serverPort() const { return server_.serverPort(); }
    QString errorString() const { return error_; }

    // The jog stops when its client has sent nothing for this long; 0 never.
    void setRefreshMs(int refreshMs) { jog_.setRefreshMs(refreshMs); }
    int refreshMs() const { return jog_.refreshMs(); }
    int clientCount() const { return static_cast<int>(clients_.size()); }
    void setForgetUdpClientMs(int forgetMs);

  signals:
    void clientCountChanged(int clients);
    // What a request did ("memory recall 4", "refused: ..."), with the
    // client's "address:port" and its transport.
    void commandHandled(const QString& what, const QString& peer);

  private:
    struct Client;
    struct Origin;

    void acceptTcpClients();
    void readDatagrams();
    void readTcp(Client& client);
    void handleDatagram(Client& client, const visca::Packet& datagram);
    // Anything heard from the client driving the jog keeps it going.
    void heardFrom(Client& client);
    void handle(Client& client, const Origin& origin, const visca::Request& request);
    void reply(Client& client, const Origin& origin, const visca::Packet& packet);
    void sendIp(Client& client, const visca::Packet& message);

    void drivePanTilt(Client& client, const Origin& origin, const visca::PanTiltDrive& drive);
    void driveLens(Client& client, const Origin& origin, const visca::LensDrive& drive);
    void applyJog(Client& client, const Origin& origin, const JogDemand& demand, bool stopping,
                  const QString& what);
    void startMove(Client& client, const Origin& origin, const visca::Request& request);
    void resetPanTilt(Client& client, const Origin& origin);
    void cancel(Client& client, const Origin& origin, int socket);
    void clearInterface(Client& client);
    static int freeSocket(const Client& client);
    void answerInquiry(Client& client, const Origin& origin, const visca::Request& request);

    // A move's end, from the coroutine that waited for it.
    static QCoro::Task<> awaitMove(QPointer<ViscaBridge> bridge, quint64 client, int socket,
                                   quint64 ticket, QCoro::Task<Outcome> move);
    void moveEnded(quint64 client, int socket, quint64 ticket, const Outcome& outcome);

    Client* newClient(const QString& key);
    void forget(quint64 id);
    void forgetSilentUdpClients();
    // The jog at rest and no client's.
    void releaseJog();
    void stopJogOf(const Client& client, const QString& why);
    void note(const Client& client, const QString& what);

    Session& session_;
    QTcpServer server_;
    QUdpSocket udp_;
    QString error_;
    RemoteJog jog_;
    // What the bridge's jog asks for, and which client last set it.
    JogDemand demand_;
    quint64 jogClient_ = 0;
    int movesRunning_ = 0;
    quint64 nextId_ = 1;
    quint64 nextTicket_ = 1;
    std::map<quint64, std::unique_ptr<Client>> clients_;
    // UDP clients by "address:port".
    std::map<QString, quint64> udpClients_;
    int forgetUdpClientMs_ = 0;
    QTimer sweep_;
};

}  // namespace halvex
