#include <gtest/gtest.h>

#include "tests/setup/page_rig.h"
#include "tests/support/sim_process.h"

using namespace halvex;
using namespace halvex::testing;

TEST(SetupEndToEnd, SettingsSurviveARestartAndTheConsoleFollowsANewId) {
    QTemporaryDir directory;
    const QString previous = QDir::currentPath();
    QDir::setCurrent(directory.path());
    const QStringList keepState{QStringLiteral("--state"), directory.filePath("unit.state")};
    {
        SimProcess sim(keepState);
        ASSERT_TRUE(sim.device().startsWith(QStringLiteral("/dev/")));
        qputenv("HALVEX_COM1", sim.device().toLocal8Bit());
        SimConsole console;
        ASSERT_TRUE(console.online);
        console.showPage(5);
        EXPECT_TRUE(console.answered("VidOption_3", 0x64));
        EXPECT_TRUE(console.answered("StoreInitBut", 0x64));  // kept for power up
        console.showPage(6);
        EXPECT_TRUE(console.answered("PSafeScroll=9 SetRateBut", 0x92));
        EXPECT_TRUE(console.answered("TOScroll=45 SetTOBut", 0x96));
        EXPECT_TRUE(console.answered("HeatOp_2", 0x97));
    }
    {
        SimProcess sim(keepState);  // a restart: only what the unit stores
        qputenv("HALVEX_COM1", sim.device().toLocal8Bit());
        SimConsole console;
        ASSERT_TRUE(console.online);
        console.expect("VidOption_3 PSafeScroll=9 TOScroll=45 HeatOp_2");
        // The connection sequence ran the firmware read too.
        EXPECT_TRUE(console.text("RevLabel").startsWith(QStringLiteral("Rev 2.10  ")));

        // A new address: the unit answers there once the console follows.
        console.showPage(6);
        EXPECT_TRUE(console.answered("IDScroll=7 SetIDBut", 0x9F));
        EXPECT_EQ(console.value("IDScroll"), 7);
        console.act("CurrIDScroll=7 TOScroll=0 GetTOBut");
        EXPECT_TRUE(QTest::qWaitFor([&] { return console.value("TOScroll") == 45; }, 3000));
        EXPECT_EQ(console.window.state().UnitId, 7);
    }
    QDir::setCurrent(previous);
}
