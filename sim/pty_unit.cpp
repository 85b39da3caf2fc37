#include "sim/pty_unit.h"

#include <fcntl.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>

namespace halvex::sim {

namespace {

constexpr std::size_t kMaxPending = 64 * 1024;  // output kept for a reader that is not reading
constexpr int kResumeAfterErrorMs = 100;
constexpr int kBitsPerByte = 10;  // start, eight data bits, stop

QString systemError(const char* what) {
    return QStringLiteral("%1: %2").arg(QString::fromLatin1(what),
                                        QString::fromLocal8Bit(std::strerror(errno)));
}

}  // namespace

PtyUnit::PtyUnit(const PtyUnitOptions& options, QObject* parent)
    : QObject(parent), options_(options), unit_(options.unit), faults_(options.line) {
    for (Fault fault : options.faults) {
        unit_.state().motion.armFault(fault);
    }
    clockTimer_.setSingleShot(true);
    connect(&clockTimer_, &QTimer::timeout, this, &PtyUnit::runClock);
    paceTimer_.setTimerType(Qt::PreciseTimer);
    connect(&paceTimer_, &QTimer::timeout, this, &PtyUnit::writePaced);
    resumeTimer_.setSingleShot(true);
    connect(&resumeTimer_, &QTimer::timeout, this, [this] {
        if (readNotifier_) {
            readNotifier_->setEnabled(true);
        }
    });
}

PtyUnit::PtyUnit(const PtyUnitOptions& options, std::unique_ptr<UnitPeer> answers, QObject* parent)
    : PtyUnit(options, parent) {
    answers_ = std::move(answers);
}

PtyUnit::~PtyUnit() {
    readNotifier_.reset();
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
    clock_.start();
    readNotifier_ = std::make_unique<QSocketNotifier>(master_, QSocketNotifier::Read);
    connect(readNotifier_.get(), &QSocketNotifier::activated, this, &PtyUnit::readFromConsole);
    return true;
}

void PtyUnit::readFromConsole() {
    UnitPeer& peer = answers_ ? *answers_ : static_cast<UnitPeer&>(unit_);
    peer.advanceTo(nowMs());
    Byte buffer[4096];
    for (;;) {
        const ssize_t count = ::read(master_, buffer, sizeof buffer);
        if (count > 0) {
            peer.receiveFromConsole(buffer, static_cast<std::size_t>(count));
            continue;
        }
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count == 0 || (errno != EAGAIN && errno != EWOULDBLOCK)) {
            // No reader on the far side: listen again a little later rather
            // than spin on a descriptor that keeps reporting the condition.
            readNotifier_->setEnabled(false);
            resumeTimer_.start(kResumeAfterErrorMs);
        }
        break;
    }
    queueOutput();
    scheduleClock();
}

void PtyUnit::runClock() {
    unit_.advanceTo(nowMs());
    queueOutput();
    scheduleClock();
}

void PtyUnit::scheduleClock() {
    const auto wake = answers_ ? std::nullopt : unit_.nextWakeMs();
    if (!wake) {
        clockTimer_.stop();
        return;
    }
    clockTimer_.start(static_cast<int>(std::clamp<std::int64_t>(*wake - nowMs(), 1, 60000)));
}

void PtyUnit::queueOutput() {
    const auto bytes = answers_ ? answers_->takeOutput() : faults_.apply(unit_.takeFrames());
    if (bytes.empty()) {
        return;
    }
    pending_.insert(pending_.end(), bytes.begin(), bytes.end());
    while (pending_.size() > kMaxPending) {
        pending_.pop_front();
    }
    if (options_.paceBaud <= 0) {
        writeNow();
        return;
    }
    if (!paceTimer_.isActive()) {
        paceStartMs_ = nowMs();
        pacedSent_ = 0;
        const int byteMs = std::max(1, kBitsPerByte * 1000 / options_.paceBaud);
        paceTimer_.start(byteMs);
    }
}

void PtyUnit::writeNow() {
    std::vector<Byte> chunk(pending_.begin(), pending_.end());
    const ssize_t written = ::write(master_, chunk.data(), chunk.size());
    if (written > 0) {
        pending_.erase(pending_.begin(), pending_.begin() + written);
    }
    // What the far side does not take now waits for the next reply.
}

void PtyUnit::writePaced() {
    // Bytes due by now at the line speed, each written on its own.
    const std::int64_t due =
        (nowMs() - paceStartMs_) * options_.paceBaud / (kBitsPerByte * 1000) + 1;
    while (pacedSent_ < due && !pending_.empty()) {
        const Byte value = pending_.front();
        if (::write(master_, &value, 1) != 1) {
            break;
        }
        pending_.pop_front();
        ++pacedSent_;
    }
    if (pending_.empty()) {
        paceTimer_.stop();
    }
}

}  // namespace halvex::sim
