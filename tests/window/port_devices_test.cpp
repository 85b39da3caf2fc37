#include <gtest/gtest.h>

#include <QAction>
#include <QDialog>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>
#include <QRadioButton>

#include "connection/port_selection.h"
#include "protocol/port_map.h"
#include "protocol/serial_devices.h"
#include "tests/support/console_rig.h"

namespace halvex::testing {
namespace {

const QString kAdapter =
    QStringLiteral("/dev/serial/by-id/usb-FTDI_FT232R_USB_UART_A10K3XYZ-if00-port0");

// The whole console, offline, seeing two serial devices.
struct DeviceRig : ConsoleRig {
    DeviceRig() { devices().setDeviceSource(twoDevices); }
    static QList<SerialDevice> twoDevices() {
        return {{kAdapter, "/dev/ttyUSB0", "FT232R USB UART", "FTDI", "A10K3XYZ"},
                {"/dev/ttyACM0", "/dev/ttyACM0", QString(), QString(), QString()}};
    }
    DeviceMenu& devices() { return window->findChild<PortSelection*>()->deviceMenu(); }
    QAction* action(const char* name) {
        QAction* found = find<QAction>(QLatin1String(name));
        EXPECT_NE(found, nullptr) << name;
        return found;
    }
    QString menuTitle() { return find<QMenu>(QStringLiteral("MenuDevice"))->title(); }
};

TEST(PortDevices, DeviceChosenForCom1SurvivesARestartUnlessTheEnvironmentSaysOtherwise) {
    {
        DeviceRig first;
        EXPECT_TRUE(first.action("MenuDeviceDefault")->isChecked());
        EXPECT_EQ(first.action("MenuDevice_0")->text(),
                  kAdapter + QStringLiteral("  FT232R USB UART, FTDI, serial A10K3XYZ"));
        first.action("MenuDevice_0")->trigger();
        EXPECT_EQ(first.action("MenuCOM_1")->text(), QStringLiteral("COM1   (%1)").arg(kAdapter));
        EXPECT_FALSE(first.action("MenuDeviceDefault")->isChecked());
        // The port number and the settings file are what they always were.
        EXPECT_TRUE(first.window->windowTitle().endsWith(" Using COM1 At 9600 Offline"));
    }
    {
        DeviceRig second;
        EXPECT_EQ(comPortDevice(1), kAdapter);
        EXPECT_TRUE(second.action("MenuDevice_0")->isChecked());
        // Unplugged: the choice is still shown, marked as not present.
        second.devices().setDeviceSource([] { return QList<SerialDevice>(); });
        EXPECT_TRUE(second.action("MenuDeviceKept")->isChecked());
        EXPECT_FALSE(second.action("MenuDeviceKept")->isEnabled());
        EXPECT_TRUE(second.action("MenuDeviceKept")->text().startsWith(kAdapter));
        // The menu follows the chosen COM number; Default forgets the choice.
        second.action("MenuCOM_3")->trigger();
        EXPECT_EQ(second.menuTitle(), QStringLiteral("Device For COM3"));
        EXPECT_EQ(second.action("MenuDeviceDefault")->text(),
                  QStringLiteral("Default (/dev/ttyS2)"));
        second.action("MenuCOM_1")->trigger();
        second.action("MenuDeviceDefault")->trigger();
        EXPECT_EQ(comPortDevice(1), QStringLiteral("/dev/ttyS0"));
        EXPECT_EQ(second.action("MenuCOM_1")->text(), QStringLiteral("COM1   (/dev/ttyS0)"));
    }
    setComPortDevice(1, kAdapter);
    // The environment names the other device present: it is used, no menu
    // entry claims to be the choice, and no other device is offered.
    qputenv("HALVEX_COM1", "/dev/ttyACM0");
    {
        DeviceRig third;
        EXPECT_EQ(comPortDevice(1), QStringLiteral("/dev/ttyACM0"));
        EXPECT_EQ(third.action("MenuCOM_1")->text(), QStringLiteral("COM1   (/dev/ttyACM0)"));
        EXPECT_EQ(third.action("MenuDeviceEnvironment")->text(),
                  QStringLiteral("Set by HALVEX_COM1: /dev/ttyACM0"));
        for (const char* entry : {"MenuDevice_0", "MenuDevice_1", "MenuNetworkDevice"}) {
            EXPECT_FALSE(third.action(entry)->isEnabled()) << entry;
            EXPECT_FALSE(third.action(entry)->isChecked()) << entry;
        }
    }
    qunsetenv("HALVEX_COM1");
    setComPortDevice(1, QString());
}

// "Network Device For COMn" as the operator fills it in.
struct NetworkDialog {
    explicit NetworkDialog(DeviceRig& rig) : dialog(rig.find<QDialog>("NetworkDeviceDialog")) {}
    template <typename T>
    T* at(const char* name) const {
        T* found = dialog != nullptr ? dialog->findChild<T*>(QLatin1String(name)) : nullptr;
        EXPECT_NE(found, nullptr) << name;
        return found;
    }

    QDialog* dialog;
    QLineEdit* host = at<QLineEdit>("NetHostBox");
    QLineEdit* port = at<QLineEdit>("NetPortBox");
    QRadioButton* raw = at<QRadioButton>("NetRawOption");
    QRadioButton* rfc2217 = at<QRadioButton>("NetRfc2217Option");
    QPushButton* ok = at<QPushButton>("NetOkBut");
    QLabel* says = at<QLabel>("NetDeviceLabel");
};

TEST(PortDevices, NetworkDeviceIsTypedCheckedAndKeptLikeALocalOne) {
    DeviceRig rig;
    rig.action("MenuNetworkDevice")->trigger();
    NetworkDialog typed(rig);
    ASSERT_NE(typed.dialog, nullptr);
    EXPECT_EQ(typed.dialog->windowTitle(), QStringLiteral("Network Device For COM1"));
    EXPECT_EQ(typed.dialog->parentWidget(), rig.window.get()) << "not on the menu, gone by now";
    EXPECT_TRUE(typed.rfc2217->isChecked());
    struct Step {
        const char* host;
        const char* port;
        const char* says;
    };
    for (const Step& step :
         {Step{"", "", "Enter the device server's name or address."},
          Step{" 10.0.0.5 ", "70000", "Enter a port number from 1 to 65535."},
          Step{" 10.0.0.5 ", "2001", "COM1 will open rfc2217://10.0.0.5:2001"}}) {
        typed.host->setText(QString::fromLatin1(step.host));
        typed.port->setText(QString::fromLatin1(step.port));
        EXPECT_EQ(typed.says->text(), QString::fromLatin1(step.says)) << step.host;
        EXPECT_EQ(typed.ok->isEnabled(), typed.says->text().startsWith("COM1 will open"))
            << step.host;
    }
    typed.raw->click();
    EXPECT_EQ(typed.says->text(), QStringLiteral("COM1 will open socket://10.0.0.5:2001"));
    typed.rfc2217->click();
    typed.ok->click();
    EXPECT_EQ(comPortDevice(1), QStringLiteral("rfc2217://10.0.0.5:2001"));
    EXPECT_EQ(rig.action("MenuCOM_1")->text(), QStringLiteral("COM1   (rfc2217://10.0.0.5:2001)"));
    EXPECT_TRUE(rig.action("MenuDeviceNetwork")->isChecked());
    EXPECT_EQ(rig.action("MenuDeviceNetwork")->text(),
              QStringLiteral("rfc2217://10.0.0.5:2001  (network)"));
    EXPECT_EQ(rig.find<QAction>("MenuDeviceKept"), nullptr) << "a network device is no adapter";
    rig.action("MenuCOM_2")->trigger();  // another COM number has its own
    EXPECT_EQ(rig.find<QAction>("MenuDeviceNetwork"), nullptr);
    setComPortDevice(1, QString());
}

TEST(SerialDevices, StableNameIsTheByIdLinkToTheNode) {
    QTemporaryDir dir;
    const QString node = dir.filePath(QStringLiteral("ttyUSB7"));
    const QString other = dir.filePath(QStringLiteral("ttyUSB8"));
    for (const QString& path : {node, other}) {
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    }
    ASSERT_TRUE(QDir(dir.path()).mkdir(QStringLiteral("by-id")));
    const QString byId = dir.filePath(QStringLiteral("by-id"));
    const QString link = byId + QStringLiteral("/usb-Acme_Serial_42-if00");
    ASSERT_TRUE(QFile::link(QStringLiteral("../ttyUSB7"), link));
    EXPECT_EQ(stableDeviceName(node, byId), link);
    EXPECT_EQ(stableDeviceName(other, byId), other);  // no link: the node itself
}

}  // namespace
}  // namespace halvex::testing
