#pragma once

#include <gtest/gtest.h>

#include <QByteArray>
#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QHostAddress>
#include <QTcpSocket>
#include <QTest>
#include <utility>

namespace halvex::network {

// A raw TCP client on 127.0.0.1 for driving the server from a test. Every
// wait runs the event loop (the server lives on it too) and gives up after a
// few seconds, so a fault fails the test instead of hanging it.
class LineClient {
  public:
    bool connectTo(quint16 port) {
        socket.connectToHost(QHostAddress::LocalHost, port);
        return QTest::qWaitFor([&] { return socket.state() == QAbstractSocket::ConnectedState; });
    }

    // Waits until as many bytes as `expected` has are in, and returns them.
    QByteArray receive(const QByteArray& expected) {
        QDeadlineTimer deadline(5000);
        while ((received += socket.readAll()).size() < expected.size() && !deadline.hasExpired()) {
            QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
        }
        return std::exchange(received, {});
    }

    // Sends and expects the answer, whole and alone.
    void exchange(const QByteArray& request, const QByteArray& answer) {
        socket.write(request);
        EXPECT_EQ(receive(answer), answer) << "request " << request.toStdString();
    }

    // Waits for the server to close; what it sent before is in `received`.
    bool waitClosedByServer() {
        return QTest::qWaitFor([&] {
            received += socket.readAll();
            return socket.state() == QAbstractSocket::UnconnectedState;
        });
    }

    QTcpSocket socket;
    QByteArray received;
};

}  // namespace halvex::network
