#include "ui/vornixu.h"

#include <QHBoxLayout>
#include <QMenuBar>
#include <QStatusBar>
#include <QVBoxLayout>

#include "protocol/qt_serial_port.h"
#include "ui/data_watch.h"
#include "ui/lamp_pictures.h"
#include "ui/messages.h"

namespace halvex {

namespace {
// Page captions of SSTab1, in order; other code relies on the indices
// (0 "Pan/Tilt", 3 "Tours").
const char* const kPageCaptions[] = {"Pan/Tilt", "Presets", "Offsets", "Tours",
                                     "Camera",   "Video",   "Setup",   "Factory"};
}  // namespace

VornixU::VornixU(SerialPort* port, QWidget* parent)
    : QMainWindow(parent),
      link_(state_),
      receiver_(state_, link_),
      port_(port != nullptr ? port : new QtSerialPort(this)) {
    setObjectName(QStringLiteral("VornixU"));
    if (port_->parent() == nullptr) {
        port_->setParent(this);
    }
    link_.setPort(port_);
    receiver_.attachPort(port_);

    dataWatch_ = new DataWatch(this);
    dataWatch_->setWindowFlag(Qt::Window);
    connect(&link_, &Link::frameSent, dataWatch_, &DataWatch::showSentFrame);
    connect(&receiver_, &Receiver::frameReceived, dataWatch_, &DataWatch::showReceivedFrame);

    buildMenus();
    buildCentralArea();

    connect(&receiver_, &Receiver::receivingIdChanged, label25_, &QLabel::setText);
    connect(&state_, &FormState::lampChanged, this, &VornixU::showLamp);
    connect(&state_, &FormState::faultReported, this,
            [this](const QString& message) { statusBar()->showMessage(message, 15000); });
    connect(portSelection_, &PortSelection::titleChanged, this, &QWidget::setWindowTitle);
    connect(portSelection_, &PortSelection::settingsError, this, [this](const QString& message) {
        Messages::exclamation(this, QStringLiteral("Settings File"), message);
    });
    resize(960, 640);
}

VornixU::~VornixU() {
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

    QMenu* viewMenu = menuBar()->addMenu(QStringLiteral("&View"));
    QAction* watch = viewMenu->addAction(QStringLiteral("&Data Watch"));
    watch->setObjectName(QStringLiteral("MenuDataWatch"));
    connect(watch, &QAction::triggered, this, [this] {
        dataWatch_->show();
        dataWatch_->raise();
    });
}

void VornixU::buildCentralArea() {
    auto* central = new QWidget(this);
    auto* layout = new QVBoxLayout(central);

    auto* top = new QHBoxLayout;
    startBut_ = new QPushButton(QStringLiteral("Start"), central);
    startBut_->setObjectName(QStringLiteral("StartBut"));
    startBut_->setIcon(idleLinkPicture());
    startBut_->setIconSize(QSize(24, 24));
    startBut_->setProperty("lamp", QStringLiteral("none"));
    top->addWidget(startBut_);
    label25_ = new QLabel(central);
    label25_->setObjectName(QStringLiteral("Label25"));
    top->addWidget(label25_);
    top->addStretch();
    layout->addLayout(top);

    tabs_ = new QTabWidget(central);
    tabs_->setObjectName(QStringLiteral("SSTab1"));
    for (const char* caption : kPageCaptions) {
        auto* page = new QWidget(tabs_);
        page->setObjectName(QStringLiteral("Page_") + QString::fromLatin1(caption).remove('/'));
        tabs_->addTab(page, QString::fromLatin1(caption));
    }
    layout->addWidget(tabs_, 1);
    setCentralWidget(central);
    statusBar()->setObjectName(QStringLiteral("StatusBar"));
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
    tabs_->setEnabled(false);
    return portSelection_->load();
}

}  // namespace halvex
