#include <gtest/gtest.h>

#include "tests/setup/page_rig.h"
#include "tests/support/sim_process.h"
#include "views/pages/pan_tilt_page.h"
#include "views/widgets/led_display.h"
#include "views/widgets/lens_jog_box.h"
#include "window/camera_features.h"

using namespace halvex;
using namespace halvex::testing;

namespace {
// halvex-sim on its pseudo-terminal keeps up with a frame every few
// milliseconds.
constexpr int kTickMs = 8;
}  // namespace

// Through a pseudo-terminal to halvex-sim keeping its state in a file: what
// the Video and Setup pages set is what a fresh console reads back after the
// unit restarts; then the cameras behind it answer and its lens moves.
TEST(PagesEndToEnd, SettingsSurviveARestartOfTheUnitAndTheCamerasAnswer) {
    QTemporaryDir directory;
    const QString previous = QDir::currentPath();
    QDir::setCurrent(directory.path());
    const QStringList keepState{QStringLiteral("--state"), directory.filePath("unit.state")};
    {
        SimProcess sim(keepState);
        ASSERT_TRUE(sim.device().startsWith(QStringLiteral("/dev/")));
        qputenv("HALVEX_COM1", sim.device().toLocal8Bit());
        SimConsole console(kTickMs);
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
    SimProcess sim(keepState);
    qputenv("HALVEX_COM1", sim.device().toLocal8Bit());
    SimConsole console(kTickMs);
    ASSERT_TRUE(console.online);
    console.expect("VidOption_3 PSafeScroll=9 TOScroll=45 HeatOp_2");
    EXPECT_TRUE(console.text("RevLabel").startsWith(QStringLiteral("Rev 2.10  ")));

    console.window.findChild<CameraFeatures*>()->setDataFolder(QStringLiteral(HALVEX_DATA_OUT));
    console.showPage(4);
    // A command from a list to each camera, and each camera's answer.
    console.act("CamTypeBut_0 CamTypeBut_1");
    console.pick("CamTypeCombo_0", "SONY-VISCA.CCL");
    console.pick("CamTypeCombo_0", "Zoom Tele");
    console.pick("CamTypeCombo_1", "PANASONIC-AW.CCL");
    console.pick("CamTypeCombo_1", "Inquiry: Zoom Position");
    console.press("SendBut_0");
    EXPECT_TRUE(QTest::qWaitFor([&] { return console.text("RXLabel_0").startsWith("9041FF"); }));
    console.press("SendBut_1");
    EXPECT_TRUE(QTest::qWaitFor([&] { return console.text("RXLabel_1") == "#GZ"; }));
    // Holding ZoomBox1 near its top zooms camera 1 in.
    LedDisplay* zoom = console.window.panTiltPage().Z1LED;
    const double start = zoom->value();
    auto* zoomBox = console.at<LensJogBox>("ZoomBox1");
    QTest::mousePress(zoomBox, Qt::LeftButton, {}, QPoint(19, 6));
    EXPECT_TRUE(QTest::qWaitFor([&] { return zoom->value() >= start + 20; }));
    QTest::mouseRelease(zoomBox, Qt::LeftButton, {}, QPoint(19, 6));
    qunsetenv("HALVEX_COM1");
    QDir::setCurrent(previous);
}
