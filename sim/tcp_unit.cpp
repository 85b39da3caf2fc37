#include "sim/tcp_unit.h"

#include <fcntl.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <unistd.h>

namespace halvex::sim {

TcpUnit::TcpUnit(const PtyUnitOptions& options, QObject* parent) : StreamUnit(options, parent) {}

TcpUnit::~TcpUnit() {
    dropConnection();
}

bool TcpUnit::listen(quint16 port, QString* error) {
    if (server_.listen(QHostAddress::Any, port)) {
        return true;
    }
    if (error != nullptr) {
        *error =
            QStringLiteral("cannot listen on TCP port %1: %2").arg(port).arg(server_.errorString());
    }
    return false;
}

void TcpUnit::say(const QString& line) const {
    if (log_) {
        log_(line);
    }
}

void TcpUnit::take(int descriptor) {
    if (connection_ >= 0) {
        say(QStringLiteral("a second console was turned away: one console at a time"));
        ::close(descriptor);
        return;
    }
    const int flags = ::fcntl(descriptor, F_GETFL);
    ::fcntl(descriptor, F_SETFL, flags | O_NONBLOCK);
    // Each reply goes out whole the moment it is ready, as from a serial line.
    const int on = 1;
    ::setsockopt(descriptor, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    connection_ = descriptor;
    attachLine(connection_);
    say(QStringLiteral("a console connected"));
}

void TcpUnit::dropConnection() {
    if (connection_ >= 0) {
        detachLine();
        ::close(connection_);
        connection_ = -1;
    }
}

void TcpUnit::lineEnded() {
    dropConnection();
    say(QStringLiteral("the console left"));
}

long TcpUnit::writeLine(const Byte* bytes, std::size_t count) {
    // No SIGPIPE for a console that has just gone: the next read sees it.
    return ::send(connection_, bytes, count, MSG_NOSIGNAL);
}

}  // namespace halvex::sim
