// Network control from the menu. What a client's requests do to the unit
// is the session's (its rotator test) and the headless program's (Hamlib's
// own rotctl against it).

#include <gtest/gtest.h>

#include <QAction>
#include <QLabel>
#include <QStatusBar>
#include <QTcpServer>

#include "tests/network/line_client.h"
#include "tests/support/console_rig.h"
#include "window/network_control.h"

namespace halvex::testing {
namespace {

TEST(NetworkControl, StartsFromTheMenuAndTellsWhenThePortIsTaken) {
    ConsoleRig rig;
    NetworkControl& control = rig.window->networkControl();
    const auto label = [&rig] { return rig.find<QLabel>(QStringLiteral("RotctldLabel"))->text(); };
    QAction* menu = rig.find<QAction>(QStringLiteral("MenuRotctld"));
    ASSERT_NE(menu, nullptr);
    QTcpServer squatter;
    ASSERT_TRUE(squatter.listen(QHostAddress::LocalHost, 0));
    control.setEndpoint(QHostAddress::LocalHost, squatter.serverPort());
    menu->trigger();
    EXPECT_FALSE(control.server().isListening());
    EXPECT_FALSE(menu->isChecked());
    EXPECT_TRUE(label().isEmpty());
    EXPECT_TRUE(
        rig.window->statusBar()->currentMessage().contains(QString::number(squatter.serverPort())));

    control.setEndpoint(QHostAddress::LocalHost, 0);
    menu->trigger();
    ASSERT_TRUE(control.server().isListening());
    EXPECT_TRUE(menu->isChecked());
    EXPECT_EQ(label(), QStringLiteral("Network control on 127.0.0.1:%1, 0 clients")
                           .arg(control.server().serverPort()));
    network::LineClient client;
    ASSERT_TRUE(client.connectTo(control.server().serverPort()));
    EXPECT_TRUE(ConsoleRig::waitFor([&] { return label().endsWith(", 1 client"); }));
    client.exchange("P 10 10\n", "RPRT -6\n");  // offline: nothing is moved
    menu->trigger();
    EXPECT_FALSE(control.server().isListening());
    EXPECT_TRUE(label().isEmpty());
    EXPECT_TRUE(client.waitClosedByServer());
}

}  // namespace
}  // namespace halvex::testing
