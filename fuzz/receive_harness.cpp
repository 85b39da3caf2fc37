#include "fuzz/receive_harness.h"

#include <QApplication>
#include <QDir>
#include <QPushButton>
#include <QTabWidget>

#include "protocol/in_process_port.h"
#include "protocol/wait.h"
#include "sim/unit.h"
#include "window/vornixu.h"

namespace halvex::fuzz {

namespace {
constexpr int kFastTickMs = 0;
constexpr int kFastWatchdogMs = 0;
constexpr int kFastSettleMs = 0;
// Turns of the event loop a connection or an input's follow-up may take at
// most; each turn moves at least one frame or one wait along.
constexpr int kMostTurns = 200000;

// Runs the event loop until no wait is left running (the zero-interval
// timers make every turn count), or for at most kMostTurns turns.
void runWaitsOut() {
    for (int turn = 0; turn < kMostTurns && waitCensus().running > 0; ++turn) {
        QCoreApplication::processEvents();
    }
}
}  // namespace

// The virtual unit until the console is online, then silence.
class SilenceablePeer : public UnitPeer {
  public:
    void receiveFromConsole(const std::uint8_t* data, std::size_t size) override {
        if (talking_) {
            unit_.receiveFromConsole(data, size);
        }
    }
    void advanceTo(std::int64_t nowMs) override { unit_.advanceTo(nowMs); }
    std::vector<std::uint8_t> takeOutput() override {
        std::vector<std::uint8_t> output = unit_.takeOutput();
        if (!talking_) {
            output.clear();
        }
        return output;
    }
    void silence() { talking_ = false; }

  private:
    sim::Unit unit_;
    bool talking_ = true;
};

class FeedPort : public InProcessPort {
  public:
    using InProcessPort::InProcessPort;
    void feed(const std::uint8_t* data, std::size_t size) {
        deliver(std::vector<Byte>(data, data + size));
    }
};

ReceiveHarness::ReceiveHarness() : peer_(std::make_unique<SilenceablePeer>()) {
    port_ = new FeedPort(peer_.get());
    // Some replies make the console ask the unit for more (a cleared tour is
    // loaded again), and each request waits for a tick and then for the
    // watchdog. Zero-interval timers fire whenever the event loop is idle:
    // the order of events stays, but nothing sleeps, so the fuzzer is not
    // held up by the clock.
    window_ = std::make_unique<VornixU>(
        port_, [](QWidget*, const Message&) { return true; }, kFastTickMs);
    // The settings file goes to a scratch folder, not wherever we were started.
    const QString previous = QDir::currentPath();
    QDir::setCurrent(directory_.path());
    window_->Form_Load();
    QDir::setCurrent(previous);
    QObject::connect(&window_->state(), &FormState::faultReported, [this](const QString& message) {
        // Range faults carry their error number; anything else is a fault of
        // the program, not of the input.
        if (message.startsWith(QStringLiteral("Run-time error: "))) {
            unexpectedErrors_ << message;
        }
    });
    window_->findChild<QPushButton*>(QStringLiteral("StartBut"))->click();
    runWaitsOut();
    online_ = window_->windowTitle().endsWith(QStringLiteral(" Online"));
    peer_->silence();
    window_->link().Timer4().setInterval(kFastWatchdogMs);
    window_->receiver().setSettleMs(kFastSettleMs);
}

ReceiveHarness::~ReceiveHarness() {
    window_->link().stop();
    window_.reset();
}

QString ReceiveHarness::feed(const std::uint8_t* data, std::size_t size) {
    unexpectedErrors_.clear();
    port_->feed(data, size);
    // Every data event, or the settle time after it, takes at least one
    // byte, and the receiver raises the event again while bytes remain.
    for (std::size_t i = 0; i <= 2 * size && port_->bytesWaiting() > 0; ++i) {
        QCoreApplication::processEvents();
    }
    QCoreApplication::processEvents();
    // What the replies started (a tour loaded again) runs to its end, so
    // that a flag it holds meanwhile is not taken for one left held.
    runWaitsOut();
    if (port_->bytesWaiting() > 0) {
        return QStringLiteral("%1 bytes left in the port").arg(port_->bytesWaiting());
    }
    return checkInvariants();
}

QString ReceiveHarness::checkInvariants() const {
    const FormState& state = window_->state();
    QStringList faults = unexpectedErrors_;
    if (state.SendInProgress) {
        faults << QStringLiteral("SendInProgress left held");
    }
    if (!state.UserClickEnabled) {
        faults << QStringLiteral("UserClickEnabled left cleared");
    }
    if (QApplication::overrideCursor() != nullptr) {
        faults << QStringLiteral("hourglass pointer left on");
    }
    if (!port_->isOpen()) {
        faults << QStringLiteral("the port was closed");
    }
    if (!window_->findChild<QTabWidget*>(QStringLiteral("SSTab1"))->isEnabled()) {
        faults << QStringLiteral("pages left disabled");
    }
    return faults.join(QStringLiteral("; "));
}

}  // namespace halvex::fuzz
