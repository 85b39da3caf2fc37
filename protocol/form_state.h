#pragma once

#include <QObject>
#include <QString>

#include "protocol/frame.h"

namespace halvex {

class FormState;

// A form-level flag that wakes anybody waiting on the form state whenever it
// is written, so waits can sleep instead of polling.
class WaitFlag {
  public:
    explicit WaitFlag(FormState* owner) : owner_(owner) {}
    WaitFlag(const WaitFlag&) = delete;
    WaitFlag& operator=(const WaitFlag&) = delete;
    WaitFlag& operator=(bool value);
    operator bool() const { return value_; }

  private:
    FormState* owner_;
    bool value_ = false;
};

// How many senders hold the line between their frames (a preset reload holds
// it across 32 request/reply pairs). The jog message goes out on a tick only
// when nobody does. A count, not a flag, so that a send nested inside another
// sender's wait cannot release the outer sender's hold.
class HoldCount {
  public:
    explicit HoldCount(FormState* owner) : owner_(owner) {}
    HoldCount(const HoldCount&) = delete;
    HoldCount& operator=(const HoldCount&) = delete;
    operator bool() const { return holders_ > 0; }
    void acquire();
    void release();

  private:
    FormState* owner_;
    int holders_ = 0;
};

enum class LinkLamp { None, Good, Fault };

// The state the main window shares with its features: buffers, addresses and
// the link flags. One object, owned by the main window, handed to whoever
// needs it.
class FormState : public QObject {
    Q_OBJECT
  public:
    explicit FormState(QObject* parent = nullptr) : QObject(parent) {}

    ByteTable TxBuffer;
    ByteTable RxBuffer;
    Byte UnitId = 0;
    Byte AddressOverride = kNoOverride;
    Byte JogFlags = 0;
    Byte LastResponseCode = 0;
    bool UserClickEnabled = true;

    HoldCount SendInProgress{this};
    WaitFlag ReplyReceived{this};
    WaitFlag LinkFault{this};
    WaitFlag ConnectTimedOut{this};
    WaitFlag Online{this};

    LinkLamp lamp() const { return lamp_; }
    void setLamp(LinkLamp lamp);

    // Anything that a wait may be watching changed.
    void notifyChanged() { emit changed(); }

    // Shows a stopped operation: "Run-time error 6: Overflow in AbsoBut_Click".
    void reportFault(const QString& message);

  signals:
    void changed();
    void lampChanged(halvex::LinkLamp lamp);
    void faultReported(const QString& message);

  private:
    LinkLamp lamp_ = LinkLamp::None;
};

inline WaitFlag& WaitFlag::operator=(bool value) {
    value_ = value;
    owner_->notifyChanged();
    return *this;
}

inline void HoldCount::acquire() {
    ++holders_;
    owner_->notifyChanged();
}

inline void HoldCount::release() {
    --holders_;
    owner_->notifyChanged();
}

// Holds SendInProgress for one send (or a run of them) and lets go however
// the send ends.
class SendInProgressScope {
  public:
    explicit SendInProgressScope(FormState& state) : state_(state) {
        state_.SendInProgress.acquire();
    }
    ~SendInProgressScope() { state_.SendInProgress.release(); }
    SendInProgressScope(const SendInProgressScope&) = delete;
    SendInProgressScope& operator=(const SendInProgressScope&) = delete;

  private:
    FormState& state_;
};

}  // namespace halvex
