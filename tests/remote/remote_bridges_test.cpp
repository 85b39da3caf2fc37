// The console's bridges started from their settings, what each tells the
// operator, and their settings as the user's settings keep them.

#include <gtest/gtest.h>

#include <QSettings>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTemporaryDir>
#include <functional>

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
    EXPECT_EQ(bridges.state(Kind::PelcoD).clients, 1);

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

    // Nothing kept yet: every bridge off, keyboard 1 at 2400 baud.
    BridgeSettings loaded = loadBridgeSettings();
    EXPECT_FALSE(loaded.any());
    EXPECT_EQ(loaded.pelcoAddress, 1);
    EXPECT_EQ(loaded.pelcoBaud, 2400);

    // As a settings file edited by hand may hold them.
    using Read = std::function<int(const BridgeSettings&)>;
    const Read onvifPort = [](const BridgeSettings& s) {
        return s.onvifPort ? int{*s.onvifPort} : -1;
    };
    const Read address = [](const BridgeSettings& s) { return s.pelcoAddress; };
    const Read refresh = [](const BridgeSettings& s) { return s.pelcoRefreshMs; };
    const struct {
        const char* key;
        int kept;
        Read read;
        int loaded;  // -1: off
    } cases[] = {
        {"onvifPort", 0, onvifPort, -1},        {"onvifPort", 1, onvifPort, 1},
        {"onvifPort", 65535, onvifPort, 65535}, {"onvifPort", 65536, onvifPort, -1},
        {"pelcoAddress", 0, address, 1},        {"pelcoAddress", 300, address, 255},
        {"pelcoRefreshMs", -5, refresh, 0},     {"pelcoRefreshMs", 700000, refresh, 600000},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(::testing::Message() << c.key << " " << c.kept);
        QSettings(QSettings::NativeFormat, QSettings::UserScope, "halvex", "halvex")
            .setValue(QStringLiteral("Remote/") + c.key, c.kept);
        EXPECT_EQ(c.read(loadBridgeSettings()), c.loaded);
    }
}

}  // namespace
}  // namespace halvex::testing
