#pragma once

#include <QSerialPort>

#include "protocol/serial_port.h"

namespace halvex {

// A real device or pseudo-terminal, through QSerialPort.
class QtSerialPort : public SerialPort {
    Q_OBJECT
  public:
    explicit QtSerialPort(QObject* parent = nullptr);

    bool open(const QString& device, qint32 baudRate) override;
    void close() override;
    bool isOpen() const override;
    qint32 baudRate() const override { return baudRate_; }

    bool writeByte(Byte value) override;
    int bytesWaiting() override;
    Byte readByte() override;
    void discardInput() override;
    bool waitForBytes(int msecs) override;

  protected:
    void abandonDevice() override;

  private:
    void onError(QSerialPort::SerialPortError error);

    QSerialPort port_;
    qint32 baudRate_ = 9600;
};

}  // namespace halvex
