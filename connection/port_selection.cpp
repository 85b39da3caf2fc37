#include "connection/port_selection.h"

#include "protocol/port_map.h"

namespace halvex {

const QStringList PortSelection::BaudTextTable = {QStringLiteral("Dis"),  QStringLiteral("9.6"),
                                                  QStringLiteral("14.4"), QStringLiteral("19.2"),
                                                  QStringLiteral("28.8"), QStringLiteral("38.4"),
                                                  QStringLiteral("57.6"), QStringLiteral("115.2")};

const QStringList PortSelection::SerialFormatTable = {
    QStringLiteral("8/N/1"), QStringLiteral("7/N/1"), QStringLiteral("7/E/1"),
    QStringLiteral("7/O/1"), QStringLiteral("8/N/2"), QStringLiteral("7/N/2"),
    QStringLiteral("7/E/2"), QStringLiteral("7/O/2")};

PortSelection::PortSelection(QMenu* portMenu, QMenu* speedMenu, QObject* parent) : QObject(parent) {
    setObjectName(QStringLiteral("PortSelection"));
    for (int n = 1; n <= 8; ++n) {
        auto* action = portMenu->addAction(QString());
        action->setObjectName(QStringLiteral("MenuCOM_%1").arg(n));
        action->setCheckable(true);
        connect(action, &QAction::triggered, this, [this, n] { MenuCOM_Click(n); });
        MenuCOM[static_cast<std::size_t>(n)] = action;
    }
    showDevices();
    portMenu->addSeparator();
    deviceMenu_ = new DeviceMenu(
        portMenu, [this] { return ComPort; }, this);
    connect(deviceMenu_, &DeviceMenu::mappingChanged, this, &PortSelection::showDevices);
    connect(portMenu, &QMenu::aboutToShow, this, &PortSelection::showDevices);
    for (int i = 0; i < static_cast<int>(kMenuSpeeds.size()); ++i) {
        auto* action =
            speedMenu->addAction(QString::number(kMenuSpeeds[static_cast<std::size_t>(i)]));
        action->setObjectName(QStringLiteral("MenuBPS_%1").arg(i));
        action->setCheckable(true);
        connect(action, &QAction::triggered, this, [this, i] { MenuBPS_Click(i); });
        MenuBPS[static_cast<std::size_t>(i)] = action;
    }
}

void PortSelection::showDevices() {
    for (int n = 1; n <= 8; ++n) {
        MenuCOM[static_cast<std::size_t>(n)]->setText(
            QStringLiteral("COM%1   (%2)").arg(n).arg(comPortDevice(n)));
    }
}

QString PortSelection::titlePrefix() {
    return QStringLiteral("Halvex Remote Control Emulator Ver ") +
           QString::number(static_cast<double>(ProgramVersion), 'f', 2);
}

QString PortSelection::title(const QString& suffix) const {
    return titlePrefix() + QStringLiteral(" Using COM%1 At %2").arg(ComPort).arg(BaudRate) + suffix;
}

QString PortSelection::load(const SettingsFile& file) {
    file_ = file;
    emit titleChanged(titlePrefix());

    QString error;
    PortSettings stored;  // a missing file is made with the defaults
    if (!file_.exists()) {
        file_.write(stored, error);
    } else {
        stored = file_.read(error).value_or(PortSettings{});
    }
    ComPort = stored.comPort;
    BaudRate = stored.baudRate;

    UncheckComMenu();
    if (ComPort < 1 || ComPort > 8) {
        ComPort = 1;  // in memory only; the file keeps what it says
    }
    MenuCOM[static_cast<std::size_t>(ComPort)]->setChecked(true);
    deviceMenu_->refresh();

    UncheckBaudMenu();
    if (BaudRate == 0) {
        BaudRate = 9600;
    }
    // A speed that is not on the menu is kept as it is and nothing is checked.
    for (std::size_t i = 0; i < kMenuSpeeds.size(); ++i) {
        if (kMenuSpeeds[i] == BaudRate) {
            MenuBPS[i]->setChecked(true);
        }
    }
    emit titleChanged(title(QStringLiteral(" Offline")));
    return error;
}

void PortSelection::UncheckComMenu() {
    for (int n = 1; n <= 8; ++n) {
        MenuCOM[static_cast<std::size_t>(n)]->setChecked(false);
    }
}

void PortSelection::UncheckBaudMenu() {
    for (QAction* action : MenuBPS) {
        action->setChecked(false);
    }
}

void PortSelection::MenuCOM_Click(int index) {
    if (index < 1 || index > 8) {
        return;
    }
    UncheckComMenu();
    MenuCOM[static_cast<std::size_t>(index)]->setChecked(true);
    ComPort = index;
    deviceMenu_->refresh();
    save();
    // No state suffix after a menu change: " Offline" drops from the title.
    emit titleChanged(title(QString()));
}

void PortSelection::MenuBPS_Click(int index) {
    if (index < 0 || index >= static_cast<int>(kMenuSpeeds.size())) {
        return;
    }
    UncheckBaudMenu();
    MenuBPS[static_cast<std::size_t>(index)]->setChecked(true);
    BaudRate = kMenuSpeeds[static_cast<std::size_t>(index)];
    save();
    emit titleChanged(title(QString()));
}

void PortSelection::save() {
    QString error;
    PortSettings settings;
    settings.comPort = static_cast<std::int16_t>(ComPort);
    settings.baudRate = BaudRate;
    if (!file_.write(settings, error)) {
        emit settingsError(error);
    }
}

}  // namespace halvex
