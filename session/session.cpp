#include "session/session.h"

#include "protocol/device_port.h"
#include "protocol/vocabulary.h"
#include "session/unit_reports.h"

namespace halvex {

Session::Session(SerialPort* port, int tickMs, QObject* parent)
    : QObject(parent),
      link_(state_, tickMs),
      receiver_(state_, link_),
      port_(port != nullptr ? port : new DevicePort(this)),
      reports_(std::make_unique<UnitReports>(*this, state_, status_, receiver_)) {
    if (port_->parent() == nullptr) {
        port_->setParent(this);
    }
    link_.setPort(port_);
    receiver_.attachPort(port_);
    link_.setJogSender([this] { sendJogMessage(); });
    receiver_.addReplyWatcher([this](const std::vector<Byte>& reply) { lastReply_ = reply; });
    // After the last reply is kept: whoever the history wakes may look at it.
    replies_.listenTo(state_, receiver_);
    watchCameraReports();
    watchLensReports();
    watchTourReports();
    watchPresetReports();
    watchOffsetReports();
    watchVideoReports();
    watchDisplayReports();
    watchDriveReports();
    watchMountReports();
    watchIdentityReports();
}

Session::~Session() {
    link_.stop();
}

bool Session::open(const QString& device, qint32 baudRate) {
    if (!port_->open(device, baudRate)) {
        return false;
    }
    link_.Timer2().start();
    return true;
}

void Session::sendJogMessage() {
    jogSources_.refresh();
    if (beforeJogMessage_) {
        beforeJogMessage_();
    }
    using namespace vocab;
    Byte flags = state_.JogFlags;
    flags = withBit(flags, jog::kSoftLimitOverride, softLimitOverride_);
    flags = withBit(flags, jog::kTiltLowSpeed, tiltLowSpeed_);
    flags = withBit(flags, jog::kPanLowSpeed, panLowSpeed_);
    flags = withBit(flags, jog::kTiltUp, jog_.TiltJogDirection);
    flags = withBit(flags, jog::kPanCw, jog_.PanJogDirection);
    state_.JogFlags = flags;
    ByteTable& tx = state_.TxBuffer;
    begin<JogMessage>(tx);
    put(tx, jog::kFlagsByte, state_.JogFlags);
    put(tx, jog::kPanSpeed, jog_.PanJogSpeed);
    put(tx, jog::kTiltSpeed, jog_.TiltJogSpeed);
    for (std::size_t i = 0; i < jog_.LensJogSpeeds.size(); ++i) {
        put(tx, jog::kLensJog.at(i), jog_.LensJogSpeeds[i]);
    }
    link_.transmit(JogMessage::kLength);
}

void Session::setSoftLimitOverride(bool on) {
    if (on == softLimitOverride_) {
        return;
    }
    softLimitOverride_ = on;
    emit jogModifiersChanged(softLimitOverride_, panLowSpeed_, tiltLowSpeed_);
}

void Session::setLowSpeed(bool pan, bool tilt) {
    if (pan == panLowSpeed_ && tilt == tiltLowSpeed_) {
        return;
    }
    panLowSpeed_ = pan;
    tiltLowSpeed_ = tilt;
    emit jogModifiersChanged(softLimitOverride_, panLowSpeed_, tiltLowSpeed_);
}

}  // namespace halvex
