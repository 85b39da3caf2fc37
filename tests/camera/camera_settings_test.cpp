#include <gtest/gtest.h>

#include <QAction>
#include <QCheckBox>

#include "camera/lens_control.h"
#include "tests/camera/camera_rig.h"
#include "tests/support/online_suite.h"
#include "tests/support/scripted_unit.h"
#include "views/widgets/lens_jog_box.h"
#include "views/widgets/spin_button.h"

using namespace halvex;
using namespace halvex::testing;

namespace {
struct SettingsRig : CameraRig {
    QStringList clicks(const QString& label, int count) {
        QStringList shown;
        for (int i = 0; i < count; ++i) {
            QTest::mouseClick(at<QLabel>(label), Qt::LeftButton);
            shown << text(label);
        }
        return shown;
    }
    QCheckBox* lensCheck(int camera, int bit) {
        return at<QCheckBox>(QStringLiteral("Lens%1Check_%2").arg(camera).arg(bit));
    }
};

// The console with its port open and no ticks: the only replies are the
// ones a test puts on the line.
struct ReplyRig : SettingsRig {
    ReplyRig() {
        port->open(QStringLiteral("COM1"), 9600);
        window->SSTab1().setEnabled(true);
    }
    void arrive(const std::vector<Byte>& message) {
        port->injectIncoming(ScriptedUnit::replyWire(0, message));
        QCoreApplication::processEvents();
    }
};
}  // namespace

TEST(CameraLines, LabelsStepThroughTheirChoicesAndRepliesSetWhereTheyStand) {
    ReplyRig rig;
    EXPECT_EQ(rig.clicks("BaudLabel1", 8),
              QStringList({"9.6", "14.4", "19.2", "28.8", "38.4", "57.6", "115.2", "Dis"}));
    EXPECT_EQ(rig.clicks("FormLabel2", 8), QStringList({"7/N/1", "7/E/1", "7/O/1", "8/N/2", "7/N/2",
                                                        "7/E/2", "7/O/2", "8/N/1"}));
    EXPECT_EQ(rig.clicks("LevelLabel1", 2), QStringList({"422", "232"}));

    // 0x7D: baud 5, 7/O, RS-422, two stop bits. Clicks step on from there.
    rig.arrive({0x60, 0x7D, 0x00});
    EXPECT_EQ(rig.text("BaudLabel1"), "38.4");
    EXPECT_EQ(rig.text("FormLabel1"), "7/O/2");
    EXPECT_EQ(rig.text("LevelLabel1"), "422");
    EXPECT_EQ(rig.text("BaudLabel2"), "Dis");
    EXPECT_EQ(rig.text("FormLabel2"), "8/N/1");
    EXPECT_EQ(rig.text("LevelLabel2"), "232");
    EXPECT_EQ(rig.clicks("BaudLabel1", 1), QStringList({"57.6"}));
    EXPECT_EQ(rig.clicks("FormLabel1", 1), QStringList({"8/N/1"}));

    // Time-outs: a reply counts 8 ms a step, the spin 9 ms; out of range is "*U*" and 1.
    struct Reply {
        Byte camera1, camera2;
        const char *shown1, *shown2, *afterUp1, *afterDown2;
    };
    const Reply replies[] = {{0, 101, "*U*", "*U*", "18ms", "9ms"},
                             {100, 1, "800ms", "8ms", "900ms", "9ms"},
                             {255, 50, "*U*", "400ms", "18ms", "441ms"}};
    for (const Reply& r : replies) {
        rig.arrive({0x65, r.camera1, r.camera2});
        EXPECT_EQ(rig.text("CamTOLabel_0"), r.shown1);
        EXPECT_EQ(rig.text("CamTOLabel_1"), r.shown2);
        rig.at<SpinButton>("CamTOSpin_0")->SpinUp();
        rig.at<SpinButton>("CamTOSpin_1")->SpinDown();
        EXPECT_EQ(rig.text("CamTOLabel_0"), r.afterUp1);
        EXPECT_EQ(rig.text("CamTOLabel_1"), r.afterDown2);
    }
}

TEST(Lenses, ReplyDropsBit7AndMinimumSpeedsStopAtTheirEnds) {
    ReplyRig rig;
    auto* lenses = rig.window->findChild<LensControl*>();
    rig.lensCheck(1, 2)->setChecked(true);
    EXPECT_EQ(lenses->LensConfig(0), 0x04);
    rig.lensCheck(1, 2)->setChecked(false);
    EXPECT_EQ(lenses->LensConfig(0), 0x00);

    rig.arrive({0x61, 0xC4, 5, 6, 0x82, 7, 8});
    EXPECT_EQ(lenses->LensConfig(0), 0x44);
    EXPECT_EQ(lenses->LensConfig(1), 0x02);
    for (int bit = 1; bit <= 6; ++bit) {
        EXPECT_EQ(rig.lensCheck(1, bit)->isChecked(), bit == 2 || bit == 6) << bit;
        EXPECT_EQ(rig.lensCheck(2, bit)->isChecked(), bit == 1) << bit;
    }
    EXPECT_TRUE(rig.window->state().UserClickEnabled);
    EXPECT_EQ(rig.text("ZoomMinLabel_0"), "5");
    EXPECT_EQ(rig.text("FocusMinLabel_1"), "8");

    for (int i = 0; i < 10; ++i) {
        rig.at<SpinButton>("ZoomMinSpin_0")->SpinDown();
    }
    for (int i = 0; i < 300; ++i) {
        rig.at<SpinButton>("FocusMinSpin_1")->SpinUp();
    }
    EXPECT_EQ(rig.text("ZoomMinLabel_0"), "0");
    EXPECT_EQ(rig.text("FocusMinLabel_1"), "255");
}

TEST(LensJog, PointerPositionBecomesTheJogByte) {
    struct Case {
        int button;
        double x, y;
        Byte expected;
    };
    const Case cases[] = {
        {1, 19, 60, 0},  {1, 19, 1, 253},     {1, 19, 120, 254}, {1, 19, 30, 129},
        {1, 1, 90, 128}, {1, 38.9, 1.5, 251}, {2, 19, 1, 0},     {3, 19, 1, 0},
        {0, 19, 1, 0},   {1, 39, 1, 0},       {1, 0.9, 1, 0},    {1, 19, 0.5, 0},
        {1, 19, 121, 0}, {1, -5, 10, 0},      {1, 19, 59.9, 3},  {1, 19, 60.5, 2},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(lensJogByte(c.button, c.x, c.y), c.expected)
            << c.button << " at " << c.x << "," << c.y;
    }

    // Through the real boxes: each writes its own byte, release stops it.
    ReplyRig rig;
    JogState& jog = rig.window->jogState();
    auto* focus2 = rig.at<LensJogBox>("FocusBox2");
    QTest::mousePress(focus2, Qt::LeftButton, {}, QPoint(19, 119));
    EXPECT_EQ(jog.LensJogSpeeds, (std::array<Byte, 4>{0, 0, 0, 254}));
    emit focus2->mouseMoved(Qt::NoButton, Qt::LeftButton, 39.5, 1);  // off the side: stop
    EXPECT_EQ(jog.LensJogSpeeds[3], 0);
    emit focus2->mouseMoved(Qt::NoButton, Qt::LeftButton, 19, 1);  // back in: drive again
    EXPECT_EQ(jog.LensJogSpeeds[3], 253);
    QTest::mouseRelease(focus2, Qt::LeftButton, {}, QPoint(19, 1));
    EXPECT_EQ(jog.LensJogSpeeds[3], 0);
}

namespace {
class CameraSettings : public OnlineSuite<SettingsRig> {};
}  // namespace

TEST_F(CameraSettings, SetSendsBothCamerasAndReconnectingReadsThroughTheGetHandlers) {
    SettingsRig& rig = *shared_;
    rig.showPage(4);
    // From what the unit reported on connecting: 9.6 8/N/1 232, 80 ms, lens 0x48.
    QTest::mouseClick(rig.at<QLabel>("BaudLabel1"), Qt::LeftButton);   // 14.4
    QTest::mouseClick(rig.at<QLabel>("LevelLabel1"), Qt::LeftButton);  // 422
    QTest::mouseClick(rig.at<QLabel>("FormLabel2"), Qt::LeftButton);   // 7/N/1
    rig.at<SpinButton>("CamTOSpin_0")->SpinUp();
    rig.at<SpinButton>("CamTOSpin_0")->SpinUp();
    rig.lensCheck(1, 6)->setChecked(false);
    rig.lensCheck(2, 1)->setChecked(true);
    rig.at<SpinButton>("ZoomMinSpin_0")->SpinUp();
    rig.at<SpinButton>("FocusMinSpin_1")->SpinDown();

    rig.line.clear();
    rig.click("SetCamBut");
    EXPECT_EQ(rig.nextSent(0x60), (std::vector<Byte>{0x60, 0x22, 0x09}));
    rig.click("SetCamTOBut");
    EXPECT_EQ(rig.nextSent(0x65), (std::vector<Byte>{0x65, 12, 10}));
    rig.click("SetLensBut");
    EXPECT_EQ(rig.nextSent(0x61), (std::vector<Byte>{0x61, 0x08, 11, 10, 0x4A, 10, 9}));

    // Reconnect: the connection sequence reads them back through the Get
    // handlers (the lens request carries the console's own values).
    rig.line.clear();
    rig.window->findChild<QAction*>("MenuReinitialize")->trigger();
    ASSERT_TRUE(rig.waitFor([&] { return rig.window->windowTitle().endsWith(" Online"); }));
    EXPECT_EQ(rig.sent(0x60), (std::vector<std::vector<Byte>>{{0x60, 0x80, 0}}));
    EXPECT_EQ(rig.sent(0x65), (std::vector<std::vector<Byte>>{{0x65, 0x80, 0}}));
    EXPECT_EQ(rig.sent(0x61), (std::vector<std::vector<Byte>>{{0x61, 0x80, 11, 10, 0x4A, 10, 9}}));
    EXPECT_EQ(rig.text("CamTOLabel_0"), "96ms");  // the unit's 12 steps, as a reply shows them
}

TEST_F(CameraSettings, LensBoxBytesRideOnTheJogMessage) {
    SettingsRig& rig = *shared_;
    rig.showPage(4);
    // Bytes 4 to 7 of the next jog message: zoom 1, focus 1, zoom 2, focus 2.
    const auto nextLensBytes = [&] {
        rig.line.clear();
        rig.waitFor([&] { return !rig.line.frames().empty(); });
        const auto& frames = rig.line.frames();
        if (frames.empty() || frames[0].message.size() != 8) {
            return std::vector<Byte>{};
        }
        return std::vector<Byte>(frames[0].message.begin() + 4, frames[0].message.end());
    };
    auto* zoom2 = rig.at<LensJogBox>("ZoomBox2");
    QTest::mousePress(zoom2, Qt::LeftButton, {}, QPoint(19, 119));
    EXPECT_EQ(nextLensBytes(), (std::vector<Byte>{0, 0, 254, 0}));
    QTest::mouseRelease(zoom2, Qt::LeftButton, {}, QPoint(19, 119));
    EXPECT_EQ(nextLensBytes(), (std::vector<Byte>{0, 0, 0, 0}));
}
