#include "connection/connection_sequence.h"

#include "console/messages.h"
#include "console/page_lock.h"
#include "protocol/port_map.h"
#include "protocol/senders.h"
#include "protocol/vocabulary.h"

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
                                       ConnectionView view, QObject* parent)
    : QObject(parent),
      context_(context),
      ports_(ports),
      view_(view),
      connection_(context.session,
                  LineChoice{[&ports] { return comPortDevice(ports.comPort()); },
                             [&ports] { return ports.baudRate(); },
                             [&ports] {
                                 return QStringLiteral("COM%1 (%2)")
                                     .arg(ports.comPort())
                                     .arg(comPortDevice(ports.comPort()));
                             }},
                  this) {
    connection_.setLaterSteps(pageReads());
    connection_.setBusyIndicator([] { return std::make_shared<HourglassScope>(); });
    connect(&connection_, &UnitConnection::stageChanged, this, &ConnectionSequence::showStage);
    connect(&connection_, &UnitConnection::unitAnswered, this, [this] {
        if (context_.status.UnitVariant() == 1) {
            HideSecondCameraControls();
        }
    });
    connect(&connection_, &UnitConnection::openFailed, this, [this] {
        context_.messages.exclamation(
            QStringLiteral("Could Not Open COM%1").arg(ports_.comPort()),
            QStringLiteral("There was a problem opening the serial port. Please check your port "
                           "selection under 'Port' and try again."));
    });
    connect(&connection_, &UnitConnection::noUnitAnswered, this, [this] {
        showProgress(QStringLiteral("Pan"), QStringLiteral("Tilt"));
        context_.messages.exclamation(
            QStringLiteral("Could Not Establish Connection"),
            QStringLiteral("There was a problem establishing a connection. Please check your port "
                           "selection and baud rate and try again."));
    });
    connect(&connection_, &UnitConnection::wentOffline, this, &ConnectionSequence::showOffline);
    connect(&connection_, &UnitConnection::abandoned, this, [this] {
        showProgress(QStringLiteral("Pan"), QStringLiteral("Tilt"));
        view_.StartBut->setText(QStringLiteral("Start"));
    });
    connect(&connection_, &UnitConnection::finished, this, &ConnectionSequence::finished);
    connect(&context_.session, &Session::stopRequested, &context_.events,
            &ConsoleEvents::tourDisplayEndRequested);
}

std::vector<UnitConnection::Step> ConnectionSequence::pageReads() {
    ConsoleContext& context = context_;
    auto presets = [&context]() -> QCoro::Task<> {
        co_await context.events.presetsReload();
        emit context.events.tourSelectorPrepareRequested();
    };
    auto tours = [&context]() -> QCoro::Task<> { co_await context.events.selectedTourLoad(); };
    std::vector<UnitConnection::Step> steps = {{ConnectStage::Presets, presets},
                                               {ConnectStage::Tours, tours}};
    for (UnitConnection::Step& read : connection_.settingsReads()) {
        steps.push_back(std::move(read));
    }
    return steps;
}

void ConnectionSequence::showProgress(const QString& pan, const QString& tilt) {
    view_.Label2[0]->setText(pan);
    view_.Label2[1]->setText(tilt);
}

void ConnectionSequence::showOffline() {
    view_.SSTab1->setEnabled(false);
    showProgress(QStringLiteral("Pan"), QStringLiteral("Tilt"));
    view_.setTitle(ports_.title(QStringLiteral(" Offline")));
}

void ConnectionSequence::showStage(ConnectStage stage) {
    switch (stage) {
        case ConnectStage::FirstAnswer:
            view_.setTitle(ports_.title(QStringLiteral(" Initializing Pan & Tilt")));
            showProgress(QStringLiteral("Initializing"), QStringLiteral("Pan/Tilt"));
            view_.StartBut->setText(QString());
            return;
        case ConnectStage::Offsets:
            view_.Label2[1]->setText(QStringLiteral("Offsets"));
            return;
        case ConnectStage::Limits:
            view_.Label2[1]->setText(QStringLiteral("Limits"));
            return;
        case ConnectStage::Presets:
            view_.Label2[1]->setText(QStringLiteral("Presets"));
            return;
        case ConnectStage::Tours:
            view_.Label2[1]->setText(QStringLiteral("Tours"));
            return;
        case ConnectStage::Setup:
            view_.Label2[1]->setText(QStringLiteral("Setup"));
            return;
        case ConnectStage::Camera:
            view_.setTitle(ports_.title(QStringLiteral(" Initializing Camera")));
            view_.Label2[1]->setText(QStringLiteral("Camera"));
            return;
        case ConnectStage::Online:
            view_.SSTab1->setEnabled(true);
            view_.SSTab1->setCurrentIndex(0);
            // Jogging is armed by showing the Pan/Tilt page; it is already
            // showing, so arm it here, or the jog box would stay dead until
            // a page change.
            if (view_.showFirstPage) {
                view_.showFirstPage();
            }
            view_.setTitle(ports_.title(QStringLiteral(" Online")));
            showProgress(QStringLiteral("Pan"), QStringLiteral("Tilt"));
            return;
    }
}

QCoro::Task<> ConnectionSequence::StartBut_Click() {
    co_await connection_.start();
}

QCoro::Task<> ConnectionSequence::Reinitialize() {
    co_await connection_.reinitialise();
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
    context_.session.reset();
}

void ConnectionSequence::StopBut_Click() {
    // Stop ends the looking for a lost device, and nothing else.
    if (!connection_.stopLooking()) {
        context_.session.stop();
    }
}

QCoro::Task<> ConnectionSequence::ExitBut_Click() {
    co_await connection_.exit();
}

}  // namespace halvex
