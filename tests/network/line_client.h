#pragma once

#include <gtest/gtest.h>

#include <QByteArray>
#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QHostAddress>
#include <QTcpSocket>
#include <QTest>
#include <functional>

namespace halvex::network {

// A raw TCP client on 127.0.0.1 for driving the server from a test. Every
// wait runs the event loop (the server lives on it too) and gives up after a
// few seconds, so a fault fails the test instead of hanging it.
class LineClient {
  public:
    static bool waitFor(const std::function<bool()>& done, int ms = 5000) {
        QDeadlineTimer deadline(ms);
        while (!done()) {
            if (deadline.hasExpired()) {
                return false;
            }
            QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
        }
        return true;
    }

    bool connectTo(quint16 port) {
        socket_.connectToHost(QHostAddress::LocalHost, port);
        return waitFor([this] { return socket_.state() == QAbstractSocket::ConnectedState; });
    }

    void send(const QByteArray& bytes) {
        socket_.write(bytes);
        socket_.flush();
    }

    // Waits until as many bytes as `expected` has are in, and returns them.
    QByteArray receive(const QByteArray& expected) {
        waitFor([&] {
            received_ += socket_.readAll();
            return received_.size() >= expected.size();
        });
        return take();
    }

    // Sends and expects the answer, whole and alone.
    void exchange(const QByteArray& request, const QByteArray& answer) {
        send(request);
        EXPECT_EQ(receive(answer), answer) << "request " << request.toStdString();
    }

    bool waitClosedByServer() {
        return waitFor([this] {
            received_ += socket_.readAll();
            return socket_.state() == QAbstractSocket::UnconnectedState;
        });
    }

    QByteArray take() {
        const QByteArray out = received_;
        received_.clear();
        return out;
    }

    QTcpSocket& socket() { return socket_; }

  private:
    QTcpSocket socket_;
    QByteArray received_;
};

}  // namespace halvex::network
