#pragma once

#include <QObject>
#include <QString>
#include <QTimer>
#include <functional>

#include "protocol/form_state.h"
#include "protocol/serial_port.h"

namespace halvex {

// The transmit path: one frame per Timer2 tick, written byte by byte, echoed
// as hexadecimal, guarded by the reply watchdog Timer4. Also owns Timer1, the
// connection time-out.
class Link : public QObject {
    Q_OBJECT
  public:
    static constexpr int kTickMs = 100;
    static constexpr int kWatchdogMs = 250;
    static constexpr int kConnectTimeoutMs = 2500;

    explicit Link(FormState& state, QObject* parent = nullptr);

    void setPort(SerialPort* port) { port_ = port; }
    SerialPort* port() const { return port_; }

    // Frames TxBuffer[0..count-1], waits for the next tick and writes it.
    void SendFrame(int count);

    // Writes TxBuffer[0..count] (the LRC already at [count]) as a frame at
    // once: for the jog message, which is sent from the tick itself.
    void transmit(int count);

    // Runs on every tick that no other frame is waiting for (the jog message).
    void setJogSender(std::function<void()> sender) { jogSender_ = std::move(sender); }

    // Frames written since the program started, jog messages included.
    quint64 framesSent() const { return framesSent_; }

    QTimer& Timer1() { return timer1_; }
    QTimer& Timer2() { return timer2_; }
    QTimer& Timer4() { return timer4_; }

  signals:
    // The hexadecimal image of the frame just written ("02 01 9A 9B 03").
    void frameSent(const QString& capture);

  private:
    void Timer1_Timer();
    void Timer2_Timer();
    void Timer4_Timer();
    void writeStuffed(Byte value, QString& capture);

    FormState& state_;
    SerialPort* port_ = nullptr;
    std::function<void()> jogSender_;
    QTimer timer1_;
    QTimer timer2_;
    QTimer timer4_;
    quint64 framesSent_ = 0;
};

// "9A " style text of one byte.
QString hexByte(Byte value);

}  // namespace halvex
