#pragma once

#include <QList>
#include <QMenu>
#include <QObject>
#include <QPointer>
#include <functional>

#include "protocol/serial_devices.h"

namespace halvex {

class NetworkDeviceDialog;

// The Port menu's "Device For COMn" submenu: the serial devices present, one
// of which the chosen COM number can be mapped to, or a port on a device
// server ("Network Device..."). The choice is kept in the user's settings;
// $HALVEX_COM<n> still wins over it.
class DeviceMenu : public QObject {
    Q_OBJECT
  public:
    using DeviceSource = std::function<QList<SerialDevice>()>;

    // Adds the submenu to `portMenu`; `comPort` tells which COM number it maps.
    DeviceMenu(QMenu* portMenu, std::function<int()> comPort, QObject* parent = nullptr);

    // Where the devices come from (QSerialPortInfo unless told otherwise).
    void setDeviceSource(DeviceSource source);
    // Rebuilds the entries; also runs whenever the submenu is about to show,
    // so an adapter plugged in meanwhile is there.
    void refresh();

  signals:
    void mappingChanged();

  private:
    QAction* addEntry(const QString& text, const QString& name, bool checked);
    void choose(QString device);
    // Opens "Network Device For COMn"; OK maps COMn to what it names.
    void askForNetworkDevice();

    QMenu* menu_;
    std::function<int()> comPort_;
    DeviceSource devices_;
    QPointer<NetworkDeviceDialog> dialog_;
};

}  // namespace halvex
