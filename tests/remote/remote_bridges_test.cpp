// The console's bridges started from their settings, what each tells the
// operator, and their settings as the user's settings keep them.

#include <gtest/gtest.h>

#include <QSettings>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTemporaryDir>

#include "remote/onvif/onvif_server.h"
#include "remote/pelco_d/pelco_d_bridge.h"
#include "remote/remote_bridges.h"
#include "remote/visca/visca_bridge.h"
#include "tests/session/session_rig.h"

namespace halvex::testing {
namespace {

using Kind = RemoteBridges::Kind;

QString local(quint16 port) {
    return QStringLiteral("127.0.0.1:%1").arg(port);
}

class RemoteBridgesTest : public SessionTest {};

TEST_F(RemoteBridgesTest, TheBridgesStartAsTheirSettingsSayAndTellTheirLastCommand) {
    RemoteBridges bridges{session};
    BridgeSettings settings;
    settings.onvifPort = settings.viscaPort = settings.pelcoTcpPort = 0;  // any free port
    EXPECT_TRUE(bridges.apply(settings).isEmpty());
    EXPECT_TRUE(bridges.state(Kind::Onvif).running);
    // Nobody on this computer alone looks for a device.
    EXPECT_EQ(bridges.onvif().discoveryPort(), 0);

    QTcpSocket keyboard;
    keyboard.connectToHost(QHostAddress::LocalHost, bridges.pelcoD().serverPort());
    ASSERT_TRUE(keyboard.waitForConnected(2000));
    keyboard.write(QByteArray::fromHex("FF 01 00 02 20 00 23"));
    const QString told =
        "pan right 32: refused: the unit is offline (" + local(keyboard.localPort()) + ")";
    EXPECT_TRUE(runUntil([&] { return bridges.state(Kind::PelcoD).lastCommand == told; }, 2000));

    // A port already taken is told; the others start again, told of nowhere.
    QTcpServer taken;
    ASSERT_TRUE(taken.listen(QHostAddress::LocalHost, 0));
    settings.viscaPort = taken.serverPort();
    const QStringList failures = bridges.apply(settings);
    ASSERT_EQ(failures.size(), 1);
    EXPECT_TRUE(
        failures[0].startsWith("VISCA cannot listen on " + local(taken.serverPort()) + ": "));
    EXPECT_FALSE(bridges.state(Kind::Visca).running);
    EXPECT_TRUE(bridges.state(Kind::PelcoD).running);
}

TEST(BridgeSettingsKept, OffPortsStayOffAndValuesOutOfRangeAreBroughtIn) {
    QTemporaryDir folder;
    ASSERT_TRUE(folder.isValid());
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, folder.path());

    EXPECT_EQ(loadBridgeSettings().pelcoAddress, 1);  // nothing kept yet

    // As a settings file edited by hand may hold them.
    const auto loadedWith = [](const char* key, int kept) {
        QSettings(QSettings::NativeFormat, QSettings::UserScope, "halvex", "halvex")
            .setValue(QStringLiteral("Remote/") + key, kept);
        return loadBridgeSettings();
    };
    EXPECT_EQ(loadedWith("onvifPort", 0).onvifPort, std::nullopt);
    EXPECT_EQ(loadedWith("onvifPort", 1).onvifPort, 1);
    EXPECT_EQ(loadedWith("onvifPort", 65535).onvifPort, 65535);
    EXPECT_EQ(loadedWith("onvifPort", 65536).onvifPort, std::nullopt);
    EXPECT_EQ(loadedWith("pelcoAddress", 0).pelcoAddress, 1);
    EXPECT_EQ(loadedWith("pelcoAddress", 300).pelcoAddress, 255);
    EXPECT_EQ(loadedWith("pelcoRefreshMs", -5).pelcoRefreshMs, 0);
    EXPECT_EQ(loadedWith("pelcoRefreshMs", 700000).pelcoRefreshMs, 600000);
}

}  // namespace
}  // namespace halvex::testing
