#include <gtest/gtest.h>

#include "tests/setup/page_rig.h"
#include "tests/support/sim_process.h"
#include "views/pages/pan_tilt_page.h"
#include "views/widgets/led_display.h"
#include "views/widgets/lens_jog_box.h"
#include "window/camera_features.h"

using namespace halvex;
using namespace halvex::testing;

TEST(CameraEndToEnd, CommandsAnswersAndLensJogAgainstHalvexSim) {
    SimProcess sim;
    ASSERT_TRUE(sim.device().startsWith(QStringLiteral("/dev/"))) << sim.device().toStdString();
    QTemporaryDir directory;
    const QString previous = QDir::currentPath();
    QDir::setCurrent(directory.path());
    qputenv("HALVEX_COM1", sim.device().toLocal8Bit());
    {
        SimConsole console;
        ASSERT_TRUE(console.online);
        console.window.findChild<CameraFeatures*>()->setDataFolder(QStringLiteral(HALVEX_DATA_OUT));
        console.showPage(4);
        // A command from a list to each camera, and each camera's answer.
        console.act("CamTypeBut_0 CamTypeBut_1");
        console.pick("CamTypeCombo_0", "SONY-VISCA.CCL");
        console.pick("CamTypeCombo_0", "Zoom Tele");
        console.pick("CamTypeCombo_1", "PANASONIC-AW.CCL");
        console.pick("CamTypeCombo_1", "Inquiry: Zoom Position");
        console.press("SendBut_0");
        EXPECT_TRUE(
            QTest::qWaitFor([&] { return console.text("RXLabel_0").startsWith("9041FF"); }));
        console.press("SendBut_1");
        EXPECT_TRUE(QTest::qWaitFor([&] { return console.text("RXLabel_1") == "#GZ"; }));

        // Holding ZoomBox1 near its top zooms camera 1 in.
        LedDisplay* zoom = console.window.panTiltPage().Z1LED;
        const double start = zoom->value();
        auto* zoomBox = console.at<LensJogBox>("ZoomBox1");
        QTest::mousePress(zoomBox, Qt::LeftButton, {}, QPoint(19, 6));
        EXPECT_TRUE(QTest::qWaitFor([&] { return zoom->value() >= start + 20; }));
        QTest::mouseRelease(zoomBox, Qt::LeftButton, {}, QPoint(19, 6));
    }
    QDir::setCurrent(previous);
}
