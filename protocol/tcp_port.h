#pragma once

#include <QByteArray>
#include <QTcpSocket>
#include <QTimer>

#include "protocol/network_device.h"
#include "protocol/serial_port.h"

namespace halvex {

// A serial port on a device server, reached over TCP: socket://HOST:PORT
// carries the line's bytes as they are. The connection is made without
// waiting: open() starts it, bytes written meanwhile are held and go out
// once it is made, and a refused, unresolvable, cut or silent connection is
// a lost device that says why.
class TcpPort : public SerialPort {
    Q_OBJECT
  public:
    // A connection not made by then counts as a server that is not there.
    static constexpr int kConnectTimeoutMs = 3000;
    // A device server sends what the serial line gave it so far; the rest of
    // a reply may follow in another packet this much later.
    static constexpr int kTransportPauseMs = 50;

    explicit TcpPort(QObject* parent = nullptr);

    // False only for a device string that names no network port.
    bool open(const QString& device, qint32 baudRate) override;
    void close() override;
    bool isOpen() const override { return socket_ != nullptr; }
    bool stillConnecting() const override { return socket_ != nullptr && !ready_; }
    qint32 baudRate() const override { return baudRate_; }
    int transportPauseMs() const override { return kTransportPauseMs; }

    bool writeByte(Byte value) override;
    int bytesWaiting() override;
    std::vector<Byte> peekWaiting() override;
    void consume(int count) override;

  protected:
    // A broken connection is always a lost device; it is never reopened in
    // place.
    QString whyGone(const QString& reported) override { return reported; }
    void abandonDevice() override;

    // What is spoken over the connection. Raw TCP: nothing but the line's
    // bytes, so the port is ready as soon as the connection is made.
    virtual void connectionOpened() { becomeReady(); }
    virtual void fromServer(const QByteArray& bytes) { deliver(bytes); }
    virtual void appendToWire(Byte value, QByteArray& wire) {
        wire.append(static_cast<char>(value));
    }
    virtual void connectionDropped() {}

    // Straight to the server, ahead of anything held.
    void sendNow(const QByteArray& wire);
    // Bytes from the remote serial line.
    void deliver(const QByteArray& data);
    // Bytes written so far go out; from now on every byte goes at once.
    void becomeReady();

  private:
    void onConnected();
    void onReadyRead();
    void readNow();
    void onError(QAbstractSocket::SocketError error);
    QString describe(QAbstractSocket::SocketError error) const;
    void dropSocket();

    QTcpSocket* socket_ = nullptr;
    NetworkDevice device_;
    qint32 baudRate_ = 9600;
    bool ready_ = false;
    bool readScheduled_ = false;
    QByteArray held_;
    QByteArray incoming_;
    QTimer connectTimer_;
};

}  // namespace halvex
