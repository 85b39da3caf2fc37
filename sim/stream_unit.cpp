#include "sim/stream_unit.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>

#include "protocol/flag_scope.h"

namespace halvex::sim {

namespace {

constexpr std::size_t kMaxPending = 64 * 1024;  // output kept for a reader that is not reading
constexpr int kBitsPerByte = 10;                // start, eight data bits, stop

}  // namespace

StreamUnit::StreamUnit(const PtyUnitOptions& options, QObject* parent)
    : QObject(parent), unit_(options.unit), faults_(options.line), paceBaud_(options.paceBaud) {
    for (Fault fault : options.faults) {
        unit_.state().motion.armFault(fault);
    }
    clockTimer_.setSingleShot(true);
    connect(&clockTimer_, &QTimer::timeout, this, &StreamUnit::runClock);
    paceTimer_.setTimerType(Qt::PreciseTimer);
    connect(&paceTimer_, &QTimer::timeout, this, &StreamUnit::writePaced);
    chatterTimer_.setTimerType(Qt::PreciseTimer);
    connect(&chatterTimer_, &QTimer::timeout, this, &StreamUnit::chatter);
    clock_.start();
}

StreamUnit::~StreamUnit() = default;

void StreamUnit::answerWith(std::unique_ptr<UnitPeer> answers) {
    answers_ = std::move(answers);
    scheduleClock();
}

void StreamUnit::attachLine(int fd) {
    detachLine();
    line_ = fd;
    readNotifier_ = std::make_unique<QSocketNotifier>(line_, QSocketNotifier::Read);
    connect(readNotifier_.get(), &QSocketNotifier::activated, this, &StreamUnit::readFromConsole);
}

void StreamUnit::detachLine() {
    if (readNotifier_ && reading_) {
        // Not under the notifier's own signal: later.
        readNotifier_->setEnabled(false);
        readNotifier_.release()->deleteLater();
    }
    readNotifier_.reset();
    line_ = -1;
    pending_.clear();
    paceTimer_.stop();
}

void StreamUnit::pauseReading(bool paused) {
    if (readNotifier_) {
        readNotifier_->setEnabled(!paused);
    }
}

void StreamUnit::readFromConsole() {
    const FlagScope reading(reading_);
    UnitPeer& peer = answers_ ? *answers_ : static_cast<UnitPeer&>(unit_);
    peer.advanceTo(nowMs());
    Byte buffer[4096];
    for (;;) {
        const ssize_t count = ::read(line_, buffer, sizeof buffer);
        if (count > 0) {
            peer.receiveFromConsole(buffer, static_cast<std::size_t>(count));
            continue;
        }
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count == 0 || (errno != EAGAIN && errno != EWOULDBLOCK)) {
            lineEnded();
        }
        break;
    }
    queueOutput();
    scheduleClock();
}

void StreamUnit::runClock() {
    unit_.advanceTo(nowMs());
    queueOutput();
    scheduleClock();
}

void StreamUnit::scheduleClock() {
    // A replay answers at once; only the model has a clock of its own.
    const auto wake = answers_ ? std::nullopt : unit_.nextWakeMs();
    if (!wake) {
        clockTimer_.stop();
        return;
    }
    clockTimer_.start(static_cast<int>(std::clamp<std::int64_t>(*wake - nowMs(), 1, 60000)));
}

void StreamUnit::queueOutput() {
    if (answers_) {
        const auto bytes = answers_->takeOutput();
        if (nowMs() >= silentUntilMs_) {
            sendOut(bytes);
        }
        return;
    }
    const auto frames = unit_.takeFrames();
    if (nowMs() < silentUntilMs_) {
        return;
    }
    sendOut(faults_.apply(frames));
}

void StreamUnit::chatter() {
    sendOut(faults_.chatter(unit_.state().settings.unitId));
}

void StreamUnit::sendOut(const std::vector<Byte>& bytes) {
    if (bytes.empty() || line_ < 0) {
        return;  // nobody to hear it
    }
    pending_.insert(pending_.end(), bytes.begin(), bytes.end());
    while (pending_.size() > kMaxPending) {
        pending_.pop_front();
    }
    if (paceBaud_ <= 0) {
        writeNow();
        return;
    }
    if (!paceTimer_.isActive()) {
        paceStartMs_ = nowMs();
        pacedSent_ = 0;
        const int byteMs = std::max(1, kBitsPerByte * 1000 / paceBaud_);
        paceTimer_.start(byteMs);
    }
}

void StreamUnit::apply(const LineCommand& command) {
    LineFaultOptions line = faults_.options();
    switch (command.kind) {
        case LineCommand::Kind::Clean:
            line = LineFaultOptions{};
            chatterTimer_.stop();
            paceBaud_ = 0;
            silentUntilMs_ = 0;
            break;
        case LineCommand::Kind::Noise:
            line.noise = command.rate;
            break;
        case LineCommand::Kind::Corrupt:
            line.corrupt = command.rate;
            break;
        case LineCommand::Kind::Drop:
            line.drop = command.rate;
            break;
        case LineCommand::Kind::Chatter:
            if (command.number > 0) {
                chatterTimer_.start(command.number);
            } else {
                chatterTimer_.stop();
            }
            break;
        case LineCommand::Kind::Pace:
            paceBaud_ = command.number;
            if (paceBaud_ <= 0) {
                paceTimer_.stop();
                writeNow();
            }
            break;
        case LineCommand::Kind::Silent:
            silentUntilMs_ = nowMs() + command.number * 1000LL;
            break;
    }
    faults_.setOptions(line);
}

void StreamUnit::writeNow() {
    if (line_ < 0 || pending_.empty()) {
        return;
    }
    std::vector<Byte> chunk(pending_.begin(), pending_.end());
    const long written = writeLine(chunk.data(), chunk.size());
    if (written > 0) {
        pending_.erase(pending_.begin(), pending_.begin() + written);
    }
    // What the far side does not take now waits for the next reply.
}

void StreamUnit::writePaced() {
    // Bytes due by now at the line speed, each written on its own.
    const std::int64_t due = (nowMs() - paceStartMs_) * paceBaud_ / (kBitsPerByte * 1000) + 1;
    while (pacedSent_ < due && !pending_.empty()) {
        const Byte value = pending_.front();
        if (line_ < 0 || writeLine(&value, 1) != 1) {
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
