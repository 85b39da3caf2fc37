#include "network/rotctld_server.h"

#include <QTcpSocket>

#include "network/rotctld_session.h"

namespace halvex::network {

RotctldServer::RotctldServer(Rotator& rotator, QObject* parent)
    : QObject(parent), rotator_(rotator) {
    connect(&server_, &QTcpServer::newConnection, this, &RotctldServer::acceptClients);
}

RotctldServer::~RotctldServer() {
    // No signals to a half-destroyed server while the sessions go.
    for (RotctldSession* session : std::as_const(sessions_)) {
        session->disconnect(this);
        delete session;
    }
}

bool RotctldServer::listen(const QHostAddress& address, quint16 port) {
    return server_.listen(address, port);
}

void RotctldServer::close() {
    server_.close();
    const QList<RotctldSession*> sessions = sessions_;
    for (RotctldSession* session : sessions) {
        session->abort();
    }
}

void RotctldServer::acceptClients() {
    while (QTcpSocket* socket = server_.nextPendingConnection()) {
        auto* session = new RotctldSession(socket, rotator_, this);
        connect(session, &RotctldSession::moveAccepted, this, &RotctldServer::moveAccepted);
        connect(session, &RotctldSession::finished, this, &RotctldServer::forget);
        sessions_.append(session);
        emit clientCountChanged(clientCount());
    }
}

void RotctldServer::forget(RotctldSession* session) {
    if (!sessions_.removeOne(session)) {
        return;
    }
    // Later: this may run inside one of the session's own socket signals.
    session->deleteLater();
    emit clientCountChanged(clientCount());
}

}  // namespace halvex::network
