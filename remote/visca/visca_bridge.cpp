#include "remote/visca/visca_bridge.h"

#include <QElapsedTimer>
#include <QNetworkDatagram>
#include <QTcpSocket>
#include <algorithm>
#include <type_traits>

#include "protocol/fault_guard.h"

namespace halvex {

using visca::Packet;

struct ViscaBridge::Origin {
    // Over UDP a reply carries the request's sequence number; over TCP
    // (none) it is the bare packet.
    std::optional<quint32> sequence;
};

struct ViscaBridge::Client {
    // A command that waits for the unit, in socket 1 or 2.
    struct Socket {
        bool busy = false;
        quint64 ticket = 0;
        Origin origin;
    };

    quint64 id = 0;
    QString peer;
    QTcpSocket* tcp = nullptr;
    QHostAddress address;
    quint16 port = 0;
    visca::PacketReader reader;
    std::optional<quint32> lastSequence;
    std::array<Socket, 2> sockets{};
    QElapsedTimer heard;
};

namespace {

QString degrees(double value) {
    return QString::number(value, 'f', 2);
}

QString describe(const visca::PanTiltDrive& drive) {
    if (drive.pan == 0 && drive.tilt == 0) {
        return QStringLiteral("pan-tilt stop");
    }
    QStringList ways;
    if (drive.tilt != 0) {
        ways << (drive.tilt > 0 ? QStringLiteral("up") : QStringLiteral("down"));
    }
    if (drive.pan != 0) {
        ways << (drive.pan > 0 ? QStringLiteral("right") : QStringLiteral("left"));
    }
    return QStringLiteral("pan-tilt %1 at %2/%3")
        .arg(ways.join(QLatin1Char('-')))
        .arg(drive.panSpeed)
        .arg(drive.tiltSpeed);
}

QString describe(const visca::LensDrive& drive) {
    const bool zoom = drive.lens == visca::LensDrive::Lens::Zoom;
    QString what = zoom ? QStringLiteral("zoom") : QStringLiteral("focus");
    if (drive.direction == 0) {
        return what + QStringLiteral(" stop");
    }
    what += drive.direction > 0 ? (zoom ? QStringLiteral(" tele") : QStringLiteral(" far"))
                                : (zoom ? QStringLiteral(" wide") : QStringLiteral(" near"));
    return drive.speed == visca::LensDrive::kStandardSpeed
               ? what
               : what + QStringLiteral(" at %1").arg(drive.speed);
}

AxisDemand axis(int way, int speed) {
    if (way == 0) {
        return {};
    }
    return {static_cast<Byte>(speed), way > 0};
}

}  // namespace

ViscaBridge::ViscaBridge(Session& session, QObject* parent)
    : QObject(parent), session_(session), jog_(session, JogSource::Visca, kDefaultRefreshMs, this) {
    connect(&server_, &QTcpServer::newConnection, this, &ViscaBridge::acceptTcpClients);
    connect(&udp_, &QUdpSocket::readyRead, this, &ViscaBridge::readDatagrams);
    connect(&jog_, &RemoteJog::timedOut, this, [this] {
        const auto it = clients_.find(jogClient_);
        if (it != clients_.end()) {
            note(*it->second, QStringLiteral("jog stopped: the client fell silent"));
        }
        releaseJog();
    });
    setForgetUdpClientMs(kForgetUdpClientMs);
    connect(&sweep_, &QTimer::timeout, this, &ViscaBridge::forgetSilentUdpClients);
}

ViscaBridge::~ViscaBridge() {
    jog_.stop();
    for (auto& [id, client] : clients_) {
        if (client->tcp != nullptr) {
            client->tcp->disconnect(this);
            client->tcp->abort();
            delete client->tcp;
        }
    }
}

bool ViscaBridge::listen(const QHostAddress& address, quint16 port) {
    close();
    // Port 0: the TCP port picked may be taken for UDP; another is tried.
    for (int attempt = 0; attempt < 8; ++attempt) {
        if (!server_.listen(address, port)) {
            error_ = server_.errorString();
            return false;
        }
        if (udp_.bind(address, server_.serverPort())) {
            error_.clear();
            sweep_.start();
            return true;
        }
        error_ = udp_.errorString();
        server_.close();
        if (port != 0) {
            break;
        }
    }
    return false;
}

void ViscaBridge::close() {
    server_.close();
    udp_.close();
    sweep_.stop();
    releaseJog();
    while (!clients_.empty()) {
        forget(clients_.begin()->first);
    }
}

ViscaBridge::Client* ViscaBridge::newClient(const QString& peer) {
    auto client = std::make_unique<Client>();
    client->id = nextId_++;
    client->peer = peer;
    client->heard.start();
    Client* raw = client.get();
    clients_.emplace(raw->id, std::move(client));
    emit clientCountChanged(clientCount());
    return raw;
}

void ViscaBridge::forget(quint64 id) {
    const auto it = clients_.find(id);
    if (it == clients_.end()) {
        return;
    }
    const std::unique_ptr<Client> client = std::move(it->second);
    clients_.erase(it);
    if (jogClient_ == id) {
        stopJogOf(*client, QStringLiteral("jog stopped: the client went away"));
    }
    if (client->tcp != nullptr) {
        client->tcp->disconnect(this);
        client->tcp->abort();
        // Later: this may run inside one of the socket's own signals.
        client->tcp->deleteLater();
    } else {
        udpClients_.erase(client->peer);
    }
    emit clientCountChanged(clientCount());
}

void ViscaBridge::setForgetUdpClientMs(int forgetMs) {
    forgetUdpClientMs_ = forgetMs;
    sweep_.setInterval(forgetMs / 4);
}

void ViscaBridge::forgetSilentUdpClients() {
    std::vector<quint64> silent;
    for (const auto& [id, client] : clients_) {
        const bool running = client->sockets[0].busy || client->sockets[1].busy;
        if (client->tcp == nullptr && id != jogClient_ && !running &&
            client->heard.elapsed() >= forgetUdpClientMs_) {
            silent.push_back(id);
        }
    }
    for (const quint64 id : silent) {
        forget(id);
    }
}

void ViscaBridge::releaseJog() {
    jog_.stop();
    demand_ = {};
    jogClient_ = 0;
}

void ViscaBridge::stopJogOf(const Client& client, const QString& why) {
    releaseJog();
    note(client, why);
}

void ViscaBridge::note(const Client& client, const QString& what) {
    emit commandHandled(what, client.peer);
}

void ViscaBridge::acceptTcpClients() {
    while (QTcpSocket* socket = server_.nextPendingConnection()) {
        Client* client = newClient(QStringLiteral("%1:%2 TCP")
                                       .arg(socket->peerAddress().toString())
                                       .arg(socket->peerPort()));
        client->tcp = socket;
        const quint64 id = client->id;
        connect(socket, &QTcpSocket::readyRead, this, [this, id] {
            const auto it = clients_.find(id);
            if (it != clients_.end()) {
                readTcp(*it->second);
            }
        });
        connect(socket, &QTcpSocket::disconnected, this, [this, id] { forget(id); });
    }
}

void ViscaBridge::readTcp(Client& client) {
    const quint64 id = client.id;
    const QByteArray bytes = client.tcp->readAll();
    std::vector<Packet> packets;
    client.reader.feed(reinterpret_cast<const std::uint8_t*>(bytes.constData()),
                       static_cast<std::size_t>(bytes.size()), packets);
    for (const Packet& packet : packets) {
        // A reply may have found the connection gone.
        if (clients_.count(id) == 0) {
            return;
        }
        heardFrom(client);
        handle(client, Origin{}, visca::parse(packet));
    }
}

void ViscaBridge::readDatagrams() {
    while (udp_.hasPendingDatagrams()) {
        const QNetworkDatagram datagram = udp_.receiveDatagram();
        if (!datagram.isValid()) {
            continue;
        }
        const QString peer = QStringLiteral("%1:%2 UDP")
                                 .arg(datagram.senderAddress().toString())
                                 .arg(datagram.senderPort());
        Client* client = nullptr;
        if (const auto known = udpClients_.find(peer); known != udpClients_.end()) {
            client = clients_.at(known->second).get();
        } else {
            client = newClient(peer);
            client->address = datagram.senderAddress();
            client->port = static_cast<quint16>(datagram.senderPort());
            udpClients_.emplace(peer, client->id);
        }
        client->heard.restart();
        heardFrom(*client);
        const QByteArray data = datagram.data();
        handleDatagram(*client, Packet(data.begin(), data.end()));
    }
}

void ViscaBridge::heardFrom(Client& client) {
    if (client.id == jogClient_ && jog_.driving()) {
        static_cast<void>(jog_.drive(demand_));
    }
}

void ViscaBridge::sendIp(Client& client, const Packet& message) {
    udp_.writeDatagram(reinterpret_cast<const char*>(message.data()),
                       static_cast<qint64>(message.size()), client.address, client.port);
}

void ViscaBridge::reply(Client& client, const Origin& origin, const Packet& packet) {
    if (origin.sequence) {
        sendIp(client, visca::ipMessage(visca::payload::kReply, *origin.sequence, packet));
    } else if (client.tcp != nullptr) {
        client.tcp->write(reinterpret_cast<const char*>(packet.data()),
                          static_cast<qint64>(packet.size()));
    }
}

void ViscaBridge::handleDatagram(Client& client, const Packet& datagram) {
    namespace payload = visca::payload;
    namespace control = visca::control;
    const visca::IpRead read = visca::readIp(datagram.data(), datagram.size());
    if (!read.message) {
        sendIp(client, visca::ipError(read.sequence, control::kMessageType));
        note(client, QStringLiteral("malformed datagram"));
        return;
    }
    const visca::IpMessage& message = *read.message;
    if (message.type == payload::kControl) {
        if (message.payload == Packet{control::kReset}) {
            client.lastSequence.reset();
            sendIp(client, visca::ipResetReply(message.sequence));
            note(client, QStringLiteral("sequence number reset"));
        } else {
            sendIp(client, visca::ipError(message.sequence, control::kMessageType));
            note(client, QStringLiteral("unknown control command"));
        }
        return;
    }
    const visca::Request request = visca::parse(message.payload);
    const bool packetFits = std::holds_alternative<visca::SyntaxError>(request) ||
                            std::holds_alternative<visca::OtherCamera>(request) ||
                            visca::isInquiry(request) == (message.type == payload::kInquiry);
    if ((message.type != payload::kCommand && message.type != payload::kInquiry) || !packetFits) {
        sendIp(client, visca::ipError(message.sequence, control::kMessageType));
        note(client, QStringLiteral("wrong message type"));
        return;
    }
    // The same number again: a controller's retry of what was carried out.
    if (client.lastSequence == message.sequence) {
        sendIp(client, visca::ipError(message.sequence, control::kSequenceNumber));
        note(client, QStringLiteral("sequence number repeated"));
        return;
    }
    client.lastSequence = message.sequence;
    handle(client, Origin{message.sequence}, request);
}

void ViscaBridge::handle(Client& client, const Origin& origin, const visca::Request& request) {
    std::visit(
        [&](const auto& r) {
            using R = std::decay_t<decltype(r)>;
            if constexpr (std::is_same_v<R, visca::SyntaxError>) {
                reply(client, origin, visca::errorReply(0, visca::error::kSyntax));
                note(client, QStringLiteral("syntax error"));
            } else if constexpr (std::is_same_v<R, visca::OtherCamera>) {
                // Another camera's on a chain: not ours to answer.
            } else if constexpr (std::is_same_v<R, visca::PanTiltDrive>) {
                drivePanTilt(client, origin, r);
            } else if constexpr (std::is_same_v<R, visca::LensDrive>) {
                driveLens(client, origin, r);
            } else if constexpr (std::is_same_v<R, visca::PanTiltReset>) {
                resetPanTilt(client, origin);
            } else if constexpr (std::is_same_v<R, visca::PanTiltPositionInquiry> ||
                                 std::is_same_v<R, visca::ZoomPositionInquiry>) {
                answerInquiry(client, origin, request);
            } else if constexpr (std::is_same_v<R, visca::InterfaceClear>) {
                clearInterface(client);
                reply(client, origin,
                      r.broadcast ? visca::interfaceClearBroadcastReply() : visca::completion(0));
                note(client, QStringLiteral("interface clear"));
            } else if constexpr (std::is_same_v<R, visca::Cancel>) {
                cancel(client, origin, r.socket);
            } else if constexpr (std::is_same_v<R, visca::AddressSet>) {
                reply(client, origin, visca::addressSetReply(r.address + 1));
                note(client, QStringLiteral("address set"));
            } else {
                startMove(client, origin, request);
            }
        },
        request);
}

int ViscaBridge::freeSocket(const Client& client) {
    const auto slot =
        std::ranges::find_if(client.sockets, [](const Client::Socket& s) { return !s.busy; });
    return slot == client.sockets.end() ? 0 : static_cast<int>(slot - client.sockets.begin()) + 1;
}

void ViscaBridge::drivePanTilt(Client& client, const Origin& origin,
                               const visca::PanTiltDrive& drive) {
    JogDemand demand = demand_;
    demand.pan = axis(drive.pan, visca::panJogSpeed(drive.panSpeed));
    demand.tilt = axis(drive.tilt, visca::tiltJogSpeed(drive.tiltSpeed));
    const bool stopping = drive.pan == 0 && drive.tilt == 0;
    applyJog(client, origin, demand, stopping, describe(drive));
    // A stop also ends a move this bridge started, as a camera's would.
    if (stopping && movesRunning_ > 0 && !session_.jogSources().operatorJogging()) {
        session_.stop();
    }
}

void ViscaBridge::driveLens(Client& client, const Origin& origin, const visca::LensDrive& drive) {
    JogDemand demand = demand_;
    const std::size_t lens = drive.lens == visca::LensDrive::Lens::Zoom ? 0 : 1;
    demand.lens[lens] = lensJogByte(visca::lensJogSpeed(drive));
    applyJog(client, origin, demand, drive.direction == 0, describe(drive));
}

void ViscaBridge::applyJog(Client& client, const Origin& origin, const JogDemand& demand,
                           bool stopping, const QString& what) {
    const int socket = freeSocket(client);
    // A stop is carried out even when both sockets are taken.
    if (socket == 0 && !stopping) {
        reply(client, origin, visca::errorReply(0, visca::error::kBufferFull));
        note(client, what + QStringLiteral(": command buffer full"));
        return;
    }
    if (const auto refusal = jog_.drive(demand)) {
        reply(client, origin, visca::errorReply(socket, visca::error::kNotExecutable));
        note(client, what + QStringLiteral(": refused, ") + describe(*refusal));
        return;
    }
    demand_ = demand;
    jogClient_ = demand.moving() ? client.id : 0;
    if (socket == 0) {
        reply(client, origin, visca::errorReply(0, visca::error::kBufferFull));
    } else {
        reply(client, origin, visca::ack(socket));
        reply(client, origin, visca::completion(socket));
    }
    note(client, what);
}

void ViscaBridge::startMove(Client& client, const Origin& origin, const visca::Request& request) {
    const int socket = freeSocket(client);
    if (socket == 0) {
        reply(client, origin, visca::errorReply(0, visca::error::kBufferFull));
        note(client, QStringLiteral("command buffer full"));
        return;
    }
    const UnitStatus& status = session_.status();
    QString what;
    std::optional<PanTiltTarget> target;
    bool executable = true;
    std::function<QCoro::Task<Outcome>()> move;
    if (const auto* position = std::get_if<visca::PanTiltPosition>(&request)) {
        const double pan = visca::degreesOf(position->pan);
        const double tilt = visca::degreesOf(position->tilt);
        if (position->relative) {
            what = QStringLiteral("relative position %1/%2").arg(degrees(pan), degrees(tilt));
            target = PanTiltTarget{status.CurrentPan + pan, status.CurrentTilt + tilt};
            move = [this, pan, tilt] { return session_.moveBy(pan, tilt); };
        } else {
            what = QStringLiteral("absolute position %1/%2").arg(degrees(pan), degrees(tilt));
            target = PanTiltTarget{pan, tilt};
            move = [this, pan, tilt] { return session_.moveTo(PanTiltTarget{pan, tilt}); };
        }
    } else if (const auto* memory = std::get_if<visca::Memory>(&request)) {
        const int number = memory->number;
        // Preset 31 is the home position, past it the unit has none.
        executable = number <= 30;
        switch (memory->action) {
            case visca::Memory::Action::Reset:
                what = QStringLiteral("memory reset %1").arg(number);
                target = PanTiltTarget{};
                move = [this, number] { return session_.savePreset(number, PanTiltTarget{}); };
                break;
            case visca::Memory::Action::Set:
                what = QStringLiteral("memory set %1").arg(number);
                move = [this, number] { return session_.saveCurrentPosition(number); };
                break;
            case visca::Memory::Action::Recall:
                what = QStringLiteral("memory recall %1").arg(number);
                move = [this, number] { return session_.goToPreset(number); };
                break;
        }
    } else {
        what = QStringLiteral("home");
        move = [this] { return session_.moveHome(); };
    }
    std::optional<Refusal> refusal;
    if (executable) {
        refusal = session_.refusalFor(Requester::Program, target ? &*target : nullptr);
    }
    if (!executable || refusal) {
        reply(client, origin, visca::errorReply(socket, visca::error::kNotExecutable));
        note(client, what + QStringLiteral(": refused, ") +
                         (refusal ? describe(*refusal) : QStringLiteral("no such memory")));
        return;
    }
    Client::Socket& slot = client.sockets[static_cast<std::size_t>(socket - 1)];
    slot = {true, nextTicket_++, origin};
    reply(client, origin, visca::ack(socket));
    note(client, what);
    ++movesRunning_;
    launch(session_.state(), "ViscaBridge_Move",
           awaitMove(QPointer<ViscaBridge>(this), client.id, socket, slot.ticket, move()));
}

QCoro::Task<> ViscaBridge::awaitMove(QPointer<ViscaBridge> bridge, quint64 client, int socket,
                                     quint64 ticket, QCoro::Task<Outcome> move) {
    const Outcome outcome = co_await std::move(move);
    if (bridge) {
        bridge->moveEnded(client, socket, ticket, outcome);
    }
    outcome.raiseRangeFault();
}

void ViscaBridge::moveEnded(quint64 id, int socket, quint64 ticket, const Outcome& outcome) {
    --movesRunning_;
    const auto it = clients_.find(id);
    if (it == clients_.end()) {
        return;
    }
    Client& client = *it->second;
    Client::Socket& slot = client.sockets[static_cast<std::size_t>(socket - 1)];
    if (!slot.busy || slot.ticket != ticket) {
        return;  // cancelled or cleared: nothing more is said of it
    }
    slot.busy = false;
    if (outcome.isDone()) {
        reply(client, slot.origin, visca::completion(socket));
    } else {
        reply(client, slot.origin, visca::errorReply(socket, visca::error::kNotExecutable));
    }
    note(client, QStringLiteral("socket %1: %2").arg(socket).arg(outcome.text()));
}

void ViscaBridge::resetPanTilt(Client& client, const Origin& origin) {
    const int socket = freeSocket(client);
    if (socket == 0) {
        reply(client, origin, visca::errorReply(0, visca::error::kBufferFull));
        note(client, QStringLiteral("pan-tilt reset: command buffer full"));
        return;
    }
    std::optional<Refusal> refusal = session_.refusalFor(Requester::Program);
    if (!refusal) {
        refusal = session_.reset().refusal();
    }
    if (refusal) {
        reply(client, origin, visca::errorReply(socket, visca::error::kNotExecutable));
        note(client, QStringLiteral("pan-tilt reset: refused, ") + describe(*refusal));
        return;
    }
    reply(client, origin, visca::ack(socket));
    reply(client, origin, visca::completion(socket));
    note(client, QStringLiteral("pan-tilt reset"));
}

void ViscaBridge::cancel(Client& client, const Origin& origin, int socket) {
    const bool valid = socket == 1 || socket == 2;
    if (!valid || !client.sockets[static_cast<std::size_t>(socket - 1)].busy) {
        reply(client, origin, visca::errorReply(socket, visca::error::kNoSocket));
        note(client, QStringLiteral("cancel socket %1: no socket").arg(socket));
        return;
    }
    client.sockets[static_cast<std::size_t>(socket - 1)] = {};
    reply(client, origin, visca::errorReply(socket, visca::error::kCanceled));
    note(client, QStringLiteral("cancel socket %1").arg(socket));
    if (!session_.jogSources().operatorJogging()) {
        releaseJog();
        session_.stop();
    }
}

void ViscaBridge::clearInterface(Client& client) {
    client.sockets = {};
    if (jogClient_ == client.id) {
        stopJogOf(client, QStringLiteral("jog stopped: interface clear"));
    }
}

void ViscaBridge::answerInquiry(Client& client, const Origin& origin,
                                const visca::Request& request) {
    const bool panTilt = std::holds_alternative<visca::PanTiltPositionInquiry>(request);
    const QString what = panTilt ? QStringLiteral("pan-tilt position inquiry")
                                 : QStringLiteral("zoom position inquiry");
    if (!session_.online()) {
        reply(client, origin, visca::errorReply(0, visca::error::kNotExecutable));
        note(client, what + QStringLiteral(": refused, ") + describe(Refusal::Offline));
        return;
    }
    const UnitStatus& status = session_.status();
    if (panTilt) {
        const auto units = [](float angle) {
            return visca::positionOf(static_cast<double>(angle))
                .value_or(angle < 0 ? -32768 : 32767);
        };
        reply(client, origin,
              visca::panTiltPositionReply(units(status.CurrentPan), units(status.CurrentTilt)));
    } else {
        reply(client, origin, visca::zoomPositionReply(visca::zoomPositionOf(status.Lens[0])));
    }
    note(client, what);
}

}  // namespace halvex
