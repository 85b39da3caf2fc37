#include "session/unit_connection.h"

#include "protocol/fault_guard.h"
#include "protocol/flag_scope.h"
#include "protocol/senders.h"
#include "protocol/vocabulary.h"

namespace halvex {

namespace {
// The console is not online until the connection's reads are done: they go
// out as the operator's own reads do.
constexpr Requester kConnecting = Requester::Operator;
}  // namespace

UnitConnection::UnitConnection(Session& session, LineChoice line, QObject* parent)
    : QObject(parent), session_(session), line_(std::move(line)) {
    reconnect_.setInterval(kReconnectMs);
    SerialPort& port = session_.port();
    FormState& state = session_.state();
    connect(&port, &SerialPort::lost, this, [this, &state](const QString& reason) {
        guarded(state, "SerPort1_OnComm", [&] { portLost(reason); });
    });
    connect(&port, &SerialPort::reopened, this, [this, &state](const QString& reason) {
        state.reportFault(
            QStringLiteral(
                "%1 reported an error (%2) but is still there: opened it again in place.")
                .arg(lineName(), reason));
    });
    connect(&reconnect_, &QTimer::timeout, this,
            [this, &state] { guarded(state, "Reconnect_Timer", [this] { tryReconnect(); }); });
    // Queued: the connection waits, and must not do so inside the port's own
    // handling of the server's bytes.
    connect(
        &port, &SerialPort::connectionMade, this,
        [this, &state, &port] {
            if (reconnect_.isActive() && !running_ && port.isOpen() && !port.stillConnecting()) {
                guarded(state, "Reconnect_Timer", [this] { return reconnected(); });
            }
        },
        Qt::QueuedConnection);
    connect(&port, &SerialPort::notice, this, [this, &state](const QString& text) {
        state.reportFault(QStringLiteral("%1: %2.").arg(lineName(), text));
    });
}

void UnitConnection::portLost(const QString& reason) {
    // A network port that could not connect while being looked for is lost
    // again every second; say so only when the reason changes.
    const bool sameAgain = reconnect_.isActive() && reason == lastLoss_;
    lastLoss_ = reason;
    session_.link().stop();
    session_.state().Online = false;
    session_.state().setLamp(LinkLamp::Fault);
    emit wentOffline();
    if (!sameAgain) {
        session_.state().reportFault(
            QStringLiteral("%1 lost: %2. Looking for it again.").arg(lineName(), reason));
    }
    reconnect_.start();
}

void UnitConnection::tryReconnect() {
    SerialPort& port = session_.port();
    if (port.stillConnecting()) {
        return;  // an attempt on its way ends in connectionMade or a loss
    }
    if (running_ || port.isOpen()) {
        reconnect_.stop();
        return;
    }
    if (!port.open(line_.device(), line_.baudRate())) {
        return;  // not back yet
    }
    if (!port.stillConnecting()) {
        launch(session_.state(), "Reconnect_Timer", reconnected());
    }
}

QCoro::Task<> UnitConnection::reconnected() {
    reconnect_.stop();
    lastLoss_.clear();
    session_.state().reportFault(QStringLiteral("%1 is back: connecting again.").arg(lineName()));
    const bool online = co_await initialise(NoAnswer::KeepLooking);
    emit finished(online);
}

bool UnitConnection::stopLooking() {
    if (!reconnect_.isActive()) {
        return false;
    }
    reconnect_.stop();
    if (session_.port().stillConnecting()) {
        session_.port().close();  // the attempt on its way too
    }
    session_.state().reportFault(QStringLiteral("No longer looking for %1.").arg(lineName()));
    return true;
}

QCoro::Task<bool> UnitConnection::start() {
    reconnect_.stop();
    SerialPort& port = session_.port();
    if (running_) {
        co_return false;  // already connecting
    }
    if (port.stillConnecting()) {
        port.close();  // a look for a lost device on its way: start afresh
    }
    if (port.isOpen()) {
        co_return true;  // already connected
    }
    if (!port.open(line_.device(), line_.baudRate())) {
        emit openFailed();
        co_return false;
    }
    const bool online = co_await initialise();
    emit finished(online);
    co_return online;
}

QCoro::Task<bool> UnitConnection::reinitialise() {
    if (running_ || !session_.port().isOpen()) {
        co_return false;
    }
    session_.state().Online = true;
    const bool online = co_await initialise();
    emit finished(online);
    co_return online;
}

void UnitConnection::requestLimits() {
    for (int index = 0; index < vocab::soft_limit::kLimits; ++index) {
        auto request = vocab::readRequest<vocab::SoftLimit>();
        vocab::put(request, vocab::soft_limit::kLimit, static_cast<Byte>(index));
        sendMessage(session_.state(), session_.link(), request);
    }
}

void UnitConnection::startRead(FormState& state, QCoro::Task<Outcome> read) {
    // The frame is queued before this returns; the reply fills the status.
    launch(state, "StartBut_Click", completing(std::move(read)));
}

std::vector<UnitConnection::Step> UnitConnection::settingsReads() {
    Session& session = session_;
    auto setup = [this, &session]() -> QCoro::Task<> {
        FormState& state = session.state();
        const std::function<QCoro::Task<Outcome>()> reads[] = {
            [&] { return session.readCentre(kConnecting); },
            [&] { return session.readDriveRates(kConnecting); },
            [&] { return session.readPanSteps(kConnecting); },
            [&] { return session.readTiltSteps(kConnecting); },
            [&] { return session.readTopSpeeds(TopSpeedSet::First, kConnecting); },
            [&] { return session.readTopSpeeds(TopSpeedSet::Second, kConnecting); },
            [&] { return session.readCommTimeout(kConnecting); },
            [&] { return session.readMount(kConnecting); },
            [&] { return session.readHeaterMode(kConnecting); },
            [&] { return session.readFirmware(kConnecting); },
            [&] { return session.readEncoderCounts(kConnecting); },
        };
        for (const auto& read : reads) {
            startRead(state, read());
            co_await lineFree();
        }
    };
    auto cameras = [this, &session]() -> QCoro::Task<> {
        FormState& state = session.state();
        // The lens read carries the lens setup as last known, as a read
        // from the Camera page carries what the page shows.
        startRead(state, session.readLensSetup(session.status().LensSetups, kConnecting));
        co_await lineFree();
        startRead(state, session.readCameraLines(kConnecting));
        co_await lineFree();
        startRead(state, session.readCameraTimeouts(kConnecting));
        co_await lineFree();
        startRead(state, session.readVideo(kConnecting));
        startRead(state, session.readAngleDisplay(kConnecting));
        startRead(state, session.readNameDisplay(kConnecting));
        co_await lineFree();
    };
    return {{ConnectStage::Setup, setup}, {ConnectStage::Camera, cameras}};
}

std::vector<UnitConnection::Step> UnitConnection::unitReads() {
    Session& session = session_;
    auto presets = [&session]() -> QCoro::Task<> { co_await session.reloadPresets(kConnecting); };
    auto tour = [&session]() -> QCoro::Task<> {
        co_await session.loadTour(session.tours().selected, kConnecting);
    };
    std::vector<Step> steps = {{ConnectStage::Presets, presets}, {ConnectStage::Tours, tour}};
    for (Step& read : settingsReads()) {
        steps.push_back(std::move(read));
    }
    return steps;
}

StateWait UnitConnection::lineFree() {
    return waitUntil(
        session_.state(),
        [this] { return !session_.state().SendInProgress || !session_.link().portOpen(); },
        kNoTimeout, this);
}

QCoro::Task<> UnitConnection::announce(ConnectStage stage) {
    emit stageChanged(stage);
    // What the stage changed is drawn before the step runs.
    co_await letEventsRun(session_.state());
}

QCoro::Task<bool> UnitConnection::initialise(NoAnswer noAnswer) {
    const FlagScope running(running_);
    FormState& state = session_.state();
    Link& link = session_.link();
    SerialPort& port = session_.port();
    co_await announce(ConnectStage::FirstAnswer);

    // Through the lamp state, so that the first good reply lights the lamp
    // again even when it showed good before (reinitialise while online).
    state.setLamp(LinkLamp::None);
    {
        const std::shared_ptr<void> busy = busy_ ? busy_() : nullptr;
        state.ConnectTimedOut = false;
        link.Timer1().start();
        // A network port may still be making its connection: the first frame
        // waits for it, within the same time limit, rather than pile up
        // behind it with the ticks' jog messages.
        co_await waitUntil(
            state, [&] { return !port.stillConnecting() || state.ConnectTimedOut; }, kNoTimeout,
            this);
        if (link.portOpen() && !port.stillConnecting()) {
            link.sendJogMessage();
            link.Timer2().start();
        }

        state.ReplyReceived = false;
        co_await waitUntil(
            state, [&] { return state.ReplyReceived || state.ConnectTimedOut || !link.portOpen(); },
            kNoTimeout, this);
        if (!link.portOpen()) {
            abandon();
            co_return false;
        }
        if (!state.ReplyReceived) {
            fail(noAnswer);
            co_return false;
        }
        emit unitAnswered();
        link.Timer2().start();

        // Each step's frames go out before the next step starts, as a
        // reader of the Line Log expects them.
        co_await announce(ConnectStage::Offsets);
        co_await sendMessage(state, link, vocab::blank<vocab::OffsetsRequest>());

        co_await announce(ConnectStage::Limits);
        requestLimits();
        co_await lineFree();

        for (const Step& step : laterSteps_) {
            co_await announce(step.stage);
            co_await step.run();
        }
    }
    // Exit (or a lost port) during the reads: the requests were dropped, and
    // the console is not online.
    if (!link.portOpen()) {
        abandon();
        co_return false;
    }
    emit stageChanged(ConnectStage::Online);
    state.Online = true;
    co_return true;
}

void UnitConnection::abandon() {
    session_.link().stop();
    emit abandoned();
}

void UnitConnection::fail(NoAnswer noAnswer) {
    session_.link().stop();
    if (noAnswer == NoAnswer::KeepLooking) {
        session_.port().close();
        emit wentOffline();
        emit abandoned();
        session_.state().reportFault(
            QStringLiteral("%1 is there but no unit answers yet. Looking for it again.")
                .arg(lineName()));
        reconnect_.start();
        return;
    }
    emit noUnitAnswered();
    session_.port().close();
    emit abandoned();
}

QCoro::Task<> UnitConnection::exit() {
    reconnect_.stop();
    if (!session_.port().isOpen()) {
        co_return;
    }
    FormState& state = session_.state();
    Link& link = session_.link();
    session_.stop();
    if (!state.LinkFault && link.Timer2().isActive()) {
        // Wait for the frame that carries the stop request to go out, then
        // for the reply that shows it reached the unit. A watchdog expiry
        // meanwhile means no reply is coming; the time-out covers a line
        // that another sender holds for longer.
        co_await waitUntil(
            state,
            [&] {
                return !vocab::isSet(state.JogFlags, vocab::jog::kStop) || state.LinkFault ||
                       !link.portOpen();
            },
            kExitSendTimeoutMs, this);
        co_await link.awaitNextReply();
    }
    link.stop();
    session_.port().close();
}

}  // namespace halvex
