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
                guarded(context_.state, "Reconnect_Timer", [this] { reconnected(); });
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
        reconnected();
    }
}

void ConnectionSequence::reconnected() {
    reconnect_.stop();
    lastLoss_.clear();
    context_.state.reportFault(QStringLiteral("%1 is back: connecting again.").arg(portName()));
    const bool online = initialise(NoAnswer::KeepLooking);
    emit finished(online);
}

void ConnectionSequence::showProgress(const QString& pan, const QString& tilt) {
    view_.Label2[0]->setText(pan);
    view_.Label2[1]->setText(tilt);
}

void ConnectionSequence::StartBut_Click() {
    reconnect_.stop();
    if (running_) {
        return;  // already connecting
    }
    if (port_.stillConnecting()) {
        port_.close();  // a look for a lost device on its way: start afresh
    }
    if (port_.isOpen()) {
        return;  // already connected
    }
    const QString device = comPortDevice(ports_.comPort());
    if (!port_.open(device, ports_.baudRate())) {
        context_.messages.exclamation(
            QStringLiteral("Could Not Open COM%1").arg(ports_.comPort()),
            QStringLiteral("There was a problem opening the serial port. Please check your port "
                           "selection under 'Port' and try again."));
        return;
    }
    const bool online = initialise();
    emit finished(online);
}

void ConnectionSequence::Reinitialize() {
    if (running_ || !port_.isOpen()) {
        return;
    }
    context_.state.Online = true;
    const bool online = initialise();
    emit finished(online);
}

void ConnectionSequence::requestLimits() {
    for (int index = 0; index < vocab::soft_limit::kLimits; ++index) {
        auto request = vocab::readRequest<vocab::SoftLimit>();
        vocab::put(request, vocab::soft_limit::kLimit, static_cast<Byte>(index));
        sendMessage(context_.state, context_.link, request);
    }
}

bool ConnectionSequence::initialise(NoAnswer noAnswer) {
    FlagScope running(running_);
    view_.setTitle(ports_.title(QStringLiteral(" Initializing Pan & Tilt")));
    showProgress(QStringLiteral("Initializing"), QStringLiteral("Pan/Tilt"));
    letEventsRun();

    view_.StartBut->setText(QString());
    // Through the lamp state, so that the first good reply lights the lamp
    // again even when it showed good before (Reinitialize while online).
    context_.state.setLamp(LinkLamp::None);
    {
        HourglassScope hourglass;
        Link& link = context_.link;
        context_.state.ConnectTimedOut = false;
        link.Timer1().start();
        // A network port may still be making its connection: the first frame
        // waits for it, within the same time limit, rather than pile up
        // behind it with the ticks' jog messages.
        waitUntil(context_.state,
                  [this] { return !port_.stillConnecting() || context_.state.ConnectTimedOut; });
        if (link.portOpen() && !port_.stillConnecting()) {
            link.sendJogMessage();
            link.Timer2().start();
        }

        context_.state.ReplyReceived = false;
        waitUntil(context_.state, [this, &link] {
            return context_.state.ReplyReceived || context_.state.ConnectTimedOut ||
                   !link.portOpen();
        });
        if (!link.portOpen()) {
            abandon();
            return false;
        }
        if (!context_.state.ReplyReceived) {
            fail(noAnswer);
            return false;
        }

        if (context_.status.UnitVariant() == 1) {
            HideSecondCameraControls();
        }
        link.Timer2().start();

        view_.Label2[1]->setText(QStringLiteral("Offsets"));
        letEventsRun();
        sendMessage(context_.state, link, vocab::blank<vocab::OffsetsRequest>());

        view_.Label2[1]->setText(QStringLiteral("Limits"));
        letEventsRun();
        requestLimits();

        view_.Label2[1]->setText(QStringLiteral("Presets"));
        letEventsRun();
        emit context_.events.presetsReloadRequested();
        emit context_.events.tourSelectorPrepareRequested();
        view_.Label2[1]->setText(QStringLiteral("Tours"));
        letEventsRun();
        emit context_.events.selectedTourLoadRequested();

        view_.Label2[1]->setText(QStringLiteral("Setup"));
        letEventsRun();
        for (const char* read : setupReads()) {
            runInitialRead(context_, read);
        }

        view_.setTitle(ports_.title(QStringLiteral(" Initializing Camera")));
        view_.Label2[1]->setText(QStringLiteral("Camera"));
        letEventsRun();
        for (const char* read : cameraReads()) {
            runInitialRead(context_, read);
        }
        sendMessage(context_.state, link, vocab::readRequest<vocab::VideoConfiguration>());
        sendMessage(context_.state, link, vocab::readRequest<vocab::AngleDisplay>());
        sendMessage(context_.state, link, vocab::readRequest<vocab::NameDisplay>());
    }
    // Exit (or a lost port) during the reads: the requests were dropped, and
    // the console is not online.
    if (!context_.link.portOpen()) {
        abandon();
        return false;
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
    context_.state.Online = true;
    return true;
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

void ConnectionSequence::ExitBut_Click() {
    reconnect_.stop();
    if (!port_.isOpen()) {
        return;
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
        waitUntil(
            state,
            [&] {
                return !vocab::isSet(state.JogFlags, vocab::jog::kStop) || state.LinkFault ||
                       !link.portOpen();
            },
            kExitSendTimeoutMs);
        link.awaitNextReply();
    }
    link.stop();
    port_.close();
}

}  // namespace halvex
