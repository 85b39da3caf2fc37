#include <gtest/gtest.h>

#include <QDir>
#include <QProcess>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>
#include <cmath>
#include <ctime>
#include <memory>

#include "console/messages.h"
#include "tests/support/sim_process.h"
#include "views/pages/pan_tilt_page.h"
#include "views/widgets/led_display.h"
#include "window/vornixu.h"

using namespace halvex;

namespace {}  // namespace

TEST(EndToEnd, ConsoleComesOnlineThroughAPseudoTerminalAndMovesThePlatform) {
    SimProcess sim;
    ASSERT_TRUE(sim.device().startsWith(QStringLiteral("/dev/"))) << sim.device().toStdString();
    QTemporaryDir directory;
    const QString previous = QDir::currentPath();
    QDir::setCurrent(directory.path());
    qputenv("HALVEX_COM1", sim.device().toLocal8Bit());
    std::vector<Message> shown;
    {
        VornixU window(nullptr, [&shown](QWidget*, const Message& message) {
            shown.push_back(message);
            return true;
        });  // a real QSerialPort
        window.Form_Load();
        window.show();
        window.findChild<QPushButton*>(QStringLiteral("StartBut"))->click();
        EXPECT_TRUE(QTest::qWaitFor(
            [&] { return window.windowTitle().endsWith(QStringLiteral(" Online")); }, 30000));
        EXPECT_TRUE(shown.empty());
        EXPECT_EQ(
            window.findChild<QPushButton*>(QStringLiteral("StartBut"))->property("lamp").toString(),
            QStringLiteral("good"));

        PanTiltPage& page = window.panTiltPage();
        page.PanDesLED->setValue(12.34);
        page.TiltDesLED->setValue(-4.5);
        page.AbsoBut->click();
        EXPECT_TRUE(QTest::qWaitFor(
            [&] {
                return std::abs(page.PanPosLED->value() - 12.34) < 0.005 &&
                       std::abs(page.TiltPosLED->value() + 4.5) < 0.005;
            },
            20000));
        EXPECT_FLOAT_EQ(page.PDesLed->value(), 12.34f);
        window.close();
        EXPECT_FALSE(window.SerPort1().isOpen());
    }
    qunsetenv("HALVEX_COM1");
    QDir::setCurrent(previous);
}

TEST(EndToEnd, RepliesTricklingInAtLineSpeedStillBringTheConsoleOnline) {
    SimProcess sim({QStringLiteral("--pace"), QStringLiteral("9600")});
    ASSERT_TRUE(sim.device().startsWith(QStringLiteral("/dev/")));
    QTemporaryDir directory;
    const QString previous = QDir::currentPath();
    QDir::setCurrent(directory.path());
    qputenv("HALVEX_COM1", sim.device().toLocal8Bit());
    {
        VornixU window(nullptr, [](QWidget*, const Message&) { return true; });
        window.Form_Load();
        window.findChild<QPushButton*>(QStringLiteral("StartBut"))->click();
        EXPECT_TRUE(QTest::qWaitFor(
            [&] { return window.windowTitle().endsWith(QStringLiteral(" Online")); }, 30000));
        // The link stays good while reports keep coming in pieces.
        QTest::qWait(1000);
        EXPECT_FALSE(window.state().LinkFault);
    }
    qunsetenv("HALVEX_COM1");
    QDir::setCurrent(previous);
}

TEST(EndToEnd, ConsoleLetsGoOfAnUnpluggedUnitAndTakesItBackByItself) {
    QTemporaryDir directory;
    const QString previous = QDir::currentPath();
    QDir::setCurrent(directory.path());
    const QString link = directory.filePath(QStringLiteral("unit"));
    const QStringList arguments{QStringLiteral("--link"), link};
    auto sim = std::make_unique<SimProcess>(arguments);
    qputenv("HALVEX_COM1", link.toLocal8Bit());
    std::vector<Message> shown;
    {
        VornixU window(nullptr, [&shown](QWidget*, const Message& message) {
            shown.push_back(message);
            return true;
        });
        QStringList faults;
        QObject::connect(&window.state(), &FormState::faultReported,
                         [&faults](const QString& message) { faults << message; });
        const auto titleEnds = [&window](const char* suffix) {
            return window.windowTitle().endsWith(QString::fromLatin1(suffix));
        };
        window.Form_Load();
        window.findChild<QPushButton*>(QStringLiteral("StartBut"))->click();
        ASSERT_TRUE(QTest::qWaitFor([&] { return titleEnds(" Online"); }, 30000));

        sim.reset();  // the cable is pulled
        EXPECT_TRUE(QTest::qWaitFor([&] { return titleEnds(" Offline"); }, 5000));
        EXPECT_TRUE(faults.join(QLatin1Char('\n')).contains(QStringLiteral("COM1 (") + link));
        const std::clock_t before = std::clock();
        QTest::qWait(5000);
        const double cpuShare = static_cast<double>(std::clock() - before) / CLOCKS_PER_SEC / 5.0;
        EXPECT_LT(cpuShare, 0.02) << "the console keeps working a lost port";

        sim = std::make_unique<SimProcess>(arguments);  // plugged in again
        EXPECT_TRUE(QTest::qWaitFor([&] { return titleEnds(" Online"); }, 10000));
        EXPECT_TRUE(shown.empty()) << "a message box for a lost port";
        window.close();
    }
    qunsetenv("HALVEX_COM1");
    QDir::setCurrent(previous);
}
