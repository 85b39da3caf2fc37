#include "remote/onvif/http_connection.h"

#include <QTcpSocket>

#include "remote/onvif/onvif_services.h"

namespace halvex::onvif {

namespace {
bool servicePath(const std::string& target) {
    const std::string path = target.substr(0, target.find('?'));
    return path == "/onvif/device_service" || path == "/onvif/media_service" ||
           path == "/onvif/ptz_service";
}

QString hostText(const QHostAddress& address) {
    QHostAddress plain = address;
    bool mapped = false;
    const quint32 v4 = plain.toIPv4Address(&mapped);
    if (mapped) {
        plain = QHostAddress(v4);
    }
    return plain.protocol() == QAbstractSocket::IPv6Protocol
               ? QStringLiteral("[%1]").arg(plain.toString())
               : plain.toString();
}
}  // namespace

HttpConnection::HttpConnection(QTcpSocket* socket, OnvifServices& services, int requestTimeoutMs,
                               int idleTimeoutMs, QObject* parent)
    : QObject(parent),
      socket_(socket),
      services_(services),
      requestTimeoutMs_(requestTimeoutMs),
      idleTimeoutMs_(idleTimeoutMs) {
    socket_->setParent(this);
    peer_ = QStringLiteral("%1:%2").arg(hostText(socket_->peerAddress())).arg(socket_->peerPort());
    timer_.setSingleShot(true);
    connect(&timer_, &QTimer::timeout, this, &HttpConnection::timedOut);
    connect(socket_, &QTcpSocket::readyRead, this, &HttpConnection::readRequests);
    connect(socket_, &QTcpSocket::disconnected, this, &HttpConnection::finish);
    armTimer();
    // Bytes may have come with the connection, before readyRead was heard.
    QMetaObject::invokeMethod(this, &HttpConnection::readRequests, Qt::QueuedConnection);
}

void HttpConnection::readRequests() {
    if (closing_ || finished_) {
        socket_->readAll();
        return;
    }
    const QByteArray bytes = socket_->readAll();
    reader_.feed(std::string_view(bytes.constData(), static_cast<std::size_t>(bytes.size())));
    while (!closing_) {
        const auto state = reader_.next();
        if (state == HttpRequestReader::State::NeedMore) {
            if (reader_.takeContinueRequest()) {
                socket_->write("HTTP/1.1 100 Continue\r\n\r\n");
            }
            break;
        }
        if (state == HttpRequestReader::State::Failed) {
            refuse(reader_.status(), reader_.reason());
            return;
        }
        answer(reader_.take());
    }
    armTimer();
}

void HttpConnection::answer(const HttpRequest& request) {
    const bool keepAlive = request.keepAlive();
    if (request.method != "POST") {
        send(405, "text/plain", "SOAP requests are POSTed\n", keepAlive, "Allow: POST\r\n");
        return;
    }
    if (!servicePath(request.target)) {
        send(404, "text/plain", "no such service\n", keepAlive);
        return;
    }
    const auto host = request.header("Host");
    const QString address =
        QStringLiteral("http://") +
        (host && !host->empty()
             ? QString::fromLatin1(host->data(), static_cast<qsizetype>(host->size()))
             : QStringLiteral("%1:%2")
                   .arg(hostText(socket_->localAddress()))
                   .arg(socket_->localPort()));
    const OnvifReply reply = services_.handle(
        QByteArray(request.body.data(), static_cast<qsizetype>(request.body.size())), address);
    send(reply.status, "application/soap+xml; charset=utf-8", reply.body, keepAlive);
    if (reply.status == 200 && !reply.operation.isEmpty()) {
        emit commandHandled(reply.operation, peer_);
    }
}

void HttpConnection::send(int status, const QByteArray& contentType, const QByteArray& body,
                          bool keepAlive, const QByteArray& extraHeaders) {
    const std::string_view phrase = httpReasonPhrase(status);
    QByteArray head = "HTTP/1.1 " + QByteArray::number(status) + ' ' +
                      QByteArray(phrase.data(), static_cast<qsizetype>(phrase.size())) + "\r\n";
    head += "Content-Type: " + contentType + "\r\n";
    head += "Content-Length: " + QByteArray::number(body.size()) + "\r\n";
    head += keepAlive ? "Connection: keep-alive\r\n" : "Connection: close\r\n";
    head += extraHeaders;
    head += "\r\n";
    socket_->write(head + body);
    if (!keepAlive) {
        closing_ = true;
        timer_.stop();
        // The socket writes what it still holds before it closes.
        socket_->disconnectFromHost();
    }
}

void HttpConnection::refuse(int status, const std::string& reason) {
    send(status, "text/plain", QByteArray::fromStdString(reason) + '\n', false);
}

void HttpConnection::armTimer() {
    if (closing_) {
        return;
    }
    timer_.start(reader_.midRequest() ? requestTimeoutMs_ : idleTimeoutMs_);
}

void HttpConnection::timedOut() {
    if (reader_.midRequest()) {
        refuse(408, "the rest of the request did not come");
    } else {
        closing_ = true;
        socket_->disconnectFromHost();
    }
}

void HttpConnection::abort() {
    socket_->abort();
    finish();
}

void HttpConnection::finish() {
    if (finished_) {
        return;
    }
    finished_ = true;
    timer_.stop();
    emit finished(this);
}

}  // namespace halvex::onvif
