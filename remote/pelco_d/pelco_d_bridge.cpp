#include "remote/pelco_d/pelco_d_bridge.h"

#include <QPointer>
#include <QStringList>
#include <QTcpSocket>

#include "protocol/fault_guard.h"
#include "protocol/qt_serial_port.h"
#include "session/session.h"

namespace halvex {

namespace {

using pelco_d::Command;

// Presets 0..30 are the unit's; 31 is its home position.
constexpr int kHighestPreset = 30;

QString speedText(std::uint8_t speed) {
    return speed > pelco_d::kFastest ? QStringLiteral("turbo") : QString::number(speed);
}

QString describeMotion(const pelco_d::Motion& motion) {
    QStringList parts;
    if (motion.pan != 0 && motion.panSpeed != 0) {
        parts << QStringLiteral("pan %1 %2")
                     .arg(motion.pan > 0 ? QStringLiteral("right") : QStringLiteral("left"),
                          speedText(motion.panSpeed));
    }
    if (motion.tilt != 0 && motion.tiltSpeed != 0) {
        parts << QStringLiteral("tilt %1 %2")
                     .arg(motion.tilt > 0 ? QStringLiteral("up") : QStringLiteral("down"),
                          speedText(motion.tiltSpeed));
    }
    if (motion.zoom != 0) {
        parts << (motion.zoom > 0 ? QStringLiteral("zoom tele") : QStringLiteral("zoom wide"));
    }
    if (motion.focus != 0) {
        parts << (motion.focus > 0 ? QStringLiteral("focus far") : QStringLiteral("focus near"));
    }
    return parts.isEmpty() ? QStringLiteral("stop") : parts.join(QStringLiteral(", "));
}

AxisDemand axis(int way, std::uint8_t speed) {
    if (way == 0 || speed == 0) {
        return {};
    }
    return {static_cast<Byte>(pelco_d::unitJogSpeed(speed)), way > 0};
}

QString refusedText(const QString& what, Refusal refusal) {
    return QStringLiteral("%1: refused: %2").arg(what, describe(refusal));
}

// Runs a preset operation to its end and tells how it ended when it did not
// go through (the unit did not answer, a clear outside the soft limits).
QCoro::Task<> reportOutcome(QPointer<PelcoDBridge> bridge, QString what, QString peer,
                            QCoro::Task<Outcome> operation) {
    const Outcome outcome = co_await std::move(operation);
    if (bridge && !outcome.isDone()) {
        emit bridge->commandHandled(QStringLiteral("%1: %2").arg(what, outcome.text()), peer);
    }
    outcome.raiseRangeFault();
}

}  // namespace

PelcoDBridge::PelcoDBridge(Session& session, QObject* parent)
    : QObject(parent), session_(session), jog_(session, JogSource::PelcoD, kDefaultRefreshMs) {
    connect(&server_, &QTcpServer::newConnection, this, &PelcoDBridge::acceptClients);
    connect(&jog_, &RemoteJog::timedOut, this, [this] {
        if (Peer* silent = std::exchange(driver_, nullptr)) {
            tell(*silent, QStringLiteral("stop: no frame for %1 ms").arg(jog_.refreshMs()));
        }
    });
}

PelcoDBridge::~PelcoDBridge() {
    close();
}

bool PelcoDBridge::setAddress(int address) {
    if (address < 1 || address > 255) {
        return false;
    }
    address_ = address;
    return true;
}

bool PelcoDBridge::openSerial(const QString& device, qint32 baudRate) {
    if (!baudRates().contains(baudRate)) {
        error_ = QStringLiteral("Pelco-D runs at 2400, 4800 or 9600 baud, not %1").arg(baudRate);
        return false;
    }
    if (serial_ == nullptr) {
        serial_ = new QtSerialPort(this);
        connect(serial_, &SerialPort::dataArrived, this, &PelcoDBridge::readSerial);
        connect(serial_, &SerialPort::lost, this, [this](const QString& reason) {
            peerGone(serialPeer_, QStringLiteral("the serial line was lost"));
            error_ = reason;
            emit serialLost(reason);
        });
    } else if (serial_->isOpen()) {
        peerGone(serialPeer_, QStringLiteral("the serial line was closed"));
        serial_->close();
    }
    serialPeer_ = Peer{device, {}, {}};
    if (!serial_->open(device, baudRate)) {
        error_ = QStringLiteral("%1 would not open").arg(device);
        return false;
    }
    return true;
}

bool PelcoDBridge::serialOpen() const {
    return serial_ != nullptr && serial_->isOpen();
}

bool PelcoDBridge::listen(const QHostAddress& address, quint16 port) {
    if (!server_.listen(address, port)) {
        error_ = server_.errorString();
        return false;
    }
    return true;
}

void PelcoDBridge::close() {
    server_.close();
    // Taken out first: a slot told of a stop may call back into the bridge.
    auto clients = std::exchange(clients_, {});
    ++epoch_;
    for (auto& [socket, peer] : clients) {
        peerGone(peer, QStringLiteral("the bridge was closed"));
        socket->disconnect(this);
        socket->abort();
        socket->deleteLater();
    }
    if (serialOpen()) {
        peerGone(serialPeer_, QStringLiteral("the bridge was closed"));
        serial_->close();
    }
    jog_.stop();
    driver_ = nullptr;
    if (!clients.empty()) {
        emit clientCountChanged(0);
    }
}

void PelcoDBridge::acceptClients() {
    while (QTcpSocket* socket = server_.nextPendingConnection()) {
        const QString name =
            QStringLiteral("%1:%2").arg(socket->peerAddress().toString()).arg(socket->peerPort());
        clients_.emplace(socket, Peer{name, {}, {}});
        connect(socket, &QTcpSocket::readyRead, this, [this, socket] {
            const auto found = clients_.find(socket);
            if (found == clients_.end()) {
                return;
            }
            const QByteArray bytes = socket->readAll();
            take(found->second, std::span(reinterpret_cast<const std::uint8_t*>(bytes.constData()),
                                          static_cast<std::size_t>(bytes.size())));
        });
        connect(socket, &QTcpSocket::disconnected, this, [this, socket] { forget(socket); });
        connect(socket, &QTcpSocket::errorOccurred, this, [this, socket] {
            if (socket->state() == QAbstractSocket::UnconnectedState) {
                forget(socket);
            }
        });
        emit clientCountChanged(clientCount());
    }
}

void PelcoDBridge::forget(QTcpSocket* socket) {
    const auto found = clients_.find(socket);
    if (found == clients_.end()) {
        return;
    }
    peerGone(found->second, QStringLiteral("the keyboard went away"));
    clients_.erase(found);
    ++epoch_;
    socket->disconnect(this);
    // Later: this may run inside one of the socket's own signals.
    socket->deleteLater();
    emit clientCountChanged(clientCount());
}

void PelcoDBridge::readSerial() {
    const std::vector<Byte> bytes = serial_->peekWaiting();
    serial_->consume(static_cast<int>(bytes.size()));
    take(serialPeer_, bytes);
}

void PelcoDBridge::take(Peer& peer, std::span<const std::uint8_t> bytes) {
    const std::vector<pelco_d::Frame> frames = peer.frames.feed(bytes);
    const std::uint64_t epoch = epoch_;
    for (const pelco_d::Frame& frame : frames) {
        // A slot told of the last command may have dropped this keyboard.
        if (epoch != epoch_) {
            return;
        }
        if (frame.address == address_) {
            handle(peer, pelco_d::decode(frame));
        }
    }
}

void PelcoDBridge::handle(Peer& peer, const Command& command) {
    switch (command.kind) {
        case Command::Kind::Motion:
            move(peer, command.motion);
            return;
        case Command::Kind::SetPreset:
        case Command::Kind::ClearPreset:
        case Command::Kind::CallPreset:
            preset(peer, command);
            return;
        case Command::Kind::SetZoomSpeed:
        case Command::Kind::SetFocusSpeed: {
            const bool zoom = command.kind == Command::Kind::SetZoomSpeed;
            const QString what = QStringLiteral("%1 speed %2")
                                     .arg(zoom ? QStringLiteral("zoom") : QStringLiteral("focus"))
                                     .arg(command.number);
            if (command.number > pelco_d::kFastestLensSetting) {
                tell(peer, what + QStringLiteral(": ignored (0..3 only)"), true);
                return;
            }
            (zoom ? zoomSetting_ : focusSetting_) = command.number;
            tell(peer, what, true);
            return;
        }
        case Command::Kind::Unsupported:
            return;
    }
}

void PelcoDBridge::move(Peer& peer, const pelco_d::Motion& motion) {
    JogDemand demand;
    demand.pan = axis(motion.pan, motion.panSpeed);
    demand.tilt = axis(motion.tilt, motion.tiltSpeed);
    demand.lens[0] = lensJogByte(motion.zoom * pelco_d::lensJogSpeed(zoomSetting_));
    demand.lens[1] = lensJogByte(motion.focus * pelco_d::lensJogSpeed(focusSetting_));
    const QString what = describeMotion(motion);
    if (!demand.moving()) {
        // Any keyboard's stop stops the platform, whoever started it.
        jog_.stop();
        driver_ = nullptr;
        tell(peer, what);
        return;
    }
    if (const auto refusal = jog_.drive(demand)) {
        tell(peer, refusedText(what, *refusal));
        return;
    }
    driver_ = &peer;
    tell(peer, what);
}

void PelcoDBridge::preset(Peer& peer, const Command& command) {
    const QString verb = command.kind == Command::Kind::SetPreset     ? QStringLiteral("set")
                         : command.kind == Command::Kind::ClearPreset ? QStringLiteral("clear")
                                                                      : QStringLiteral("call");
    const QString what = QStringLiteral("%1 preset %2").arg(verb).arg(command.number);
    const QString peerName = peer.name;
    if (command.number > kHighestPreset) {
        tell(peer, what + QStringLiteral(": ignored (presets 0..30 only)"), true);
        return;
    }
    if (command.kind == Command::Kind::CallPreset && driver_ != nullptr) {
        // The call ends the keyboard's jog, as a camera's own does.
        jog_.stop();
        driver_ = nullptr;
    }
    if (const auto refusal = session_.refusalFor(Requester::Program)) {
        tell(peer, refusedText(what, *refusal), true);
        return;
    }
    tell(peer, what, true);
    QCoro::Task<Outcome> operation = command.kind == Command::Kind::SetPreset
                                         ? session_.saveCurrentPosition(command.number)
                                     : command.kind == Command::Kind::ClearPreset
                                         // The unit's own clear leaves a preset at pan 0, tilt 0.
                                         ? session_.savePreset(command.number, PanTiltTarget{})
                                         : session_.goToPreset(command.number);
    launch(session_.state(), "PelcoD_Preset",
           reportOutcome(this, what, peerName, std::move(operation)));
}

void PelcoDBridge::peerGone(const Peer& peer, const QString& why) {
    if (driver_ == &peer) {
        jog_.stop();
        driver_ = nullptr;
        emit commandHandled(QStringLiteral("stop: %1").arg(why), peer.name);
    }
}

void PelcoDBridge::tell(Peer& peer, const QString& what, bool evenIfRepeated) {
    if (!evenIfRepeated && what == peer.lastTold) {
        return;
    }
    peer.lastTold = what;
    const QString name = peer.name;
    emit commandHandled(what, name);
}

}  // namespace halvex
