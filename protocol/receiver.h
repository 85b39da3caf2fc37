#pragma once

#include <QObject>
#include <QString>
#include <QTimer>
#include <functional>
#include <map>
#include <vector>

#include "protocol/form_state.h"
#include "protocol/line_record.h"
#include "protocol/serial_port.h"

namespace halvex {

class Link;
struct ReplyScan;

// The receive path: finds a reply among the bytes waiting in the port,
// unstuffs it into RxBuffer, checks its LRC and hands it to the decoder
// registered for its code.
//
// It never waits inside a data event. It looks at what is waiting without
// taking it; a reply whose end has not come yet stays in the port and is
// finished by a later data event, or given up when the line has been quiet
// for a few character times (the settle time).
class Receiver : public QObject {
    Q_OBJECT
  public:
    using Decoder = std::function<void()>;

    Receiver(FormState& state, Link& link, QObject* parent = nullptr);

    // Follows the link's port; call again after the link changes ports.
    void attachPort(SerialPort* port);

    // The decoder for replies with this code. Decoders read state.RxBuffer.
    void registerDecoder(Byte code, Decoder decoder);
    // Runs after every good reply, dispatched or not, in registration order.
    void addRefreshHook(std::function<void()> hook);
    // Sees every good reply before its decoder runs: the code and payload,
    // LRC and ETX left out. A decoder that stops on a range fault cannot
    // hide a reply from it.
    using ReplyWatcher = std::function<void(const std::vector<Byte>& reply)>;
    void addReplyWatcher(ReplyWatcher watcher);

    // One data-arrived event.
    void ReceiveFrame();

    // How long an unfinished reply is waited for after the last byte came:
    // a few character times, and what the way to a network port adds.
    int settleMs() const;
    // Fixes the settle time (the fuzzer runs it at 0); -1 goes back to a few
    // character times at the line speed.
    void setSettleMs(int ms) { fixedSettleMs_ = ms; }

  signals:
    // The hexadecimal image of the reply just read ("06 01 31 ... 03").
    void frameReceived(const QString& capture);
    // "Currently Receiving ID Of 1".
    void receivingIdChanged(const QString& caption);
    // The bytes of each frame as they came off the line, escapes included,
    // with what the receive path made of them; noise before a reply's start
    // comes on its own. Before the frame is dispatched.
    void frameRead(const std::vector<halvex::Byte>& wire, halvex::recording::Verdict verdict);

  private:
    void onDataArrived();
    void onSettled();
    void onPortReopened();
    void scheduleLeftovers();
    // Looks at the waiting bytes; `settled` gives up an unfinished reply.
    void receive(bool settled);
    // Takes a reply (or noise) that the scan has made out of the port and
    // acts on it.
    void take(const ReplyScan& scan, const std::vector<Byte>& waiting);
    // Hands the bytes of the reply being taken to frameRead, once.
    void reportWire(recording::Verdict verdict);
    void showFault();

    FormState& state_;
    Link& link_;
    SerialPort* port_ = nullptr;
    std::map<Byte, Decoder> decoders_;
    std::vector<std::function<void()>> refreshHooks_;
    QTimer settle_;
    int fixedSettleMs_ = -1;
    // An unfinished reply is waiting in the port; this many bytes were there
    // when it was last looked at.
    bool unfinished_ = false;
    int unfinishedBytes_ = 0;
    std::vector<Byte> wire_;
    std::vector<ReplyWatcher> replyWatchers_;
    bool leftoversScheduled_ = false;
};

}  // namespace halvex
