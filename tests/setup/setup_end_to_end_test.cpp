#include <gtest/gtest.h>

#include "tests/setup/page_rig.h"
#include "tests/support/sim_process.h"

using namespace halvex;
using namespace halvex::testing;

// Through a pseudo-terminal to halvex-sim keeping its state in a file: what
// the Video and Setup pages set is what a fresh console reads back after the
// unit restarts.
TEST(SetupEndToEnd, SettingsSurviveARestartOfTheUnit) {
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
        console.act("VidOption_3 StoreInitBut");  // kept for power up
        console.showPage(6);
        console.act("PSafeScroll=9 SetRateBut TOScroll=45 SetTOBut HeatOp_2");
        // The unit answers in order: once the time-out is read back, it has
        // taken everything before.
        console.act("TOScroll=0 GetTOBut");
        ASSERT_TRUE(QTest::qWaitFor([&] { return console.value("TOScroll") == 45; }, 3000));
    }
    {
        SimProcess sim(keepState);
        qputenv("HALVEX_COM1", sim.device().toLocal8Bit());
        SimConsole console;
        ASSERT_TRUE(console.online);
        console.expect("VidOption_3 PSafeScroll=9 TOScroll=45 HeatOp_2");
        EXPECT_TRUE(console.text("RevLabel").startsWith(QStringLiteral("Rev 2.10  ")));
    }
    qunsetenv("HALVEX_COM1");
    QDir::setCurrent(previous);
}
