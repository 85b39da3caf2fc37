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
    std::vector<Byte> peekWaiting() override;
    void consume(int count) override;

  protected:
    QString whyGone(const QString& reported) override;
    bool reopenInPlace() override;
    void abandonDevice() override;

  private:
    void onError(QSerialPort::SerialPortError error);
    // Opens device_ at baudRate_ in the console's format.
    bool openDevice();

    // A child, so that whoever holds this port can reach the library's own
    // objects (its notifiers) to test how a false alarm is handled.
    QSerialPort* port_;
    QString device_;
    qint32 baudRate_ = 9600;
};

}  // namespace halvex
