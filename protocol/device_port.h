#pragma once

#include "protocol/network_device.h"
#include "protocol/serial_port.h"

namespace halvex {

// The console's port: opens whatever the device string names, a local
// serial device (QtSerialPort), a device server's raw TCP port (TcpPort) or
// its RFC 2217 port (Rfc2217Port), and passes everything through to it. So
// HALVEX_COM<n>, the Port menu and the settings accept all three alike.
class DevicePort : public SerialPort {
    Q_OBJECT
  public:
    explicit DevicePort(QObject* parent = nullptr);

    bool open(const QString& device, qint32 baudRate) override;
    void close() override;
    bool isOpen() const override;
    bool stillConnecting() const override;
    qint32 baudRate() const override;
    int transportPauseMs() const override;

    bool writeByte(Byte value) override;
    int bytesWaiting() override;
    std::vector<Byte> peekWaiting() override;
    void consume(int count) override;

    // The kind of the port in use (Local before the first open).
    PortKind kind() const { return kind_; }

  private:
    void use(PortKind kind);

    SerialPort* port_ = nullptr;
    PortKind kind_ = PortKind::Local;
};

}  // namespace halvex
