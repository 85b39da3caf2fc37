#pragma once

#include <QElapsedTimer>
#include <QObject>
#include <QString>
#include <deque>
#include <vector>

#include "protocol/frame.h"

namespace halvex {

// What the link needs of a serial port, and nothing more. Always 8 data bits,
// no parity, one stop bit. Behind it: a local serial device, a device
// server's port on the network, or the tests' port in the same process.
class SerialPort : public QObject {
    Q_OBJECT
  public:
    // False alarms come in clusters while nested waits run (a wakeup that
    // a nested event loop has already served), with bytes arriving between
    // them. A port that needs more than this many reopens in this long with
    // no byte in between is taken for lost: a device that keeps failing and
    // delivers nothing is not a false alarm.
    static constexpr int kMostReopens = 5;
    static constexpr int kReopenWindowMs = 10000;

    explicit SerialPort(QObject* parent = nullptr);

    virtual bool open(const QString& device, qint32 baudRate) = 0;
    virtual void close() = 0;
    virtual bool isOpen() const = 0;
    // An error was reported and is about to be looked at (the device gone,
    // or still there and opened again in place).
    bool failing() const { return failurePending_; }
    // An open network port whose connection is still being made: bytes
    // written meanwhile wait in the port and go out, once, when it is made
    // (connectionMade). A failed connection is a lost device.
    virtual bool stillConnecting() const { return false; }
    virtual qint32 baudRate() const = 0;

    // False when the byte could not be handed to the device: a port error,
    // after which the port is looked at (deviceFailed).
    virtual bool writeByte(Byte value) = 0;
    virtual int bytesWaiting() = 0;
    // The bytes waiting, oldest first, left where they are.
    virtual std::vector<Byte> peekWaiting() = 0;
    // Takes the oldest `count` waiting bytes out.
    virtual void consume(int count) = 0;

    // Time for `characters` characters at the current speed, at least `floorMs`.
    int characterTimeMs(int characters, int floorMs) const;
    // How long the way to the device may hold back the rest of a reply on
    // its own: a device server gathers serial bytes into packets, and a
    // network delays some of them. Nothing for a local line.
    virtual int transportPauseMs() const { return 0; }

  signals:
    // Raised when bytes have arrived. Bytes left waiting do not raise it again.
    void dataArrived();
    // Raised when an open port has been closed, for whatever reason.
    void closed();
    // Raised after the port closed itself because the device went away (an
    // adapter pulled out, the far end of a pseudo-terminal gone).
    void lost(const QString& reason);
    // Raised after a port error on a device that is still there: the port
    // was reopened in place and stays open. Bytes that were on their way in
    // may be gone.
    void reopened(const QString& reason);
    // A network port's connection is made and bytes go out from now on.
    void connectionMade();
    // Something the operator should know that does not stop the port (a
    // device server that keeps its own line speed).
    void notice(const QString& text);

  protected:
    // The device reported an error under the open port. It is looked at from
    // the event loop, never inside the read or write that failed: when it is
    // really gone, or cannot be reopened in place, the port closes and
    // closed() and lost() are raised; otherwise reopened() is. Failures until
    // then are the same one.
    void deviceFailed(const QString& reason);
    // Why the device is gone (it vanished, it hung up), or an empty string
    // while it is still there. A port kind that cannot tell says it went away.
    virtual QString whyGone(const QString& reported) {
        return QStringLiteral("the device went away (%1)").arg(reported);
    }
    // Closes and opens the same device again with the same settings, without
    // raising closed(). False when it did not open.
    virtual bool reopenInPlace() { return false; }
    // Closes the port without touching the device any more, raising closed().
    virtual void abandonDevice() { close(); }

  private:
    void confirmFailure(const QString& reason);

    bool failurePending_ = false;
    // When the reopens since the last bytes came happened, oldest first.
    std::deque<QElapsedTimer> reopens_;
};

}  // namespace halvex
