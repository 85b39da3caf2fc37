#pragma once

#include <QObject>
#include <QString>

#include "protocol/frame.h"

namespace halvex {

// What the link needs of a serial port, and nothing more. Always 8 data bits,
// no parity, one stop bit.
class SerialPort : public QObject {
    Q_OBJECT
  public:
    using QObject::QObject;

    virtual bool open(const QString& device, qint32 baudRate) = 0;
    virtual void close() = 0;
    virtual bool isOpen() const = 0;
    virtual qint32 baudRate() const = 0;

    // False when the byte could not be handed to the device: a port error,
    // after which the port closes as if the device had gone (deviceFailed).
    virtual bool writeByte(Byte value) = 0;
    virtual int bytesWaiting() = 0;
    virtual Byte readByte() = 0;
    virtual void discardInput() = 0;

    // Waits a short, bounded time for more bytes (a frame still arriving at
    // line speed). Returns true when bytes are waiting afterwards.
    virtual bool waitForBytes(int msecs) = 0;

    // Time for `characters` characters at the current speed, at least `floorMs`.
    int characterTimeMs(int characters, int floorMs) const;

  signals:
    // Raised when bytes have arrived; raised again while bytes remain.
    void dataArrived();
    // Raised when an open port has been closed, for whatever reason.
    void closed();
    // Raised after the port closed itself because the device went away (an
    // adapter pulled out, the far end of a pseudo-terminal gone).
    void lost(const QString& reason);

  protected:
    // The device failed under the open port. The port is closed from the
    // event loop, never inside the read or write that failed, and then
    // closed() and lost() are raised; failures until then are the same one.
    void deviceFailed(const QString& reason);
    // Closes the port without touching the device any more, raising closed().
    virtual void abandonDevice() { close(); }

  private:
    bool lossPending_ = false;
};

}  // namespace halvex
