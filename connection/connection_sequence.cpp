#include "connection/connection_sequence.h"

#include "connection/initial_reads.h"
#include "console/messages.h"
#include "console/page_lock.h"
#include "protocol/fault_guard.h"
#include "protocol/flag_scope.h"
#include "protocol/port_map.h"
#include "protocol/senders.h"
#include "protocol/vocabulary.h"
#include "protocol/wait.h"

namespace halvex {

namespace {
// Controls that mean nothing on a unit without the second camera and the
// video hardware.
// What a unit without the second camera and video hardware has no use for.
// Of a per-camera pair only camera 2's element goes; of the zoom/focus
// quadruples (zoom 1, focus 1, zoom 2, focus 2) and the aux outputs (two per
// camera) the last two; every element of camera 2's lens boxes.
const char* const kSecondCameraControls[] = {
    "Label1_3",        "Z2LED",          "F2LED",         "Zoom2Label",     "Focus2Label",
    "ZoomBox2",        "FocusBox2",      "Lens2Check_*",  "GetVidBut2",     "PALCheck2",
    "OSDOnCheck",      "InitVModeBut",   "EncHomeBut",    "Pindex",         "Tindex",
    "SetCenBut",       "ZFScroll_2",     "ZFScroll_3",    "ZFLabel_2",      "ZFLabel_3",
    "VideoFrame",      "VidConfigFrame", "Label9",        "Label26_1",      "FormLabel2",
    "BaudLabel2",      "LevelLabel2",    "CamPwrCheck_1", "AuxCheck_2",     "AuxCheck_3",
    "CamTOSpin_1",     "CamTOLabel_1",   "CamTypeBut_1",  "CamTypeCombo_1", "FormatFrame1_1",
    "SendBut_1",       "CRCheck_1",      "TXBox_1",       "RXLabel_1",      "ZoomMinLabel_1",
    "FocusMinLabel_1", "ZoomMinSpin_1"};

}  // namespace

ConnectionSequence::ConnectionSequence(ConsoleContext& context, PortSelection& ports,
                                       SerialPort& port, ConnectionView view, QObject* parent)
    : QObject(parent), context_(context), ports_(ports), port_(port), view_(view) {
    reconnect_.setInterval(kReconnectMs);
    connect(&port_, &SerialPort::lost, this, [this](const QString& reason) {
        guarded(context_.state, "SerPort1_OnComm", [&] { portLost(reason); });
    });
    connect(&port_, &SerialPort::reopened, this, [this](const QString& reason) {
        context_.state.reportFault(
            QStringLiteral(
                "%1 reported an error (%2) but is still there: opened it again in place.")
                .arg(portName(), reason));
    });
    connect(&reconnect_, &QTimer::timeout, this,
            [this] { guarded(context_.state, "Reconnect_Timer", [this] { tryReconnect(); }); });
    // Queued: the connection sequence waits, and must not do so inside the
    // port's own handling of the server's bytes.
    connect(
        &port_, &SerialPort::connectionMade, this,
        [this] {
            if (reconnect_.isActive() && !running_ && port_.isOpen() && !port_.stillConnecting()) {
                guarded(context_.state, "Reconnect_Timer", [this] { return reconnected(); });
            }
        },
        Qt::QueuedConnection);
    connect(&port_, &SerialPort::notice, this, [this](const QString& text) {
        context_.state.reportFault(QStringLiteral("%1: %2.").arg(portName(), text));
    });
}

QString ConnectionSequence::portName() const {
    return QStringLiteral("COM%1 (%2)").arg(ports_.comPort()).arg(comPortDevice(ports_.comPort()));
}

void ConnectionSequence::portLost(const QString& reason) {
    // A network port that could not connect while being looked for is lost
    // again every second; say so only when the reason changes.
    const bool sameAgain = reconnect_.isActive() && reason == lastLoss_;
    lastLoss_ = reason;
    context_.link.stop();
    context_.state.Online = false;
    context_.state.setLamp(LinkLamp::Fault);
    view_.SSTab1->setEnabled(false);
    showProgress(QStringLiteral("Pan"), QStringLiteral("Tilt"));
    view_.setTitle(ports_.title(QStringLiteral(" Offline")));
    if (!sameAgain) {
        context_.state.reportFault(
            QStringLiteral("%1 lost: %2. Looking for it again.").arg(portName(), reason));
    }
    reconnect_.start();
}

void ConnectionSequence::tryReconnect() {
    if (port_.stillConnecting()) {
        return;  // an attempt on its way ends in connectionMade or a loss
    }
    if (running_ || port_.isOpen()) {
        reconnect_.stop();
        return;
    }
    if (!port_.open(comPortDevice(ports_.comPort()), ports_.baudRate())) {
        return;  // not back yet
    }
    if (!port_.stillConnecting()) {
        launch(context_.state, "Reconnect_Timer", reconnected());
    }
}

QCoro::Task<> ConnectionSequence::reconnected() {
    reconnect_.stop();
    lastLoss_.clear();
    context_.state.reportFault(QStringLiteral("%1 is back: connecting again.").arg(portName()));
    const bool online = co_await initialise(NoAnswer::KeepLooking);
    emit finished(online);
}

void ConnectionSequence::showProgress(const QString& pan, const QString& tilt) {
    view_.Label2[0]->setText(pan);
    view_.Label2[1]->setText(tilt);
}

QCoro::Task<> ConnectionSequence::StartBut_Click() {
    reconnect_.stop();
    if (running_) {
        co_return;  // already connecting
    }
    if (port_.stillConnecting()) {
        port_.close();  // a look for a lost device on its way: start afresh
    }
    if (port_.isOpen()) {
        co_return;  // already connected
    }
    const QString device = comPortDevice(ports_.comPort());
    if (!port_.open(device, ports_.baudRate())) {
        context_.messages.exclamation(
            QStringLiteral("Could Not Open COM%1").arg(ports_.comPort()),
            QStringLiteral("There was a problem opening the serial port. Please check your port "
                           "selection under 'Port' and try again."));
        co_return;
    }
    const bool online = co_await initialise();
    emit finished(online);
}

QCoro::Task<> ConnectionSequence::Reinitialize() {
    if (running_ || !port_.isOpen()) {
        co_return;
    }
    context_.state.Online = true;
    const bool online = co_await initialise();
    emit finished(online);
}

void ConnectionSequence::requestLimits() {
    for (int index = 0; index < vocab::soft_limit::kLimits; ++index) {
        auto request = vocab::readRequest<vocab::SoftLimit>();
        vocab::put(request, vocab::soft_limit::kLimit, static_cast<Byte>(index));
        sendMessage(context_.state, context_.link, request);
    }
}

StateWait ConnectionSequence::lineFree() {
    // Every frame queued so far has gone out, and no sender holds the line
    // for replies of its own: the step before is done.
    return waitUntil(
        context_.state,
        [this] { return !context_.state.SendInProgress || !context_.link.portOpen(); }, kNoTimeout,
        this);
}

QCoro::Task<bool> ConnectionSequence::initialise(NoAnswer noAnswer) {
    const FlagScope running(running_);
    FormState& state = context_.state;
    view_.setTitle(ports_.title(QStringLiteral(" Initializing Pan & Tilt")));
    showProgress(QStringLiteral("Initializing"), QStringLiteral("Pan/Tilt"));
    co_await letEventsRun(state);

    view_.StartBut->setText(QString());
    // Through the lamp state, so that the first good reply lights the lamp
    // again even when it showed good before (Reinitialize while online).
    context_.state.setLamp(LinkLamp::None);
    {
        const HourglassScope hourglass;
        Link& link = context_.link;
        state.ConnectTimedOut = false;
        link.Timer1().start();
        // A network port may still be making its connection: the first frame
        // waits for it, within the same time limit, rather than pile up
        // behind it with the ticks' jog messages.
        co_await waitUntil(
            state, [this] { return !port_.stillConnecting() || context_.state.ConnectTimedOut; },
            kNoTimeout, this);
        if (link.portOpen() && !port_.stillConnecting()) {
            link.sendJogMessage();
            link.Timer2().start();
        }

        state.ReplyReceived = false;
        co_await waitUntil(
            state,
            [this, &link] {
                return context_.state.ReplyReceived || context_.state.ConnectTimedOut ||
                       !link.portOpen();
            },
            kNoTimeout, this);
        if (!link.portOpen()) {
            abandon();
            co_return false;
        }
        if (!state.ReplyReceived) {
            fail(noAnswer);
            co_return false;
        }

        if (context_.status.UnitVariant() == 1) {
            HideSecondCameraControls();
        }
        link.Timer2().start();

        // Each step's frames go out before the next step starts, as a
        // reader of the Line Log expects them.
        view_.Label2[1]->setText(QStringLiteral("Offsets"));
        co_await letEventsRun(state);
        co_await sendMessage(state, link, vocab::blank<vocab::OffsetsRequest>());

        view_.Label2[1]->setText(QStringLiteral("Limits"));
        co_await letEventsRun(state);
        requestLimits();
        co_await lineFree();

        view_.Label2[1]->setText(QStringLiteral("Presets"));
        co_await letEventsRun(state);
        co_await context_.events.presetsReload();
        emit context_.events.tourSelectorPrepareRequested();
        view_.Label2[1]->setText(QStringLiteral("Tours"));
        co_await letEventsRun(state);
        co_await context_.events.selectedTourLoad();

        view_.Label2[1]->setText(QStringLiteral("Setup"));
        co_await letEventsRun(state);
        for (const char* read : setupReads()) {
            runInitialRead(context_, read);
            co_await lineFree();
        }

        view_.setTitle(ports_.title(QStringLiteral(" Initializing Camera")));
        view_.Label2[1]->setText(QStringLiteral("Camera"));
        co_await letEventsRun(state);
        for (const char* read : cameraReads()) {
            runInitialRead(context_, read);
            co_await lineFree();
        }
        sendMessage(state, link, vocab::readRequest<vocab::VideoConfiguration>());
        sendMessage(state, link, vocab::readRequest<vocab::AngleDisplay>());
        sendMessage(state, link, vocab::readRequest<vocab::NameDisplay>());
        co_await lineFree();
    }
    // Exit (or a lost port) during the reads: the requests were dropped, and
    // the console is not online.
    if (!context_.link.portOpen()) {
        abandon();
        co_return false;
    }

    view_.SSTab1->setEnabled(true);
    view_.SSTab1->setCurrentIndex(0);
    // Jogging is armed by showing the Pan/Tilt page; it is already showing,
    // so arm it here, or the jog box would stay dead until a page change.
    if (view_.showFirstPage) {
        view_.showFirstPage();
    }
    view_.setTitle(ports_.title(QStringLiteral(" Online")));
    showProgress(QStringLiteral("Pan"), QStringLiteral("Tilt"));
    state.Online = true;
    co_return true;
}

void ConnectionSequence::abandon() {
    context_.link.stop();
    showProgress(QStringLiteral("Pan"), QStringLiteral("Tilt"));
    view_.StartBut->setText(QStringLiteral("Start"));
}

void ConnectionSequence::fail(NoAnswer noAnswer) {
    context_.link.stop();
    showProgress(QStringLiteral("Pan"), QStringLiteral("Tilt"));
    if (noAnswer == NoAnswer::KeepLooking) {
        port_.close();
        view_.setTitle(ports_.title(QStringLiteral(" Offline")));
        view_.StartBut->setText(QStringLiteral("Start"));
        context_.state.reportFault(
            QStringLiteral("%1 is there but no unit answers yet. Looking for it again.")
                .arg(portName()));
        reconnect_.start();
        return;
    }
    context_.messages.exclamation(
        QStringLiteral("Could Not Establish Connection"),
        QStringLiteral("There was a problem establishing a connection. Please check your port "
                       "selection and baud rate and try again."));
    port_.close();
    view_.StartBut->setText(QStringLiteral("Start"));
}

void ConnectionSequence::HideSecondCameraControls() {
    for (const char* entry : kSecondCameraControls) {
        // "Name_*" stands for every element of an array.
        QString name = QString::fromLatin1(entry);
        const bool wholeArray = name.endsWith(QLatin1String("_*"));
        if (wholeArray) {
            name.chop(1);
        }
        for (QWidget* widget : view_.window->findChildren<QWidget*>()) {
            const QString objectName = widget->objectName();
            if (wholeArray ? objectName.startsWith(name) : objectName == name) {
                widget->hide();
            }
        }
    }
}

void ConnectionSequence::ResetBut_Click() {
    context_.state.JogFlags = vocab::withBit(context_.state.JogFlags, vocab::jog::kReset, true);
    context_.link.requestJogMessage();
}

void ConnectionSequence::StopBut_Click() {
    if (reconnect_.isActive()) {
        reconnect_.stop();  // Stop ends the looking, and nothing else
        if (port_.stillConnecting()) {
            port_.close();  // the attempt on its way too
        }
        context_.state.reportFault(QStringLiteral("No longer looking for %1.").arg(portName()));
        return;
    }
    context_.state.JogFlags = vocab::withBit(context_.state.JogFlags, vocab::jog::kStop, true);
    context_.link.requestJogMessage();
    emit context_.events.tourDisplayEndRequested();
}

QCoro::Task<> ConnectionSequence::ExitBut_Click() {
    reconnect_.stop();
    if (!port_.isOpen()) {
        co_return;
    }
    context_.state.JogFlags = vocab::withBit(context_.state.JogFlags, vocab::jog::kStop, true);
    Link& link = context_.link;
    link.requestJogMessage();
    if (!context_.state.LinkFault && link.Timer2().isActive()) {
        // Wait for the frame that carries the stop request to go out, then
        // for the reply that shows it reached the unit. A watchdog expiry
        // meanwhile means no reply is coming; the time-out covers a line
        // that another sender holds for longer.
        FormState& state = context_.state;
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
    port_.close();
}

}  // namespace halvex
