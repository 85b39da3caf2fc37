#pragma once

#include <QByteArray>
#include <QPointer>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTest>
#include <functional>

namespace halvex::testing {

// A device server played by the test on 127.0.0.1: it keeps what every
// connection sent, in order, and says what the test tells it.
class ScriptedServer {
  public:
    // Runs for every connection as it comes in (a telnet server's opening).
    std::function<void(QTcpSocket&)> greet;

    ScriptedServer() {
        server_.listen(QHostAddress::LocalHost, 0);
        QObject::connect(&server_, &QTcpServer::newConnection, [this] {
            while (QTcpSocket* socket = server_.nextPendingConnection()) {
                client_ = socket;
                QObject::connect(socket, &QTcpSocket::readyRead,
                                 [this, socket] { received_ += socket->readAll(); });
                if (greet) {
                    greet(*socket);
                }
            }
        });
    }

    quint16 port() const { return server_.serverPort(); }
    const QByteArray& received() const { return received_; }
    bool waitForBytes(qsizetype count, int timeoutMs = 5000) {
        return QTest::qWaitFor([&] { return received_.size() >= count; }, timeoutMs);
    }
    bool waitForConnection(int timeoutMs = 5000) {
        return QTest::qWaitFor([&] { return client_ != nullptr; }, timeoutMs);
    }
    void send(const QByteArray& bytes) {
        if (client_) {
            client_->write(bytes);
            client_->flush();
        }
    }

  private:
    QTcpServer server_;
    QPointer<QTcpSocket> client_;
    QByteArray received_;
};

// A TCP port on 127.0.0.1 where nothing listens: a connection is refused.
inline quint16 closedPort() {
    QTcpServer probe;
    probe.listen(QHostAddress::LocalHost, 0);
    return probe.serverPort();  // closed again when probe goes
}

}  // namespace halvex::testing
