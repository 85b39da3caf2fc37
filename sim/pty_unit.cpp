#include "sim/pty_unit.h"

#include <fcntl.h>
#include <termios.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>

namespace halvex::sim {

namespace {

constexpr int kResumeAfterErrorMs = 100;

QString systemError(const char* what) {
    return QStringLiteral("%1: %2").arg(QString::fromLatin1(what),
                                        QString::fromLocal8Bit(std::strerror(errno)));
}

}  // namespace

PtyUnit::PtyUnit(const PtyUnitOptions& options, QObject* parent) : StreamUnit(options, parent) {
    resumeTimer_.setSingleShot(true);
    connect(&resumeTimer_, &QTimer::timeout, this, [this] { pauseReading(false); });
}

PtyUnit::~PtyUnit() {
    detachLine();
    if (slave_ >= 0) {
        ::close(slave_);
    }
    if (master_ >= 0) {
        ::close(master_);
    }
}

bool PtyUnit::open(QString* error) {
    const auto fail = [error](const QString& reason) {
        if (error) {
            *error = reason;
        }
        return false;
    };
    master_ = ::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
    if (master_ < 0) {
        return fail(systemError("posix_openpt"));
    }
    if (::grantpt(master_) != 0 || ::unlockpt(master_) != 0) {
        return fail(systemError("unlockpt"));
    }
    char name[128] = {};
    if (::ptsname_r(master_, name, sizeof name) != 0) {
        return fail(systemError("ptsname_r"));
    }
    slave_ = ::open(name, O_RDWR | O_NOCTTY | O_CLOEXEC);
    if (slave_ < 0) {
        return fail(systemError("open slave"));
    }
    termios settings{};
    if (::tcgetattr(slave_, &settings) != 0) {
        return fail(systemError("tcgetattr"));
    }
    ::cfmakeraw(&settings);
    if (::tcsetattr(slave_, TCSANOW, &settings) != 0) {
        return fail(systemError("tcsetattr"));
    }
    const int flags = ::fcntl(master_, F_GETFL);
    ::fcntl(master_, F_SETFL, flags | O_NONBLOCK);

    slavePath_ = QString::fromLocal8Bit(name);
    attachLine(master_);
    return true;
}

void PtyUnit::lineEnded() {
    // No reader on the far side: listen again a little later rather than
    // spin on a descriptor that keeps reporting the condition.
    pauseReading(true);
    resumeTimer_.start(kResumeAfterErrorMs);
}

long PtyUnit::writeLine(const Byte* bytes, std::size_t count) {
    return ::write(master_, bytes, count);
}

}  // namespace halvex::sim
