#include "protocol/rfc2217_port.h"

namespace halvex {

namespace {
QByteArray wireBytes(const std::vector<Byte>& bytes) {
    return QByteArray(reinterpret_cast<const char*>(bytes.data()),
                      static_cast<qsizetype>(bytes.size()));
}
}  // namespace

Rfc2217Port::Rfc2217Port(QObject* parent) : TcpPort(parent) {
    negotiation_.setSingleShot(true);
    connect(&negotiation_, &QTimer::timeout, this, [this] {
        emit notice(QStringLiteral("the device server did not take up the port settings "
                                   "(RFC 2217) within %1 s; the line runs at its own settings")
                        .arg(negotiationTimeoutMs_ / 1000.0));
        becomeReady();
    });
}

void Rfc2217Port::connectionOpened() {
    session_ = std::make_unique<ComPortSession>(static_cast<std::uint32_t>(baudRate()));
    speedTold_ = false;
    formatTold_ = false;
    negotiation_.start(negotiationTimeoutMs_);
    sendNow(wireBytes(session_->opening()));
}

void Rfc2217Port::fromServer(const QByteArray& bytes) {
    if (!session_) {
        return;
    }
    std::vector<Byte> data;
    std::vector<Byte> replies;
    session_->receive(reinterpret_cast<const Byte*>(bytes.constData()),
                      static_cast<std::size_t>(bytes.size()), data, replies);
    // Negotiation answers and the port settings go ahead of the data held
    // for the line.
    sendNow(wireBytes(replies));
    deliver(wireBytes(data));
    if (!session_) {
        return;  // the data closed the port
    }
    checkServerSettings();
    if (negotiation_.isActive() && session_->settled()) {
        negotiation_.stop();
        if (session_->refused()) {
            emit notice(
                QStringLiteral("the device server does not let the console set its port "
                               "(RFC 2217 refused); the line runs at its own settings"));
        }
        becomeReady();
    }
}

void Rfc2217Port::checkServerSettings() {
    const std::optional<std::uint32_t> speed = session_->serverBaudRate();
    if (!speedTold_ && speed && *speed != static_cast<std::uint32_t>(baudRate())) {
        speedTold_ = true;
        emit notice(QStringLiteral("the device server runs the line at %1 baud, not %2")
                        .arg(*speed)
                        .arg(baudRate()));
    }
    if (!formatTold_ && session_->serverFormatDiffers()) {
        formatTold_ = true;
        emit notice(QStringLiteral("the device server keeps a character format other than 8/N/1"));
    }
}

void Rfc2217Port::appendToWire(Byte value, QByteArray& wire) {
    wire.append(static_cast<char>(value));
    if (value == telnet::kIac) {
        wire.append(static_cast<char>(value));
    }
}

void Rfc2217Port::connectionDropped() {
    negotiation_.stop();
    session_.reset();
}

}  // namespace halvex
