#pragma once

#include <QObject>
#include <QString>
#include <QTimer>
#include <deque>
#include <functional>
#include <memory>
#include <vector>

#include "protocol/form_state.h"
#include "protocol/serial_port.h"
#include "protocol/wait.h"

namespace halvex {

// One frame handed to the link, and what became of it.
struct FrameRecord {
    enum class Status { Queued, Sent, Dropped };

    std::vector<Byte> message;  // code, payload and LRC, unstuffed
    Byte address = 0;           // what goes on the wire
    Byte captureId = 0;         // what the capture line shows: the configured unit
    Status status = Status::Queued;
    // A receive event came for it: replies come in the order of the frames.
    bool answered = false;
    // The watchdog fired or the port went away before that.
    bool unanswered = false;
};
using FrameTicket = std::shared_ptr<const FrameRecord>;

inline bool wentOut(const FrameTicket& frame) {
    return frame && frame->status == FrameRecord::Status::Sent;
}

// The transmit path: frames wait in a queue and go out one per Timer2 tick,
// written byte by byte, echoed as hexadecimal, guarded by the reply watchdog
// Timer4. A tick with nothing queued and no sender holding the line carries
// the jog message. Also owns Timer1, the connection time-out.
//
// A frame is copied out of TxBuffer when it is queued, so a second handler
// that fills TxBuffer while the first one waits for its tick cannot change
// it; every wait ends on its event, the port closing or a time-out.
class CaptureLine;

class Link : public QObject {
    Q_OBJECT
  public:
    static constexpr int kTickMs = 100;
    static constexpr int kWatchdogMs = 250;
    static constexpr int kConnectTimeoutMs = 2500;
    // Beyond the ticks the frames ahead need: a stopped tick never strands a
    // sender.
    static constexpr int kSendGraceMs = 2000;
    void setSendGraceMs(int ms) { sendGraceMs_ = ms; }
    // Beyond the watchdog interval, for a reply wait.
    static constexpr int kReplyGraceMs = 1000;

    // `tickMs` is the time between frames; the unit expects kTickMs, and a
    // console talking to the virtual unit in the same process may go faster.
    explicit Link(FormState& state, int tickMs = kTickMs, QObject* parent = nullptr);

    void setPort(SerialPort* port);
    SerialPort* port() const { return port_; }
    bool portOpen() const { return port_ != nullptr && port_->isOpen(); }

    // Queues TxBuffer[0..count-1] with its LRC (also written to
    // TxBuffer[count]) and completes when a tick has written it; the line is
    // held (no jog message) meanwhile. The ticket says whether it went out,
    // and later whether it was answered. A caller that does not co_await it
    // has still queued the frame: it goes out on its tick all the same.
    QCoro::Task<FrameTicket> SendFrame(int count);

    // Writes TxBuffer[0..count] (the LRC already at [count]) at once: for the
    // jog message, which is sent from the tick itself. Once it is out, the
    // stop and reset requests it carried are cleared.
    void transmit(int count);

    // Completes when the frame is answered, the watchdog gives up on it, the
    // port closes or the reply time-out passes. True when it was answered.
    QCoro::Task<bool> awaitReply(FrameTicket frame);
    // Completes on the next receive event, a watchdog expiry, the port
    // closing or the reply time-out; its callers then look at what came.
    QCoro::Task<void> awaitNextReply();
    // Frames waiting for their tick.
    std::size_t queued() const { return queue_.size(); }

    // A receive event began: the last frame on the line counts as answered.
    void noteReceiveEvent();

    // Stops the three timers and drops whatever still waits for a tick.
    void stop();

    // A jog message goes out as soon as the frames already waiting have gone,
    // even while a sender holds the line: a stop or reset must not wait for
    // the end of a long reload, nor overtake a move clicked before it.
    void requestJogMessage();

    // Runs on every tick that no other frame is waiting for (the jog message).
    void setJogSender(std::function<void()> sender) { jogSender_ = std::move(sender); }
    // Sends the jog message now: the connection sequence's first frame.
    void sendJogMessage() {
        if (jogSender_) {
            jogSender_();
        }
    }

    // Replies are matched to frames in order: when the console turns to
    // another unit, the frames written to the one before get no answer, and
    // whoever waits for one is told so.
    void abandonAwaitedReplies();

    // Frames written since the program started, jog messages included.
    quint64 framesSent() const { return framesSent_; }
    // Frames that a receive event came for.
    quint64 framesAnswered() const { return framesAnswered_; }

    QTimer& Timer1() { return timer1_; }
    QTimer& Timer2() { return timer2_; }
    QTimer& Timer4() { return timer4_; }

  signals:
    // The hexadecimal image of the frame just written ("02 01 9A 9B 03").
    void frameSent(const QString& capture);
    // A sender handed the link a frame (the jog message is not queued).
    void frameQueued(const halvex::FrameTicket& frame);
    // A frame went out whole: its bytes as they went on the line.
    void frameWritten(const halvex::FrameTicket& frame, const std::vector<halvex::Byte>& wire);
    // A frame that will never go out, and why ("port closed").
    void frameDropped(const halvex::FrameTicket& frame, const QString& why);

  private:
    void Timer1_Timer();
    void Timer2_Timer();
    void Timer4_Timer();
    std::shared_ptr<FrameRecord> takeFrame(int count);
    // Whether a frame that could not be written is told in the status bar.
    enum class Lost { Told, Quietly };
    void write(const std::shared_ptr<FrameRecord>& frame, Lost lost = Lost::Told);
    // False when the port failed to take a byte.
    bool writeStuffed(Byte value, CaptureLine& capture);
    // Drops the queue; `why` names the cause for the status bar.
    void dropQueued(const QString& why);
    void onPortClosed();
    void onPortReopened();
    int replyTimeoutMs() const;

    FormState& state_;
    SerialPort* port_ = nullptr;
    std::function<void()> jogSender_;
    std::deque<std::shared_ptr<FrameRecord>> queue_;
    // Written frames whose reply has not come, oldest first.
    std::deque<std::shared_ptr<FrameRecord>> awaiting_;
    void giveUpOnReplies();
    quint64 receiveEvents_ = 0;
    quint64 watchdogExpiries_ = 0;
    QTimer timer1_;
    QTimer timer2_;
    QTimer timer4_;
    int sendGraceMs_ = kSendGraceMs;
    quint64 framesSent_ = 0;
    quint64 framesAnswered_ = 0;
    bool jogRequested_ = false;
    // Frames that were waiting when the jog message was asked for.
    std::size_t framesBeforeJog_ = 0;
};

}  // namespace halvex
