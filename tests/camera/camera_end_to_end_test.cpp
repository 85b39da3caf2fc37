#include <gtest/gtest.h>

#include <QDir>
#include <QTemporaryDir>

#include "tests/setup/page_rig.h"
#include "tests/support/sim_process.h"
#include "views/pages/pan_tilt_page.h"
#include "views/widgets/led_display.h"
#include "views/widgets/lens_jog_box.h"
#include "window/camera_features.h"

using namespace halvex;
using namespace halvex::testing;

namespace {
// The console online against halvex-sim, showing the Camera page.
struct CameraConsole : SimConsole {
    CameraConsole() {
        window.findChild<CameraFeatures*>()->setDataFolder(QStringLiteral(HALVEX_DATA_OUT));
        showPage(4);
    }
};
}  // namespace

TEST(CameraEndToEnd, CommandsAnswersLensJogAndSettingsAgainstHalvexSim) {
    SimProcess sim;
    ASSERT_TRUE(sim.device().startsWith(QStringLiteral("/dev/"))) << sim.device().toStdString();
    QTemporaryDir directory;
    const QString previous = QDir::currentPath();
    QDir::setCurrent(directory.path());
    qputenv("HALVEX_COM1", sim.device().toLocal8Bit());
    {
        CameraConsole console;
        ASSERT_TRUE(console.online);
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

        // Settings to keep: camera 2 at 14.4 and 422, a lens bit, a minimum speed.
        console.act("BaudLabel2 LevelLabel2 Lens1Check_2 FocusMinSpin_1+");
        EXPECT_TRUE(console.answered("SetCamBut", 0x60));
        EXPECT_TRUE(console.answered("SetLensBut", 0x61));
    }
    {
        CameraConsole console;  // a fresh console reads them back
        ASSERT_TRUE(console.online);
        EXPECT_EQ(console.text("BaudLabel2"), "14.4");
        EXPECT_EQ(console.text("LevelLabel2"), "422");
        EXPECT_TRUE(console.checked("Lens1Check_2"));
        EXPECT_EQ(console.text("FocusMinLabel_1"), "11");
    }
    QDir::setCurrent(previous);
}
