#include "protocol/tcp_port.h"

#include <algorithm>
#include <utility>

namespace halvex {

TcpPort::TcpPort(QObject* parent) : SerialPort(parent) {
    connectTimer_.setSingleShot(true);
    connect(&connectTimer_, &QTimer::timeout, this, [this] {
        deviceFailed(QStringLiteral("the device server did not answer within %1 s")
                         .arg(kConnectTimeoutMs / 1000));
    });
}

bool TcpPort::open(const QString& device, qint32 baudRate) {
    close();
    const std::optional<NetworkDevice> parsed = parseNetworkDevice(device);
    if (!parsed) {
        return false;
    }
    device_ = *parsed;
    baudRate_ = baudRate;
    socket_ = new QTcpSocket(this);
    connect(socket_, &QTcpSocket::connected, this, &TcpPort::onConnected);
    connect(socket_, &QTcpSocket::readyRead, this, &TcpPort::onReadyRead);
    connect(socket_, &QTcpSocket::errorOccurred, this, &TcpPort::onError);
    connectTimer_.start(kConnectTimeoutMs);
    socket_->connectToHost(device_.host, device_.port);
    return true;
}

void TcpPort::onConnected() {
    connectTimer_.stop();
    // Frames are small and each waits for its reply: send them at once.
    socket_->setSocketOption(QAbstractSocket::LowDelayOption, 1);
    connectionOpened();
}

void TcpPort::becomeReady() {
    if (socket_ == nullptr || ready_) {
        return;
    }
    ready_ = true;
    const QByteArray held = std::exchange(held_, {});
    if (!held.isEmpty()) {
        sendNow(held);
    }
    emit connectionMade();
}

void TcpPort::sendNow(const QByteArray& wire) {
    if (socket_ == nullptr || wire.isEmpty()) {
        return;
    }
    if (socket_->write(wire) != wire.size()) {
        deviceFailed(QStringLiteral("writing to it failed: %1").arg(socket_->errorString()));
    }
}

bool TcpPort::writeByte(Byte value) {
    if (socket_ == nullptr) {
        return false;
    }
    QByteArray wire;
    appendToWire(value, wire);
    if (!ready_) {
        held_ += wire;
        return true;
    }
    if (socket_->write(wire) != wire.size()) {
        deviceFailed(QStringLiteral("writing to it failed: %1").arg(socket_->errorString()));
        return false;
    }
    return true;
}

void TcpPort::onReadyRead() {
    // Read from the event loop rather than inside the socket's signal: the
    // socket raises no new readyRead while one is running, and whatever the
    // data sets off (a reply decoder, the connection sequence) must not hold
    // back the next bytes.
    if (!readScheduled_) {
        readScheduled_ = true;
        QMetaObject::invokeMethod(this, &TcpPort::readNow, Qt::QueuedConnection);
    }
}

void TcpPort::readNow() {
    readScheduled_ = false;
    if (socket_ != nullptr && socket_->bytesAvailable() > 0) {
        fromServer(socket_->readAll());
    }
}

void TcpPort::deliver(const QByteArray& data) {
    if (data.isEmpty()) {
        return;
    }
    incoming_ += data;
    emit dataArrived();
}

int TcpPort::bytesWaiting() {
    return static_cast<int>(incoming_.size());
}

std::vector<Byte> TcpPort::peekWaiting() {
    return std::vector<Byte>(incoming_.cbegin(), incoming_.cend());
}

void TcpPort::consume(int count) {
    incoming_.remove(0, std::clamp<qsizetype>(count, 0, incoming_.size()));
}

QString TcpPort::describe(QAbstractSocket::SocketError error) const {
    switch (error) {
        case QAbstractSocket::ConnectionRefusedError:
            return QStringLiteral("the device server refused the connection");
        case QAbstractSocket::RemoteHostClosedError:
            return QStringLiteral("the device server closed the connection");
        case QAbstractSocket::HostNotFoundError:
            return QStringLiteral("the name %1 does not resolve to an address").arg(device_.host);
        case QAbstractSocket::NetworkError:
            return QStringLiteral("the network failed (%1)").arg(socket_->errorString());
        default:
            return QStringLiteral("the connection failed (%1)").arg(socket_->errorString());
    }
}

void TcpPort::onError(QAbstractSocket::SocketError error) {
    if (socket_ != nullptr) {
        deviceFailed(describe(error));
    }
}

void TcpPort::dropSocket() {
    connectTimer_.stop();
    // Deleted later: this may run inside one of the socket's own signals.
    socket_->disconnect(this);
    socket_->abort();
    socket_->deleteLater();
    socket_ = nullptr;
    ready_ = false;
    held_.clear();
    incoming_.clear();
    connectionDropped();
}

void TcpPort::close() {
    if (socket_ == nullptr) {
        return;
    }
    // What the console wrote last (the stop request on Exit) still goes.
    socket_->flush();
    dropSocket();
    emit closed();
}

void TcpPort::abandonDevice() {
    if (socket_ != nullptr) {
        dropSocket();
        emit closed();
    }
}

}  // namespace halvex
