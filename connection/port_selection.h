#pragma once

#include <QAction>
#include <QMenu>
#include <QObject>
#include <QStringList>
#include <array>
#include <functional>

#include "connection/device_menu.h"
#include "connection/settings_file.h"

namespace halvex {

// The port and speed the link will use, kept in the settings file and shown
// as check marks in the Port and Speed menus and in the window title.
class PortSelection : public QObject {
    Q_OBJECT
  public:
    static constexpr float ProgramVersion = 2.0f;
    static constexpr std::array<qint32, 6> kMenuSpeeds = {9600, 14400, 19200, 28800, 38400, 57600};

    // Builds the menu entries MenuCOM_1..8 and MenuBPS_0..5 into the menus.
    PortSelection(QMenu* portMenu, QMenu* speedMenu, QObject* parent = nullptr);

    // Reads (or first creates) the settings file, checks the menus and shows
    // the offline title. Returns an error sentence when the file was unusable;
    // the defaults are then used and the file is left as it is.
    QString load(const SettingsFile& file = SettingsFile());

    void MenuCOM_Click(int index);
    void MenuBPS_Click(int index);

    int comPort() const { return ComPort; }
    // "Device For COMn": maps the chosen COM number to a device present.
    DeviceMenu& deviceMenu() { return *deviceMenu_; }
    qint32 baudRate() const { return BaudRate; }

    // "Halvex Remote Control Emulator Ver 2.00"
    static QString titlePrefix();
    // prefix + " Using COM1 At 9600" + suffix
    QString title(const QString& suffix) const;

    // Speed and character-format texts of a camera port, by index.
    static const QStringList BaudTextTable;
    static const QStringList SerialFormatTable;

  signals:
    void titleChanged(const QString& title);
    void settingsError(const QString& message);

  private:
    // Shows beside each COM entry the device it opens.
    void showDevices();
    void UncheckComMenu();
    void UncheckBaudMenu();
    void save();

    SettingsFile file_;
    int ComPort = 1;
    qint32 BaudRate = 9600;
    std::array<QAction*, 9> MenuCOM{};  // entries 1..8
    std::array<QAction*, 6> MenuBPS{};
    DeviceMenu* deviceMenu_ = nullptr;
};

}  // namespace halvex
