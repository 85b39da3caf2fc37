// The Camera page in the real window: control lists, the transmit box, the
// camera lines and lenses, lens jogging and the help window.

#include <gtest/gtest.h>

#include <QAction>
#include <QCheckBox>
#include <QFile>

#include "camera/lens_control.h"
#include "tests/setup/page_rig.h"
#include "tests/support/messages.h"
#include "views/widgets/lens_jog_box.h"
#include "window/camera_features.h"
#include "window/help_box.h"

using namespace halvex;
using namespace halvex::testing;

namespace {
using test::message;
using test::withBits;
using vocab::maskOf;
using Line1 = vocab::camera_lines::Camera1;
using Line2 = vocab::camera_lines::Camera2;
using Lens1 = vocab::lens_configuration::Lens1;
using Lens2 = vocab::lens_configuration::Lens2;
namespace timeouts = vocab::camera_timeouts;

Bytes timeoutsMessage(Byte camera1, Byte camera2) {
    return message<vocab::CameraTimeouts>(
        {{timeouts::kCamera1, camera1}, {timeouts::kCamera2, camera2}});
}

// The pass-through command to camera index `camera` with these data bytes.
Bytes passThrough(int camera, const Bytes& data) {
    namespace transmit = vocab::camera_transmit;
    Bytes bytes = message<vocab::CameraTransmit>(
        {{transmit::kCamera, camera}, {transmit::kCount, static_cast<std::int64_t>(data.size())}},
        transmit::kData);
    bytes.insert(bytes.end(), data.begin(), data.end());
    return bytes;
}

// The console with its control lists and help files in the build's data
// folder, showing the Camera page.
struct CameraRig : PagesRig {
    CameraRig() {
        features()->setDataFolder(QStringLiteral(HALVEX_DATA_OUT));
        showPage(4);
    }
    CameraFeatures* features() { return window->findChild<CameraFeatures*>(); }
    QStringList items(const QString& list) {
        QStringList names;
        for (int i = 0; i < at<QComboBox>(list)->count(); ++i) {
            names << at<QComboBox>(list)->itemText(i);
        }
        return names;
    }
};

void write(const QString& path, const QByteArray& bytes) {
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(bytes);
}
}  // namespace

TEST(CameraLists, ListFilesLoadAListAndPickCommandsPerCamera) {
    CameraRig rig;
    QTemporaryDir lists;
    rig.features()->setDataFolder(lists.path());
    rig.press("CamTypeBut_0");
    EXPECT_EQ(rig.text("Label26_0"), "No CCL Files Found");
    EXPECT_FALSE(rig.at("CamTypeCombo_0")->isEnabled());

    write(lists.filePath("long.CCL"),
          "\"Long camera\"\n\"Zoom\",H,\"81 01 04 07 27 FF\"\n\"Say hello\",A,\"hello there\"\n");
    write(lists.filePath("Short.ccl"), "\"Short camera\"\n\"Lower h\",h,\"1234\"\n");
    write(lists.filePath("cut.CCL"), "\"Cut camera\"\n\"Whole\",A,\"x\"\n\"Cut\",H\n");
    write(lists.filePath("notes.txt"), "not a list");
    write(lists.filePath("old.CCL.bak"), "\"Old\"\n");
    QDir(lists.path()).mkdir("folder.CCL");

    // Control list files only, in alphabetical order whatever their case.
    rig.press("CamTypeBut_0");
    EXPECT_EQ(rig.items("CamTypeCombo_0"), QStringList({"cut.CCL", "long.CCL", "Short.ccl"}));
    EXPECT_TRUE(rig.at("CamTypeCombo_0")->isEnabled());
    EXPECT_EQ(rig.text("Label26_0"), "Select CCL File");
    rig.pick("CamTypeCombo_0", "long.CCL");
    EXPECT_EQ(rig.text("Label26_0"), "Long camera");
    EXPECT_EQ(rig.items("CamTypeCombo_0"), QStringList({"Zoom", "Say hello"}));

    // Picking fills the transmit box and its mode; hex clears the CR box.
    auto* cr = rig.at<QCheckBox>("CRCheck_0");
    cr->setChecked(true);
    rig.pick("CamTypeCombo_0", "Zoom");
    EXPECT_EQ(rig.text("TXBox_0"), "81 01 04 07 27 FF");
    rig.expect("HexOp1_0 !CRCheck_0");
    cr->setChecked(true);  // refused in hex mode
    EXPECT_FALSE(cr->isChecked());
    rig.pick("CamTypeCombo_0", "Say hello");
    EXPECT_EQ(rig.text("TXBox_0"), "hello there");
    rig.expect("AscOp1_0");

    // A record cut short: the message; the header and what was read stay.
    rig.press("CamTypeBut_0");
    rig.pick("CamTypeCombo_0", "cut.CCL");
    ASSERT_EQ(rig.shown.size(), 1u);
    EXPECT_EQ(rig.text("Label26_0"), "Cut camera");
    EXPECT_EQ(rig.items("CamTypeCombo_0"), QStringList({"Whole"}));

    // A file that went away: the message, and the files are offered again.
    rig.press("CamTypeBut_0");
    QFile::remove(lists.filePath("long.CCL"));
    rig.pick("CamTypeCombo_0", "long.CCL");
    ASSERT_EQ(rig.shown.size(), 2u);
    EXPECT_EQ(rig.items("CamTypeCombo_0"), QStringList({"cut.CCL", "Short.ccl"}));

    QTest::mouseDClick(rig.at("TXBox_0"), Qt::LeftButton);  // double-click clears the box
    EXPECT_TRUE(rig.text("TXBox_0").isEmpty());
}

TEST(CameraLines, RepliesSetLabelsLensesAndTimeOutsAndClicksStepOnFromThere) {
    CameraRig rig;  // port open, no ticks: the only replies are the injected ones
    rig.port->open(QStringLiteral("COM1"), 9600);
    // A reply sets where each label stands; a click steps on from there,
    // from the last caption back to the first: camera 1 at 115.2, 7/O/2, RS-422.
    rig.inject(message<vocab::CameraLines>(
        {{Line1::kBaud, 7}, {Line1::kFormat, 3}, {Line1::kStopBits, 1}, {Line1::kLevel, 1}}));
    const char* const lines[][3] = {
        {"BaudLabel1", "115.2", "Dis"},   {"FormLabel1", "7/O/2", "8/N/1"},
        {"LevelLabel1", "422", "232"},    {"BaudLabel2", "Dis", "9.6"},
        {"FormLabel2", "8/N/1", "7/N/1"}, {"LevelLabel2", "232", "422"}};
    for (const auto& [label, shown, clicked] : lines) {
        EXPECT_EQ(rig.text(label), shown) << label;
        rig.press(label);
        EXPECT_EQ(rig.text(label), clicked) << label;
    }

    // Time-outs: a reply counts 8 ms a step, the spin 9 ms; out of range is "*U*" and 1.
    const std::tuple<Byte, Byte, const char*, const char*> replies[] = {
        {0, 101, "CamTOLabel_0:*U* CamTOLabel_1:*U*", "CamTOLabel_0:18ms CamTOLabel_1:9ms"},
        {100, 1, "CamTOLabel_0:800ms CamTOLabel_1:8ms", "CamTOLabel_0:900ms CamTOLabel_1:9ms"}};
    for (const auto& [camera1, camera2, shown, stepped] : replies) {
        rig.inject(timeoutsMessage(camera1, camera2));
        rig.expect(shown);
        rig.act("CamTOSpin_0+ CamTOSpin_1-");
        rig.expect(stepped);
    }

    // Lenses (what a box sets is sent by Set, below): a reply drops the bits
    // past the flags and sets the boxes and minimum speeds.
    Bytes reply = withBits(message<vocab::LensConfiguration>({{Lens1::kZoomMinimum, 5},
                                                              {Lens1::kFocusMinimum, 6},
                                                              {Lens2::kZoomMinimum, 7},
                                                              {Lens2::kFocusMinimum, 8}}),
                           {Lens1::kFocusReverse, Lens1::kZoomEnable, Lens2::kFocusInvert});
    for (const auto flags : {Lens1::kFlags, Lens2::kFlags}) {
        reply[static_cast<std::size_t>(flags.offset)] |= static_cast<Byte>(~maskOf(flags));
    }
    rig.inject(reply);
    rig.expect("!Lens1Check_1 Lens1Check_2 !Lens1Check_3 !Lens1Check_4 !Lens1Check_5 Lens1Check_6");
    rig.expect(
        "Lens2Check_1 !Lens2Check_2 !Lens2Check_3 !Lens2Check_4 !Lens2Check_5 !Lens2Check_6");
    rig.expect("ZoomMinLabel_0:5 FocusMinLabel_1:8");
    // Minimum speeds stop at their ends.
    rig.act(QString("ZoomMinSpin_0- ").repeated(10) + QString("FocusMinSpin_1+ ").repeated(300));
    rig.expect("ZoomMinLabel_0:0 FocusMinLabel_1:255");
}

TEST(LensJog, PointerPositionBecomesTheJogByte) {
    // Button, x, y, byte: the middle row stops, above it zooms in, below out;
    // other buttons and points off the 38 by 120 box stop too.
    const std::tuple<int, double, double, int> cases[] = {
        {1, 19, 60, 0},      {1, 19, 59.9, 3}, {1, 19, 60.5, 2},  {1, 1, 90, 128},
        {1, 38.9, 1.5, 251}, {1, 19, 1, 253},  {1, 19, 120, 254}, {2, 19, 1, 0},
        {1, 39, 1, 0},       {1, 0.9, 1, 0},   {1, 19, 0.5, 0},   {1, 19, 121, 0}};
    for (const auto& [button, x, y, expected] : cases) {
        EXPECT_EQ(lensJogByte(button, x, y), expected) << button << " at " << x << "," << y;
    }
}

namespace {
// One console online for the tests below.
class CameraOnline : public OnlineSuite<CameraRig> {
  protected:
    void SetUp() override {
        shared_->shown.clear();
        shared_->showPage(4);
    }
};
}  // namespace

TEST_F(CameraOnline, BoxTextBecomesThePassThroughCommandAndHexIsRewritten) {
    CameraRig& rig = *shared_;
    rig.act("HexOp1_1 AscOp1_0");
    rig.at<QCheckBox>("CRCheck_0")->setChecked(true);
    rig.setText("TXBox_1", "ff00");
    rig.setText("TXBox_0", "#Z");
    rig.runRows(
        {{"SendBut_1", passThrough(1, {255, 0})}, {"SendBut_0", passThrough(0, {'#', 'Z', 13})}});
    EXPECT_EQ(rig.text("TXBox_1"), "FF 00 ");
}

TEST_F(CameraOnline, SetSendsBothCamerasAndReinitializeAsksForTheLensesAsSet) {
    CameraRig& rig = *shared_;
    // From what the unit reported on connecting: 9.6 8/N/1 232, 80 ms, both
    // lenses' zoom and focus enabled.
    // To 14.4, 422 and 7/E/2, camera 2 at 8/N/2 (the first two-stop format), 96 ms, lens
    // bits 6 off and 1 of camera 2 on, minimum speeds.
    rig.act("BaudLabel1 LevelLabel1" + QString(" FormLabel1").repeated(6) +
            QString(" FormLabel2").repeated(4) +
            " CamTOSpin_0+ CamTOSpin_0+ Lens1Check_6 Lens2Check_1 "
            "ZoomMinSpin_0+ FocusMinSpin_1-");
    const Bytes lines = message<vocab::CameraLines>({{Line1::kBaud, 2},
                                                     {Line1::kFormat, 2},
                                                     {Line1::kLevel, 1},
                                                     {Line1::kStopBits, 1},
                                                     {Line2::kBaud, 1},
                                                     {Line2::kStopBits, 1}});
    EXPECT_EQ(rig.sentBy("SetCamBut"), std::vector<Bytes>{lines});
    EXPECT_EQ(rig.sentBy("SetCamTOBut"), std::vector<Bytes>{timeoutsMessage(12, 10)});
    const Bytes speeds = message<vocab::LensConfiguration>({{Lens1::kZoomMinimum, 11},
                                                            {Lens1::kFocusMinimum, 10},
                                                            {Lens2::kZoomMinimum, 10},
                                                            {Lens2::kFocusMinimum, 9}});
    const Bytes lensesSet = withBits(speeds, {Lens1::kFocusEnable, Lens2::kZoomEnable,
                                              Lens2::kFocusEnable, Lens2::kFocusInvert});
    EXPECT_EQ(rig.sentBy("SetLensBut"), std::vector<Bytes>{lensesSet});

    // Reinitialize: the connection sequence's lens request carries camera 2's
    // flags as set above.
    rig.line.clear();
    rig.window->findChild<QAction*>("MenuReinitialize")->trigger();
    ASSERT_TRUE(rig.waitFor([&] { return rig.window->windowTitle().endsWith(" Online"); }));
    const auto sent = rig.line.messages(false);
    const Bytes lensesGet =
        withBits(withBits(speeds, {Lens2::kZoomEnable, Lens2::kFocusEnable, Lens2::kFocusInvert}),
                 {vocab::kReadRequest<vocab::LensConfiguration>});
    EXPECT_EQ(std::count(sent.begin(), sent.end(), lensesGet), 1);
}

TEST_F(CameraOnline, LensBoxesDriveTheirByteOfTheJogMessageUntilReleased) {
    CameraRig& rig = *shared_;
    // Bytes 4 to 7 of the next jog message: zoom 1, focus 1, zoom 2, focus 2.
    const auto nextLensBytes = [&] {
        rig.line.clear();
        rig.waitFor([&] { return !rig.line.frames().empty(); });
        const auto& frames = rig.line.frames();
        return frames.empty() || frames[0].message.size() != 8
                   ? Bytes{}
                   : Bytes(frames[0].message.begin() + 4, frames[0].message.end());
    };
    auto* zoom2 = rig.at<LensJogBox>("ZoomBox2");
    QTest::mousePress(zoom2, Qt::LeftButton, {}, QPoint(19, 119));
    EXPECT_EQ(nextLensBytes(), (Bytes{0, 0, 254, 0}));
    emit zoom2->mouseMoved(Qt::NoButton, Qt::LeftButton, 19, 1);  // moved: drives on from there
    EXPECT_EQ(nextLensBytes(), (Bytes{0, 0, 253, 0}));
    QTest::mouseRelease(zoom2, Qt::LeftButton, {}, QPoint(19, 1));
    EXPECT_EQ(nextLensBytes(), (Bytes{0, 0, 0, 0}));
}

TEST(HelpWindow, ShowsTheCameraHelpFileAndClosesByHiding) {
    CameraRig rig;
    rig.press("SerHelpBut");
    HelpBox* help = rig.features()->helpBox();
    ASSERT_NE(help, nullptr);
    EXPECT_TRUE(help->isVisible());
    QTest::mouseClick(help->Command1, Qt::LeftButton);
    EXPECT_FALSE(help->isVisible());
    EXPECT_TRUE(rig.shown.empty());
}
