#include <gtest/gtest.h>

#include <QCheckBox>
#include <QComboBox>
#include <QDir>
#include <QLabel>
#include <QProcess>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>

#include "tests/support/sim_process.h"
#include "views/pages/pan_tilt_page.h"
#include "views/widgets/led_display.h"
#include "views/widgets/lens_jog_box.h"
#include "views/widgets/spin_button.h"
#include "window/camera_features.h"
#include "window/vornixu.h"

using namespace halvex;

namespace {

// The real window on a real serial port, online, showing the Camera page.
struct Console {
    Console() : window(nullptr, [](QWidget*, const Message&) { return true; }) {
        window.Form_Load();
        window.show();
        window.findChild<CameraFeatures*>()->setDataFolder(QStringLiteral(HALVEX_DATA_OUT));
        button("StartBut")->click();
        online = QTest::qWaitFor([&] { return window.windowTitle().endsWith(" Online"); }, 30000);
        window.SSTab1().setCurrentIndex(4);
    }
    template <typename T = QWidget>
    T* at(const char* name) {
        return window.findChild<T*>(QString::fromLatin1(name));
    }
    QPushButton* button(const char* name) { return at<QPushButton>(name); }
    QString text(const char* name) { return at<QLabel>(name)->text(); }
    void pick(const char* list, const QString& item) {
        auto* combo = at<QComboBox>(list);
        const int index = combo->findText(item);
        combo->setCurrentIndex(index);
        emit combo->activated(index);
    }

    VornixU window;
    bool online = false;
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
        Console console;
        ASSERT_TRUE(console.online);
        // A command from a list to each camera, and each camera's answer.
        for (const char* list : {"CamTypeBut_0", "CamTypeBut_1"}) {
            console.button(list)->click();
        }
        console.pick("CamTypeCombo_0", "SONY-VISCA.CCL");
        console.pick("CamTypeCombo_0", "Zoom Tele");
        console.pick("CamTypeCombo_1", "PANASONIC-AW.CCL");
        console.pick("CamTypeCombo_1", "Inquiry: Zoom Position");
        console.button("SendBut_0")->click();
        EXPECT_TRUE(
            QTest::qWaitFor([&] { return console.text("RXLabel_0").startsWith("9041FF"); }));
        console.button("SendBut_1")->click();
        EXPECT_TRUE(QTest::qWaitFor([&] { return console.text("RXLabel_1") == "#GZ"; }));

        // Holding ZoomBox1 near its top zooms camera 1 in.
        LedDisplay* zoom = console.window.panTiltPage().Z1LED;
        const double start = zoom->value();
        QTest::mousePress(console.at<LensJogBox>("ZoomBox1"), Qt::LeftButton, {}, QPoint(19, 6));
        EXPECT_TRUE(QTest::qWaitFor([&] { return zoom->value() >= start + 20; }));
        QTest::mouseRelease(console.at<LensJogBox>("ZoomBox1"), Qt::LeftButton, {}, QPoint(19, 6));

        // Settings to keep: camera 2 at 14.4 and 422, a lens bit, a minimum speed.
        QTest::mouseClick(console.at<QLabel>("BaudLabel2"), Qt::LeftButton);
        QTest::mouseClick(console.at<QLabel>("LevelLabel2"), Qt::LeftButton);
        console.at<QCheckBox>("Lens1Check_2")->setChecked(true);
        emit console.at<SpinButton>("FocusMinSpin_1")->SpinUp();
        console.button("SetCamBut")->click();
        console.button("SetLensBut")->click();
        QTest::qWait(300);
        console.window.close();
    }
    {
        Console console;  // a fresh console reads them back
        ASSERT_TRUE(console.online);
        EXPECT_EQ(console.text("BaudLabel2"), "14.4");
        EXPECT_EQ(console.text("LevelLabel2"), "422");
        EXPECT_TRUE(console.at<QCheckBox>("Lens1Check_2")->isChecked());
        EXPECT_EQ(console.text("FocusMinLabel_1"), "11");
        console.window.close();
    }
    QDir::setCurrent(previous);
}
