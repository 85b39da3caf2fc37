#include "connection/device_menu.h"

#include "connection/network_device_dialog.h"
#include "protocol/port_map.h"

namespace halvex {

DeviceMenu::DeviceMenu(QMenu* portMenu, std::function<int()> comPort, QObject* parent)
    : QObject(parent),
      menu_(portMenu->addMenu(QString())),
      comPort_(std::move(comPort)),
      devices_(serialDevicesPresent) {
    menu_->setObjectName(QStringLiteral("MenuDevice"));
    connect(menu_, &QMenu::aboutToShow, this, &DeviceMenu::refresh);
    refresh();
}

void DeviceMenu::setDeviceSource(DeviceSource source) {
    devices_ = std::move(source);
    refresh();
}

QAction* DeviceMenu::addEntry(const QString& text, const QString& name, bool checked) {
    QAction* action = menu_->addAction(text);
    action->setObjectName(name);
    action->setCheckable(true);
    action->setChecked(checked);
    return action;
}

void DeviceMenu::refresh() {
    const int port = comPort_();
    const PortMapping mapping = comPortMapping(port);
    menu_->setTitle(QStringLiteral("Device For COM%1").arg(port));
    // Not clear(): this may run from one of these entries' own triggered
    // signal, which must not delete its sender under it.
    for (QAction* old : menu_->actions()) {
        menu_->removeAction(old);
        old->setObjectName(QString());
        old->deleteLater();
    }

    const bool fromEnvironment = mapping.source == PortSource::Environment;
    if (fromEnvironment) {
        QAction* note = menu_->addAction(
            QStringLiteral("Set by HALVEX_COM%1: %2").arg(port).arg(mapping.device));
        note->setObjectName(QStringLiteral("MenuDeviceEnvironment"));
        note->setEnabled(false);
        menu_->addSeparator();
    }

    const QList<SerialDevice> devices = devices_ ? devices_() : QList<SerialDevice>();
    const bool networkChosen =
        mapping.source == PortSource::Settings && portKindOf(mapping.device) != PortKind::Local;
    bool chosenPresent = mapping.source != PortSource::Settings || networkChosen;
    for (int i = 0; i < devices.size(); ++i) {
        const SerialDevice& device = devices[i];
        const bool chosen =
            !fromEnvironment && (mapping.device == device.path || mapping.device == device.node);
        chosenPresent = chosenPresent || chosen;
        QAction* entry = addEntry(device.label(), QStringLiteral("MenuDevice_%1").arg(i), chosen);
        entry->setEnabled(!fromEnvironment);
        const QString path = device.path;
        connect(entry, &QAction::triggered, this, [this, path] { choose(path); });
    }
    if (devices.isEmpty()) {
        QAction* none = menu_->addAction(QStringLiteral("No serial devices found"));
        none->setObjectName(QStringLiteral("MenuDeviceNone"));
        none->setEnabled(false);
    }
    if (!chosenPresent) {
        // Kept from an earlier run; the adapter is not plugged in now.
        QAction* kept = addEntry(QStringLiteral("%1  (not present)").arg(mapping.device),
                                 QStringLiteral("MenuDeviceKept"), true);
        kept->setEnabled(false);
    }
    menu_->addSeparator();
    if (networkChosen) {
        QAction* chosen = addEntry(QStringLiteral("%1  (network)").arg(mapping.device),
                                   QStringLiteral("MenuDeviceNetwork"), true);
        connect(chosen, &QAction::triggered, this, &DeviceMenu::askForNetworkDevice);
    }
    QAction* network = menu_->addAction(QStringLiteral("Network Device..."));
    network->setObjectName(QStringLiteral("MenuNetworkDevice"));
    network->setEnabled(!fromEnvironment);
    connect(network, &QAction::triggered, this, &DeviceMenu::askForNetworkDevice);
    QAction* standard =
        addEntry(QStringLiteral("Default (/dev/ttyS%1)").arg(port - 1),
                 QStringLiteral("MenuDeviceDefault"), mapping.source == PortSource::Default);
    standard->setEnabled(!fromEnvironment);
    connect(standard, &QAction::triggered, this, [this] { choose(QString()); });
}

void DeviceMenu::askForNetworkDevice() {
    if (dialog_ != nullptr) {
        dialog_->raise();
        return;
    }
    // On the main window: a menu is gone by the time the dialog shows.
    QWidget* window = menu_;
    while (window->parentWidget() != nullptr) {
        window = window->parentWidget();
    }
    const int port = comPort_();
    dialog_ = new NetworkDeviceDialog(port, parseNetworkDevice(comPortDevice(port)), window);
    dialog_->setAttribute(Qt::WA_DeleteOnClose);
    connect(dialog_, &QDialog::accepted, this, [this, port] {
        if (const std::optional<NetworkDevice> device = dialog_->device()) {
            setComPortDevice(port, device->toString());
            refresh();
            emit mappingChanged();
        }
    });
    // Window-modal and without a loop of its own: the console keeps running.
    dialog_->open();
}

void DeviceMenu::choose(QString device) {
    setComPortDevice(comPort_(), device);
    refresh();
    emit mappingChanged();
}

}  // namespace halvex
