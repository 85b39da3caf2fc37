#pragma once

#include <QObject>
#include <QString>
#include <QTimer>

#include "remote/onvif/http_request.h"

class QTcpSocket;

namespace halvex::onvif {

class OnvifServices;

// One client of the ONVIF server: reads its HTTP requests, answers each
// with the services' envelope, keeps the connection while the client wants
// it, and ends it on a request that breaks the rules or does not come.
class HttpConnection : public QObject {
    Q_OBJECT
  public:
    // Takes the socket over as a child.
    HttpConnection(QTcpSocket* socket, OnvifServices& services, int requestTimeoutMs,
                   int idleTimeoutMs, QObject* parent = nullptr);

    const QString& peer() const { return peer_; }
    void abort();

  signals:
    void commandHandled(const QString& what, const QString& peer);
    // The connection is gone; emitted once.
    void finished(halvex::onvif::HttpConnection* connection);

  private:
    void readRequests();
    void answer(const HttpRequest& request);
    void send(int status, const QByteArray& contentType, const QByteArray& body, bool keepAlive,
              const QByteArray& extraHeaders = {});
    void refuse(int status, const std::string& reason);
    void armTimer();
    void timedOut();
    void finish();

    QTcpSocket* socket_;
    OnvifServices& services_;
    HttpRequestReader reader_;
    QTimer timer_;
    int requestTimeoutMs_;
    int idleTimeoutMs_;
    QString peer_;
    bool closing_ = false;
    bool finished_ = false;
};

}  // namespace halvex::onvif
