#include "window/vornixu.h"

#include <QApplication>
#include <QCloseEvent>
#include <QHBoxLayout>
#include <QMenuBar>
#include <QStatusBar>
#include <QVBoxLayout>

#include "connection/connection_sequence.h"
#include "connection/position_report.h"
#include "console/handler_wiring.h"
#include "console/messages.h"
#include "console/page.h"
#include "input/controller_jog.h"
#include "input/jog_gate.h"
#include "input/keyboard_jog.h"
#include "live_video/preset_thumbnails.h"
#include "positioning/jog.h"
#include "positioning/motion_commands.h"
#include "protocol/flag_scope.h"
#include "protocol/port_map.h"
#include "recorder/line_recorder.h"
#include "remote/session_rotator.h"
#include "views/pages/camera_page.h"
#include "views/pages/page_parts.h"
#include "views/pages/pan_tilt_page.h"
#include "views/pages/presets_page.h"
#include "views/pages/tours_page.h"
#include "views/widgets/lamp_pictures.h"
#include "views/widgets/widget_accessibility.h"
#include "window/camera_features.h"
#include "window/commissioning_wiring.h"
#include "window/data_watch.h"
#include "window/network_control.h"
#include "window/page_place.h"
#include "window/palette_choice.h"
#include "window/positioning_pages.h"
#include "window/range_plot_feed.h"
#include "window/remote_control_dialog.h"
#include "window/setup_features.h"
#include "window/thumbnail_feed.h"
#include "window/video_wiring.h"
#include "window/window_placement.h"

namespace halvex {

namespace {
// Page captions of SSTab1, in the order of Page.
const char* const kPageCaptions[kPageCount] = {"Pan/Tilt", "Presets", "Offsets", "Tours",
                                               "Camera",   "Video",   "Setup",   "Factory"};

QWidget* placeholderPage(QWidget* parent, const char* caption) {
    auto* page = new QWidget(parent);
    page->setObjectName(QStringLiteral("Page_") + QString::fromLatin1(caption).remove('/'));
    return page;
}
}  // namespace

VornixU::VornixU(SerialPort* port, Messages::Presenter presenter, int linkTickMs, QWidget* parent)
    : QMainWindow(parent),
      session_(port, linkTickMs),
      messages_(this, std::move(presenter)),
      context_{session_, state_, status_, presets_, link_, receiver_, events_, messages_, this} {
    setObjectName(QStringLiteral("VornixU"));
    installWidgetAccessibility();

    dataWatch_ = new DataWatch(this);
    dataWatch_->setWindowFlag(Qt::Window);
    connect(&link_, &Link::frameSent, dataWatch_, &DataWatch::showSentFrame);
    connect(&receiver_, &Receiver::frameReceived, dataWatch_, &DataWatch::showReceivedFrame);
    lineRecorder_ = new LineRecorder(session_, messages_, this, [this] {
        const int com = portSelection_->comPort();
        return QStringLiteral("COM%1 (%2)").arg(com).arg(comPortDevice(com));
    });

    buildMenus();
    buildCentralArea();
    installFeatures();

    connect(&receiver_, &Receiver::receivingIdChanged, label25_, &QLabel::setText);
    connect(&state_, &FormState::lampChanged, this, &VornixU::showLamp);
    connect(&state_, &FormState::faultReported, this,
            [this](const QString& message) { statusBar()->showMessage(message, 15000); });
    connect(portSelection_, &PortSelection::titleChanged, this, &QWidget::setWindowTitle);
    connect(portSelection_, &PortSelection::settingsError, this, [this](const QString& message) {
        messages_.exclamation(QStringLiteral("Settings File"), message);
    });
    new WindowPlacement(*this, QStringLiteral("Main"), QSize(1180, 760));
}

VornixU::~VornixU() {
    // The jog sources go before the members they read: the focus changes
    // that deleting the widgets causes would otherwise reach them.
    jogSources_.setRefresh({});
    delete input_.controller;
    delete input_.keyboard;
    delete input_.gate;
    input_ = {};
    // The bridges stop their jogs as they close, through the session; the
    // dialog that shows them goes first.
    delete remoteControlDialog_;
    remoteControlDialog_ = nullptr;
    delete remoteBridges_;
    remoteBridges_ = nullptr;
    link_.Timer1().stop();
    link_.Timer2().stop();
    link_.Timer4().stop();
}

void VornixU::buildMenus() {
    QMenu* portMenu = menuBar()->addMenu(QStringLiteral("&Port"));
    portMenu->setObjectName(QStringLiteral("PortMenu"));
    QMenu* speedMenu = menuBar()->addMenu(QStringLiteral("&Baud Rate"));
    speedMenu->setObjectName(QStringLiteral("BaudMenu"));
    portSelection_ = new PortSelection(portMenu, speedMenu, this);

    QMenu* unitMenu = menuBar()->addMenu(QStringLiteral("&Unit"));
    unitMenu->setObjectName(QStringLiteral("UnitMenu"));
    reinitialize_ = unitMenu->addAction(QStringLiteral("&Reinitialize"));
    reinitialize_->setObjectName(QStringLiteral("MenuReinitialize"));
    reinitialize_->setEnabled(false);
    unitMenu->addSeparator();
    rotctldAction_ = unitMenu->addAction(QStringLiteral("&Network Control (rotctld)"));
    rotctldAction_->setObjectName(QStringLiteral("MenuRotctld"));
    rotctldAction_->setCheckable(true);
    rotctldAction_->setToolTip(
        QStringLiteral("Let tracking programs steer the unit with Hamlib's rotctld protocol"));
    remoteControlAction_ = unitMenu->addAction(QStringLiteral("Remote &Control..."));
    remoteControlAction_->setObjectName(QStringLiteral("MenuRemoteControl"));
    remoteControlAction_->setToolTip(
        QStringLiteral("Let video management systems, controllers and PTZ keyboards drive the "
                       "unit: ONVIF, VISCA and Pelco-D"));

    QMenu* viewMenu = menuBar()->addMenu(QStringLiteral("&View"));
    QAction* watch = viewMenu->addAction(QStringLiteral("&Data Watch"));
    watch->setObjectName(QStringLiteral("MenuDataWatch"));
    connect(watch, &QAction::triggered, this, [this] {
        dataWatch_->show();
        dataWatch_->raise();
    });
    QAction* lineLog = viewMenu->addAction(QStringLiteral("&Line Log"));
    lineLog->setObjectName(QStringLiteral("MenuLineLog"));
    connect(lineLog, &QAction::triggered, lineRecorder_, &LineRecorder::showLog);
    rangePlotAction_ = viewMenu->addAction(QStringLiteral("&Range Plot"));
    rangePlotAction_->setObjectName(QStringLiteral("MenuRangePlot"));
    rangePlotAction_->setToolTip(
        QStringLiteral("The unit's limits, presets, tour and position; click to move there"));
    videoAction_ = viewMenu->addAction(QStringLiteral("&Video"));
    videoAction_->setObjectName(QStringLiteral("MenuVideo"));
    videoAction_->setToolTip(
        QStringLiteral("The unit's two video outputs; click to centre, drag a box to zoom"));
    QAction* inputSettings = viewMenu->addAction(QStringLiteral("&Input Settings..."));
    inputSettings->setObjectName(QStringLiteral("MenuInputSettings"));
    connect(inputSettings, &QAction::triggered, this, [this] { openInputSettings(input_, *this); });
    viewMenu->addSeparator();
    new PaletteChoice(*viewMenu, this);
    addFullScreenEntry(*viewMenu, *this);
}

void VornixU::buildCentralArea() {
    auto* central = new QWidget(this);
    auto* layout = new QVBoxLayout(central);

    auto* top = new QHBoxLayout;
    startBut_ = new QPushButton(QStringLiteral("Start"), central);
    startBut_->setObjectName(QStringLiteral("StartBut"));
    startBut_->setIcon(idleLinkPicture());
    startBut_->setIconSize(QSize(24, 24));
    startBut_->setMinimumWidth(90);
    startBut_->setProperty("lamp", QStringLiteral("none"));
    startBut_->setToolTip(QStringLiteral("Connect to the unit; the lamp shows the link"));
    stopBut_ = new QPushButton(QStringLiteral("Stop"), central);
    stopBut_->setObjectName(QStringLiteral("StopBut"));
    resetBut_ = new QPushButton(QStringLiteral("Reset"), central);
    resetBut_->setObjectName(QStringLiteral("ResetBut"));
    exitBut_ = new QPushButton(QStringLiteral("Exit"), central);
    exitBut_->setObjectName(QStringLiteral("ExitBut"));
    label25_ = new QLabel(central);
    label25_->setObjectName(QStringLiteral("Label25"));
    top->addWidget(startBut_);
    top->addWidget(stopBut_);
    top->addWidget(resetBut_);
    top->addSpacing(16);
    top->addWidget(label25_);
    top->addStretch();
    top->addWidget(exitBut_);
    layout->addLayout(top);

    tabs_ = new QTabWidget(central);
    tabs_->setObjectName(QStringLiteral("SSTab1"));
    layout->addWidget(tabs_, 1);
    setCentralWidget(central);
    statusBar()->setObjectName(QStringLiteral("StatusBar"));
    rotctldLabel_ = new QLabel(statusBar());
    rotctldLabel_->setObjectName(QStringLiteral("RotctldLabel"));
    statusBar()->addPermanentWidget(rotctldLabel_);
}

void VornixU::installFeatures() {
    panTilt_ = new PanTiltPage(tabs_);
    camera_ = new CameraPage(tabs_);

    CameraReplyView cameras;
    cameras.RXLabel = camera_->RXLabel;
    cameras.HexOp1 = {camera_->HexOp1[0], camera_->HexOp1[1]};
    // The status lamps refresh first after every reply; the tour check that
    // positioning registers reads the fault flag they leave.
    positionReport_ = new PositionReport(context_, *panTilt_, jog_, cameras, *tabs_, this);
    jogControl_ = new JogControl(context_, jog_, jogSources_, *panTilt_, this);
    motion_ = new MotionCommands(context_, *panTilt_, this);

    PositioningEnvironment environment;
    environment.Label2_0 = panTilt_->Label2[0];
    environment.Label2_1 = panTilt_->Label2[1];
    environment.PanDesLED = panTilt_->PanDesLED;
    environment.TiltDesLED = panTilt_->TiltDesLED;
    environment.SSTab1 = tabs_;
    environment.videoBlankChecked = videoBlankReader(this);
    const PositioningPages positioning = installPositioning(context_, environment, this);
    positionReport_->registerLateRefresh();
    new CameraFeatures(context_, jog_, *camera_,
                       positioning.tours->findChild<QPushButton*>(QStringLiteral("TourHelpBut")),
                       this);
    if (positioning.movementMonitor != nullptr) {
        panTilt_->MovementMonitorSlot->addWidget(positioning.movementMonitor);
    }
    const SetupPages setup = installSetupFeatures(context_, this);

    QWidget* pages[kPageCount] = {
        panTilt_, positioning.presets, positioning.offsets, positioning.tours,
        camera_,  setup.video,         setup.setup,         setup.factory};
    for (int i = 0; i < kPageCount; ++i) {
        QWidget* page = pages[i] != nullptr ? pages[i] : placeholderPage(tabs_, kPageCaptions[i]);
        // The jog box and the status lamps never scroll away; another page
        // scrolls rather than make the window taller than the screen.
        tabs_->addTab(i == pageIndex(Page::PanTilt) ? page : scrollingWhenSqueezed(page),
                      QString::fromLatin1(kPageCaptions[i]));
    }

    ConnectionView view;
    view.window = this;
    view.StartBut = startBut_;
    view.Label2 = panTilt_->Label2;
    view.SSTab1 = tabs_;
    view.setTitle = [this](const QString& title) { setWindowTitle(title); };
    view.showFirstPage = [this] { positionReport_->SSTab1_Click(pageIndex(Page::PanTilt)); };
    connection_ = new ConnectionSequence(context_, *portSelection_, view, this);

    onEvent(state_, startBut_, &QPushButton::clicked, this, "StartBut_Click",
            [this] { return connection_->StartBut_Click(); });
    onEvent(state_, stopBut_, &QPushButton::clicked, this, "StopBut_Click",
            [this] { connection_->StopBut_Click(); });
    onEvent(state_, resetBut_, &QPushButton::clicked, this, "ResetBut_Click",
            [this] { connection_->ResetBut_Click(); });
    connect(exitBut_, &QPushButton::clicked, this, [this] { close(); });
    onEvent(state_, reinitialize_, &QAction::triggered, this, "Reinitialize",
            [this] { return connection_->Reinitialize(); });
    // The start button stays enabled: its picture is the link lamp, and a
    // disabled button would grey it out. A click while connected does nothing.
    connect(connection_, &ConnectionSequence::finished, this,
            [this](bool online) { reinitialize_->setEnabled(online); });
    positionReport_->watchPageChanges();
    installCommissioning(context_, menuBar()->findChild<QMenu*>(QStringLiteral("UnitMenu")),
                         *portSelection_, *port_, *connection_);

    rotator_ = new SessionRotator(
        session_, [this] { return QStringLiteral("COM%1").arg(portSelection_->comPort()); }, this);
    // Reports from an earlier connection say nothing about the unit now.
    connect(startBut_, &QPushButton::clicked, rotator_, &SessionRotator::forgetPosition);
    networkControl_ = new NetworkControl(*rotator_, rotctldAction_, rotctldLabel_, this);
    connect(networkControl_, &NetworkControl::failed, this,
            [this](const QString& message) { statusBar()->showMessage(message, 15000); });
    remoteBridges_ = new RemoteBridges(session_, this);
    connect(remoteControlAction_, &QAction::triggered, this, [this] {
        if (remoteControlDialog_ == nullptr) {
            remoteControlDialog_ =
                new RemoteControlDialog(*remoteBridges_, *networkControl_, messages_, this);
        }
        remoteControlDialog_->show();
        remoteControlDialog_->raise();
    });
    installInputFeatures();

    rangePlot_ = new RangePlot;
    new RangePlotFeed(
        session_, *rangePlot_,
        [this](const QString& message) { statusBar()->showMessage(message, 15000); }, this);
    // From a 1600-pixel screen the plot is a column of the Pan/Tilt page.
    rangePlotPlace_ = new PagePlace(
        *rangePlot_, *panTilt_->RangePlotSlot, *tabs_, *rangePlotAction_, *this,
        {QStringLiteral("RangePlot"), QStringLiteral("Range Plot"), QSize(640, 400), 1560});
    videoWiring_ = new VideoWiring(
        session_, *panTilt_->VideoSlot, *tabs_, *videoAction_, *this,
        [this](const QString& message) { statusBar()->showMessage(message, 15000); });
    // A stream's faults and the files saved go to the Line Log's events.
    connect(videoWiring_, &VideoWiring::eventOccurred, &state_, &FormState::reportFault);
    // What each preset looks at, kept for the unit on this line at this address.
    presetThumbnails_ = new PresetThumbnails(
        session_, [this] { return pictureToKeep(videoWiring_->liveVideo()); },
        [this] { return unitFolderName(comPortDevice(portSelection_->comPort()), state_.UnitId); },
        this);
    auto* thumbnailFeed = new ThumbnailFeed(
        session_, *presetThumbnails_, *static_cast<PresetsPage*>(positioning.presets),
        *static_cast<ToursPage*>(positioning.tours), *rangePlot_, this);
    connect(portSelection_, &PortSelection::titleChanged, thumbnailFeed,
            &ThumbnailFeed::followUnit);
}

void VornixU::installInputFeatures() {
    input_ = installInput(context_, jog_, jogSources_, *this, *tabs_, this);
    // Stop means every jog too, whoever steers; held keys and sticks must
    // come back to rest first.
    connect(stopBut_, &QPushButton::clicked, &jogSources_, &JogSources::stopAll);

    connect(&jogSources_, &JogSources::ownerChanged, this, [this](std::optional<JogSource> owner) {
        const QString notice =
            QStringLiteral("The operator has control: network moves are refused while jogging.");
        const bool remote = remoteBridges_ != nullptr &&
                            (networkControl_->server().isListening() ||
                             remoteBridges_->state(RemoteBridges::Kind::Onvif).running ||
                             remoteBridges_->state(RemoteBridges::Kind::Visca).running ||
                             remoteBridges_->state(RemoteBridges::Kind::PelcoD).running);
        if (owner && isOperatorSource(*owner) && remote) {
            statusBar()->showMessage(notice);
        } else if (statusBar()->currentMessage() == notice) {
            statusBar()->clearMessage();
        }
    });
}

void VornixU::showLamp(LinkLamp lamp) {
    switch (lamp) {
        case LinkLamp::Good:
            startBut_->setIcon(goodLinkPicture());
            startBut_->setProperty("lamp", QStringLiteral("good"));
            break;
        case LinkLamp::Fault:
            startBut_->setIcon(faultLinkPicture());
            startBut_->setProperty("lamp", QStringLiteral("fault"));
            break;
        case LinkLamp::None:
            startBut_->setIcon(idleLinkPicture());
            startBut_->setProperty("lamp", QStringLiteral("none"));
            break;
    }
}

QString VornixU::Form_Load() {
    state_.Online = false;
    state_.ReplyReceived = false;
    state_.LinkFault = false;
    for (LedDisplay* led : {panTilt_->PanDesLED, panTilt_->TiltDesLED, panTilt_->PanPosLED,
                            panTilt_->TiltPosLED, panTilt_->PDesLed, panTilt_->TDesLed}) {
        led->setValue(0.0);
    }
    tabs_->setEnabled(false);
    return portSelection_->load();
}

void VornixU::closeEvent(QCloseEvent* event) {
    // Closing the window is the exit button: the unit is told to stop first,
    // and the window closes once it has been (or the line gave up). With no
    // port open that is at once.
    if (!exiting_) {
        exiting_ = true;
        const FlagScope closing(inCloseEvent_);
        static_cast<void>(closeAfterExit());  // runs to its end on its own
    }
    if (!exited_) {
        event->ignore();
        return;
    }
    event->accept();
    QMainWindow::closeEvent(event);
}

QCoro::Task<> VornixU::closeAfterExit() {
    co_await guardedRun(state_, "ExitBut_Click", connection_->ExitBut_Click());
    exited_ = true;
    if (!inCloseEvent_) {
        close();
    }
}

}  // namespace halvex
