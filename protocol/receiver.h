#pragma once

#include <QObject>
#include <QString>
#include <functional>
#include <map>
#include <vector>

#include "protocol/form_state.h"
#include "protocol/serial_port.h"

namespace halvex {

class CaptureLine;
class Link;

// The receive path: finds a reply in the port's buffer, unstuffs it into
// RxBuffer, checks its LRC and hands it to the decoder registered for its code.
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

  signals:
    // The hexadecimal image of the reply just read ("06 01 31 ... 03").
    void frameReceived(const QString& capture);
    // "Currently Receiving ID Of 1".
    void receivingIdChanged(const QString& caption);

  private:
    void onDataArrived();
    void scheduleLeftovers();
    // Reads one byte of a stuffed field; `waiting` is what the port held
    // before the read. `raw` gets the byte as it came off the line.
    Byte readUnstuffed(int waiting, Byte& raw, CaptureLine& capture);
    bool readFrame(CaptureLine& capture);
    int settleMs() const;
    void showFault();

    FormState& state_;
    Link& link_;
    SerialPort* port_ = nullptr;
    std::map<Byte, Decoder> decoders_;
    std::vector<std::function<void()>> refreshHooks_;
    std::vector<ReplyWatcher> replyWatchers_;
    // Code and payload bytes of the frame last read into RxBuffer.
    int replyLength_ = 0;
    bool reading_ = false;
    bool leftoversScheduled_ = false;
};

}  // namespace halvex
