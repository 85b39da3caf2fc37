#pragma once

#include <QTimer>
#include <memory>

#include "protocol/com_port_session.h"
#include "protocol/tcp_port.h"

namespace halvex {

// A serial port on a device server's RFC 2217 port (rfc2217://HOST:PORT):
// telnet with the com port control option. When the connection is made the
// console sets the remote port to the chosen speed, 8 data bits, no parity
// and one stop bit; the line's bytes travel with 0xFF doubled, and the
// server's telnet commands are taken out of what it sends.
class Rfc2217Port : public TcpPort {
    Q_OBJECT
  public:
    // A server that has not answered the com port option by then is taken
    // as one that ignores it: the line runs at the server's own settings.
    static constexpr int kNegotiationTimeoutMs = 1000;

    explicit Rfc2217Port(QObject* parent = nullptr);
    void setNegotiationTimeoutMs(int ms) { negotiationTimeoutMs_ = ms; }

  protected:
    void connectionOpened() override;
    void fromServer(const QByteArray& bytes) override;
    void appendToWire(Byte value, QByteArray& wire) override;
    void connectionDropped() override;

  private:
    // Tells the operator when the server keeps other settings than asked.
    void checkServerSettings();

    std::unique_ptr<ComPortSession> session_;
    QTimer negotiation_;
    int negotiationTimeoutMs_ = kNegotiationTimeoutMs;
    bool speedTold_ = false;
    bool formatTold_ = false;
};

}  // namespace halvex
