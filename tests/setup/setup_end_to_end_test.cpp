#include <gtest/gtest.h>

#include <QAbstractButton>
#include <QDir>
#include <QLabel>
#include <QLineEdit>
#include <QProcess>
#include <QPushButton>
#include <QScrollBar>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <memory>

#include "console/messages.h"
#include "tests/support/sim_process.h"
#include "window/vornixu.h"

using namespace halvex;

namespace {

// The console on a real serial port, online, OK answered to every box.
class Console {
  public:
    explicit Console(const QString& device) {
        qputenv("HALVEX_COM1", device.toLocal8Bit());
        window_ = std::make_unique<VornixU>(nullptr, [](QWidget*, const Message&) { return true; });
        window_->Form_Load();
        window_->show();
        press("StartBut");
        online_ = QTest::qWaitFor(
            [&] { return window_->windowTitle().endsWith(QStringLiteral(" Online")); }, 30000);
    }
    bool online() const { return online_; }
    VornixU& window() { return *window_; }
    template <typename T>
    T* find(const char* name) {
        return window_->findChild<T*>(QString::fromLatin1(name));
    }
    void press(const char* name) { find<QAbstractButton>(name)->click(); }
    void scroll(const char* name, int value) { find<QScrollBar>(name)->setValue(value); }
    int value(const char* name) { return find<QScrollBar>(name)->value(); }
    bool checked(const char* name) { return find<QAbstractButton>(name)->isChecked(); }
    // Lets the replies to what was just sent arrive.
    static void settle() { QTest::qWait(400); }

  private:
    std::unique_ptr<VornixU> window_;
    bool online_ = false;
};
}  // namespace

TEST(SetupEndToEnd, SettingsSurviveAReconnectAndARestartAndTheConsoleFollowsANewId) {
    QTemporaryDir directory;
    const QString previous = QDir::currentPath();
    QDir::setCurrent(directory.path());
    const QString stateFile = directory.filePath(QStringLiteral("unit.state"));
    {
        SimProcess sim({QStringLiteral("--state"), stateFile});
        ASSERT_TRUE(sim.device().startsWith(QStringLiteral("/dev/")));
        Console console(sim.device());
        ASSERT_TRUE(console.online());
        console.press("VidOption_3");
        console.press("StoreInitBut");  // kept for power up
        console.scroll("PSafeScroll", 9);
        console.press("SetRateBut");
        console.scroll("TOScroll", 45);
        console.press("SetTOBut");
        console.press("HeatOp_2");
        Console::settle();
    }
    {
        SimProcess sim(
            {QStringLiteral("--state"), stateFile});  // a restart: only what the unit stores
        Console console(sim.device());
        ASSERT_TRUE(console.online());
        EXPECT_TRUE(console.checked("VidOption_3"));
        EXPECT_EQ(console.value("PSafeScroll"), 9);
        EXPECT_EQ(console.value("TOScroll"), 45);
        EXPECT_TRUE(console.checked("HeatOp_2"));
        // The connection sequence ran the firmware read too.
        EXPECT_TRUE(
            console.find<QLabel>("RevLabel")->text().startsWith(QStringLiteral("Rev 2.10  ")));

        // A new address: the unit answers there once the console follows.
        console.scroll("IDScroll", 7);
        console.press("SetIDBut");
        Console::settle();
        EXPECT_EQ(console.value("IDScroll"), 7);
        console.scroll("CurrIDScroll", 7);
        console.scroll("TOScroll", 0);
        console.press("GetTOBut");
        EXPECT_TRUE(QTest::qWaitFor([&] { return console.value("TOScroll") == 45; }, 3000));
        EXPECT_EQ(console.window().state().UnitId, 7);

        // The homing cycle: "Looking..." while the unit is silent, then the
        // index points it found.
        console.window().SSTab1().setCurrentIndex(7);
        console.find<QLineEdit>("PassText")->setText(QStringLiteral("7214"));
        console.press("PassEntBut");
        auto* pindex = console.find<QLabel>("Pindex");
        auto* tindex = console.find<QLabel>("Tindex");
        QString duringPan;
        QString duringTilt;
        QTimer::singleShot(1000, [&] {
            duringPan = pindex->text();
            duringTilt = tindex->text();
        });
        console.press("EncHomeBut");
        EXPECT_EQ(duringPan, QStringLiteral("Looking..."));
        EXPECT_EQ(duringTilt, QStringLiteral("Looking..."));
        // Resolver centre 32768 plus the encoder value 15.
        EXPECT_EQ(pindex->text(), QStringLiteral("32783"));
        EXPECT_EQ(tindex->text(), QStringLiteral("32783"));
        EXPECT_EQ(console.window().link().Timer4().interval(), 20000);
        EXPECT_FALSE(console.window().state().LinkFault);
    }
    QDir::setCurrent(previous);
}
