#include "remote/onvif/onvif_server.h"

#include <QTcpSocket>

#include "remote/onvif/http_connection.h"
#include "remote/onvif/onvif_services.h"
#include "remote/onvif/ws_discovery.h"

namespace halvex {

using onvif::HttpConnection;

OnvifServer::OnvifServer(Session& session, QObject* parent)
    : QObject(parent), services_(new onvif::OnvifServices(session, this)) {
    connect(&server_, &QTcpServer::newConnection, this, &OnvifServer::acceptClients);
}

OnvifServer::~OnvifServer() {
    close();
}

void OnvifServer::setCredentials(const QString& user, const QString& password) {
    services_->setCredentials(user, password);
}

void OnvifServer::setAnonymousAllowed(bool allowed) {
    services_->setAnonymousAllowed(allowed);
}

void OnvifServer::setTimeouts(int requestMs, int idleMs) {
    requestTimeoutMs_ = requestMs;
    idleTimeoutMs_ = idleMs;
}

bool OnvifServer::listen(const QHostAddress& address, quint16 port) {
    if (!server_.listen(address, port)) {
        errorString_ = server_.errorString();
        return false;
    }
    errorString_.clear();
    return true;
}

bool OnvifServer::startDiscovery(quint16 port) {
    if (!discovery_) {
        discovery_ = std::make_unique<onvif::WsDiscovery>([this] { return serverPort(); });
    }
    if (!discovery_->start(port)) {
        errorString_ = discovery_->errorString();
        return false;
    }
    return true;
}

quint16 OnvifServer::discoveryPort() const {
    return discovery_ ? discovery_->port() : 0;
}

void OnvifServer::close() {
    server_.close();
    if (discovery_) {
        discovery_->stop();
    }
    // A jog that a client started does not outlive the server.
    services_->jog().stop();
    const auto connections = connections_;
    for (HttpConnection* connection : connections) {
        connection->abort();
    }
}

void OnvifServer::acceptClients() {
    while (QTcpSocket* socket = server_.nextPendingConnection()) {
        auto* connection =
            new HttpConnection(socket, *services_, requestTimeoutMs_, idleTimeoutMs_, this);
        connect(connection, &HttpConnection::commandHandled, this, &OnvifServer::commandHandled);
        connect(connection, &HttpConnection::finished, this, &OnvifServer::forget);
        connections_.append(connection);
        emit clientCountChanged(clientCount());
    }
}

void OnvifServer::forget(HttpConnection* connection) {
    if (connections_.removeOne(connection)) {
        connection->deleteLater();
        emit clientCountChanged(clientCount());
    }
}

}  // namespace halvex
