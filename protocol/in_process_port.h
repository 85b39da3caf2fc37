#pragma once

#include <QElapsedTimer>
#include <QTimer>
#include <deque>

#include "protocol/serial_port.h"
#include "protocol/unit_peer.h"

namespace halvex {

// A serial port whose far end is a unit object in the same process. Bytes
// written reach the peer at once; the peer's answers are delivered from the
// event loop, like a real port's data event.
class InProcessPort : public SerialPort {
    Q_OBJECT
  public:
    explicit InProcessPort(UnitPeer* peer, QObject* parent = nullptr);

    bool open(const QString& device, qint32 baudRate) override;
    void close() override;
    bool isOpen() const override { return open_; }
    qint32 baudRate() const override { return baudRate_; }

    bool writeByte(Byte value) override;
    int bytesWaiting() override;
    std::vector<Byte> peekWaiting() override;
    void consume(int count) override;

  protected:
    // Puts bytes into the receive buffer as if they had come down the line.
    void deliver(const std::vector<Byte>& bytes);

  private:
    // Moves the peer's clock on and takes what it has said; true when it
    // said something.
    bool collect();
    void pump();
    void schedulePump();

    UnitPeer* peer_;
    std::deque<Byte> incoming_;
    QElapsedTimer clock_;
    QTimer clockTimer_;
    qint32 baudRate_ = 9600;
    bool open_ = false;
    bool pumpScheduled_ = false;
};

}  // namespace halvex
