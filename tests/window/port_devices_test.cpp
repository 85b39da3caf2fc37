#include <gtest/gtest.h>

#include <QAction>
#include <QDir>
#include <QFile>
#include <QMenu>
#include <QSettings>
#include <QTemporaryDir>

#include "connection/port_selection.h"
#include "protocol/port_map.h"
#include "protocol/serial_devices.h"
#include "tests/support/scripted_unit.h"
#include "tests/support/test_port.h"
#include "window/vornixu.h"

using namespace halvex;
using namespace halvex::testing;

namespace {
const QString kAdapter =
    QStringLiteral("/dev/serial/by-id/usb-FTDI_FT232R_USB_UART_A10K3XYZ-if00-port0");

QList<SerialDevice> twoDevices() {
    return {{kAdapter, QStringLiteral("/dev/ttyUSB0"), QStringLiteral("FT232R USB UART"),
             QStringLiteral("FTDI"), QStringLiteral("A10K3XYZ")},
            {QStringLiteral("/dev/ttyACM0"), QStringLiteral("/dev/ttyACM0"), QString(), QString(),
             QString()}};
}

// One run of the console in its own folder, offline.
struct ConsoleRun {
    explicit ConsoleRun(ScriptedUnit& unit)
        : window(new TestPort(&unit), [](QWidget*, const Message&) { return true; }) {
        window.Form_Load();
        window.findChild<PortSelection*>()->deviceMenu().setDeviceSource(twoDevices);
    }
    QAction* action(const char* name) {
        QAction* found = window.findChild<QAction*>(QLatin1String(name));
        EXPECT_NE(found, nullptr) << name;
        return found;
    }
    VornixU window;
};

class PortDevicesTest : public ::testing::Test {
  protected:
    void SetUp() override {
        previous_ = QDir::currentPath();
        QDir::setCurrent(dir_.path());
    }
    void TearDown() override {
        setComPortDevice(1, QString());
        qunsetenv("HALVEX_COM1");
        QDir::setCurrent(previous_);
    }
    QTemporaryDir dir_;
    QString previous_;
    ScriptedUnit unit_;
};
}  // namespace

TEST_F(PortDevicesTest, DeviceChosenForCom1SurvivesARestart) {
    {
        ConsoleRun first(unit_);
        EXPECT_EQ(first.window.findChild<QMenu*>(QStringLiteral("MenuDevice"))->title(),
                  QStringLiteral("Device For COM1"));
        EXPECT_TRUE(first.action("MenuDeviceDefault")->isChecked());
        EXPECT_EQ(first.action("MenuDevice_0")->text(),
                  kAdapter + QStringLiteral("  FT232R USB UART, FTDI, serial A10K3XYZ"));
        EXPECT_EQ(first.action("MenuDevice_1")->text(), QStringLiteral("/dev/ttyACM0"));
        first.action("MenuDevice_0")->trigger();
        EXPECT_EQ(first.action("MenuCOM_1")->text(), QStringLiteral("COM1   (%1)").arg(kAdapter));
        EXPECT_TRUE(first.action("MenuDevice_0")->isChecked());
        EXPECT_FALSE(first.action("MenuDeviceDefault")->isChecked());
        // The port number and the settings file are what they always were.
        EXPECT_EQ(first.window.windowTitle(),
                  QStringLiteral("Halvex Remote Control Emulator Ver 2.00 Using COM1 At 9600 "
                                 "Offline"));
    }
    ConsoleRun second(unit_);
    EXPECT_EQ(comPortDevice(1), kAdapter);
    EXPECT_EQ(second.action("MenuCOM_1")->text(), QStringLiteral("COM1   (%1)").arg(kAdapter));
    EXPECT_TRUE(second.action("MenuDevice_0")->isChecked());
    EXPECT_EQ(second.action("MenuCOM_2")->text(), QStringLiteral("COM2   (/dev/ttyS1)"));

    // Unplugged: the choice is still shown, marked as not present.
    second.window.findChild<PortSelection*>()->deviceMenu().setDeviceSource(
        [] { return QList<SerialDevice>(); });
    EXPECT_TRUE(second.action("MenuDeviceKept")->isChecked());
    EXPECT_TRUE(second.action("MenuDeviceKept")->text().startsWith(kAdapter));

    // The menu follows the chosen COM number; Default forgets the choice.
    second.action("MenuCOM_3")->trigger();
    EXPECT_EQ(second.window.findChild<QMenu*>(QStringLiteral("MenuDevice"))->title(),
              QStringLiteral("Device For COM3"));
    second.action("MenuCOM_1")->trigger();
    second.action("MenuDeviceDefault")->trigger();
    EXPECT_EQ(comPortDevice(1), QStringLiteral("/dev/ttyS0"));
    EXPECT_EQ(second.action("MenuCOM_1")->text(), QStringLiteral("COM1   (/dev/ttyS0)"));
}

TEST_F(PortDevicesTest, EnvironmentVariableStillWinsOverTheChosenDevice) {
    setComPortDevice(1, kAdapter);
    qputenv("HALVEX_COM1", "/tmp/halvex-unit");
    ConsoleRun run(unit_);
    EXPECT_EQ(comPortDevice(1), QStringLiteral("/tmp/halvex-unit"));
    EXPECT_EQ(run.action("MenuCOM_1")->text(), QStringLiteral("COM1   (/tmp/halvex-unit)"));
    EXPECT_EQ(run.action("MenuDeviceEnvironment")->text(),
              QStringLiteral("Set by HALVEX_COM1: /tmp/halvex-unit"));
    EXPECT_FALSE(run.action("MenuDevice_0")->isEnabled());
    EXPECT_FALSE(run.action("MenuDevice_0")->isChecked());
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
    EXPECT_EQ(stableDeviceName(dir.filePath(QStringLiteral("ttyUSB9")), byId),
              dir.filePath(QStringLiteral("ttyUSB9")));
}
