#include "network/rotctld_session.h"

#include <QTcpSocket>
#include <QTimer>
#include <string_view>

#include "network/rotctl_protocol.h"

namespace halvex::network {

namespace {

// A client that sends faster than it reads its answers is not read further
// until they drain, so neither buffer grows without bound.
constexpr qint64 kReadChunk = 4096;
constexpr qint64 kMaxUnsentAnswers = 64 * 1024;
// A dropped client that does not take its last answer is cut off.
constexpr int kCloseGraceMs = 2000;

}  // namespace

RotctldSession::RotctldSession(QTcpSocket* socket, Rotator& rotator, QObject* parent)
    : QObject(parent), socket_(socket), rotator_(rotator) {
    socket_->setParent(this);
    socket_->setReadBufferSize(kReadChunk);
    peer_ = QStringLiteral("%1:%2").arg(socket_->peerAddress().toString()).arg(socket_->peerPort());
    connect(socket_, &QTcpSocket::readyRead, this, &RotctldSession::readLines);
    connect(socket_, &QTcpSocket::bytesWritten, this, &RotctldSession::readLines);
    connect(socket_, &QTcpSocket::disconnected, this, &RotctldSession::finish);
}

void RotctldSession::abort() {
    closing_ = true;
    socket_->abort();
    finish();
}

void RotctldSession::readLines() {
    while (!closing_ && socket_->bytesToWrite() < kMaxUnsentAnswers) {
        const qsizetype end = pending_.indexOf('\n');
        if (end >= 0) {
            const QByteArray line = pending_.left(end);
            pending_.remove(0, end + 1);
            if (!answer(line)) {
                closeAfterWriting();
            }
            continue;
        }
        if (static_cast<std::size_t>(pending_.size()) > kMaxRotctlLineLength) {
            socket_->write(QByteArray::fromStdString(rotctlReport(RotctlCode::ProtocolError)));
            closeAfterWriting();
            break;
        }
        if (socket_->bytesAvailable() == 0) {
            break;
        }
        pending_ += socket_->read(kReadChunk);
    }
    // Out now rather than on the next turn of the event loop: a client that
    // sends its request and then shuts its side (socat, nc -N) would see the
    // socket closed first and get nothing. It may come back in through
    // bytesWritten, which is why nothing follows it.
    socket_->flush();
}

bool RotctldSession::answer(const QByteArray& line) {
    const RotctlReply reply =
        answerRotctlLine(std::string_view(line.constData(), line.size()), rotator_);
    if (!reply.text.empty()) {
        socket_->write(reply.text.data(), static_cast<qint64>(reply.text.size()));
    }
    if (reply.acceptedMove) {
        emit moveAccepted(reply.acceptedMove->azimuth, reply.acceptedMove->elevation, peer_);
    }
    return !reply.closeConnection;
}

void RotctldSession::closeAfterWriting() {
    closing_ = true;
    pending_.clear();
    QTimer::singleShot(kCloseGraceMs, socket_, &QTcpSocket::abort);
    socket_->disconnectFromHost();
}

void RotctldSession::finish() {
    if (finished_) {
        return;
    }
    finished_ = true;
    closing_ = true;
    emit finished(this);
}

}  // namespace halvex::network
