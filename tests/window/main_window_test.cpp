#include <gtest/gtest.h>

#include <sys/wait.h>
#include <unistd.h>
#include <QDir>
#include <QFile>
#include <QPushButton>
#include <QStatusBar>
#include <QTemporaryDir>
#include <QTest>

#include "console/messages.h"
#include "tests/support/scripted_unit.h"
#include "tests/support/test_port.h"
#include "window/data_watch.h"
#include "window/vornixu.h"

using namespace halvex;
using namespace halvex::testing;

namespace {
// Runs each test in an empty current directory, where the settings file lives.
class MainWindowTest : public ::testing::Test {
  protected:
    void SetUp() override {
        ASSERT_TRUE(dir_.isValid());
        previous_ = QDir::currentPath();
        QDir::setCurrent(dir_.path());
    }
    void TearDown() override { QDir::setCurrent(previous_); }

    // Message boxes are recorded, not shown.
    Messages::Presenter recorder() {
        return [this](QWidget*, const Message& message) {
            shown_.push_back(message);
            return true;
        };
    }

    static QByteArray settingsBytes() {
        QFile file(QStringLiteral("HALVEX.BIN"));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }
    static void writeSettings(const QByteArray& bytes) {
        QFile file(QStringLiteral("HALVEX.BIN"));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(bytes);
    }
    static QAction* action(VornixU& window, const QString& name) {
        return window.findChild<QAction*>(name);
    }

    QTemporaryDir dir_;
    QString previous_;
    std::vector<Message> shown_;
    ScriptedUnit unit_;
};
}  // namespace

TEST_F(MainWindowTest, FirstStartCreatesSettingsAndShowsOfflineTitle) {
    VornixU window(new TestPort(&unit_), recorder());
    EXPECT_EQ(window.Form_Load(), QString());
    EXPECT_EQ(settingsBytes(), QByteArray::fromHex("010080250000"));
    EXPECT_EQ(window.windowTitle(),
              QStringLiteral("Halvex Remote Control Emulator Ver 2.00 Using COM1 At 9600 Offline"));
    EXPECT_TRUE(action(window, QStringLiteral("MenuCOM_1"))->isChecked());
    EXPECT_TRUE(action(window, QStringLiteral("MenuBPS_0"))->isChecked());
    EXPECT_FALSE(window.findChild<QTabWidget*>(QStringLiteral("SSTab1"))->isEnabled());
    EXPECT_TRUE(unit_.wire().empty());
}

TEST_F(MainWindowTest, OddStoredValuesAreUsedWithoutRewritingTheFile) {
    // Port 9, speed 19200.
    writeSettings(QByteArray::fromHex("0900004B0000"));
    VornixU window(new TestPort(&unit_), recorder());
    window.Form_Load();
    EXPECT_TRUE(action(window, QStringLiteral("MenuCOM_1"))->isChecked());
    EXPECT_TRUE(action(window, QStringLiteral("MenuBPS_2"))->isChecked());
    EXPECT_EQ(settingsBytes(), QByteArray::fromHex("0900004B0000"));

    // Speed 115200: kept, shown, nothing checked.
    writeSettings(
        QByteArray::fromHex("0200"
                            "00C20100"));
    VornixU other(new TestPort(&unit_), recorder());
    other.Form_Load();
    EXPECT_TRUE(other.windowTitle().endsWith(QStringLiteral("Using COM2 At 115200 Offline")));
    for (int i = 0; i < 6; ++i) {
        EXPECT_FALSE(action(other, QStringLiteral("MenuBPS_%1").arg(i))->isChecked());
    }
}

TEST_F(MainWindowTest, ShortSettingsFileIsReportedAndLeftAlone) {
    writeSettings(QByteArray::fromHex("0100"));
    VornixU window(new TestPort(&unit_), recorder());
    const QString error = window.Form_Load();
    EXPECT_TRUE(error.contains(QStringLiteral("HALVEX.BIN")));
    EXPECT_TRUE(error.contains(QStringLiteral("2 bytes")));
    EXPECT_EQ(settingsBytes(), QByteArray::fromHex("0100"));
    EXPECT_TRUE(window.windowTitle().endsWith(QStringLiteral("Using COM1 At 9600 Offline")));
}

TEST_F(MainWindowTest, MenuChoicesAreWrittenAtOnceAndDropTheOfflineWord) {
    VornixU window(new TestPort(&unit_), recorder());
    window.Form_Load();
    action(window, QStringLiteral("MenuBPS_5"))->trigger();
    EXPECT_EQ(settingsBytes(), QByteArray::fromHex("010000E10000"));
    EXPECT_TRUE(window.windowTitle().endsWith(QStringLiteral("Using COM1 At 57600")));
    EXPECT_FALSE(action(window, QStringLiteral("MenuBPS_0"))->isChecked());

    action(window, QStringLiteral("MenuCOM_3"))->trigger();
    EXPECT_EQ(settingsBytes(), QByteArray::fromHex("030000E10000"));
    EXPECT_TRUE(action(window, QStringLiteral("MenuCOM_3"))->isChecked());
    EXPECT_FALSE(action(window, QStringLiteral("MenuCOM_1"))->isChecked());
    EXPECT_EQ(window.windowTitle(),
              QStringLiteral("Halvex Remote Control Emulator Ver 2.00 Using COM3 At 57600"));
}

TEST_F(MainWindowTest, MenuChoiceIsWrittenInPlaceWhenOnlyTheFileMayBeWritten) {
    writeSettings(QByteArray::fromHex("010080250000"));
    // Root may create files anywhere, so as root the menu is clicked in a
    // child process that has become nobody, who owns the file but may not
    // add to the folder.
    constexpr uid_t kNobody = 65534;
    const bool root = geteuid() == 0;
    if (root) {
        ASSERT_EQ(chown("HALVEX.BIN", kNobody, kNobody), 0);
    }
    QFile::setPermissions(dir_.path(),
                          QFile::ReadOwner | QFile::ExeOwner | QFile::ReadOther | QFile::ExeOther);
    {
        VornixU window(new TestPort(&unit_), recorder());
        window.Form_Load();
        const pid_t child = root ? fork() : 0;
        if (child == 0) {
            if (root && (setgid(kNobody) != 0 || setuid(kNobody) != 0)) {
                _exit(2);
            }
            action(window, QStringLiteral("MenuCOM_2"))->trigger();
            if (root) {
                _exit(shown_.empty() ? 0 : 1);
            }
        } else {
            int status = -1;
            ASSERT_EQ(waitpid(child, &status, 0), child);
            EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << "a message was shown";
        }
    }
    QFile::setPermissions(dir_.path(), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    EXPECT_TRUE(shown_.empty());
    EXPECT_EQ(settingsBytes(), QByteArray::fromHex("020080250000"));
}

TEST_F(MainWindowTest, PortMenuShowsMappedDevices) {
    qputenv("HALVEX_COM2", "/tmp/halvex-test-port");
    VornixU window(new TestPort(&unit_), recorder());
    qunsetenv("HALVEX_COM2");
    EXPECT_TRUE(
        action(window, QStringLiteral("MenuCOM_2"))->text().contains("/tmp/halvex-test-port"));
    EXPECT_TRUE(action(window, QStringLiteral("MenuCOM_4"))->text().contains("/dev/ttyS3"));
}

TEST_F(MainWindowTest, RepliesLightTheStartButtonAndFeedTheDataWatch) {
    auto* port = new TestPort(&unit_);
    VornixU window(port, recorder());
    window.Form_Load();
    auto* start = window.findChild<QPushButton*>(QStringLiteral("StartBut"));
    auto* label25 = window.findChild<QLabel*>(QStringLiteral("Label25"));
    ASSERT_NE(start, nullptr);
    ASSERT_NE(label25, nullptr);
    port->open(QStringLiteral("COM1"), 9600);
    window.link().Timer2().start();

    unit_.setScript([](const ScriptedUnit::Frame& frame) -> std::optional<std::vector<Byte>> {
        return std::vector<Byte>{frame.message[0], 0x42};
    });
    guarded(window.state(), "GetRevBut_Click", [&] {
        SendInProgressScope sending(window.state());
        window.state().TxBuffer[0] = 0x9A;
        window.state().TxBuffer[1] = 0x80;
        window.link().SendFrame(2);
    });
    ASSERT_TRUE(QTest::qWaitFor([&] { return start->property("lamp").toString() == "good"; }));
    EXPECT_EQ(label25->text(), QStringLiteral("Currently Receiving ID Of 0"));
    auto* tx = window.dataWatch().findChild<QLineEdit*>(QStringLiteral("TXData"));
    auto* rx = window.dataWatch().findChild<QLineEdit*>(QStringLiteral("RXData"));
    EXPECT_EQ(tx->text(), QStringLiteral("02 00 9A 80 1A 03"));
    EXPECT_TRUE(rx->text().startsWith(QStringLiteral("06 00 9A 42")));

    // Silence now: the watchdog turns the lamp to fault.
    unit_.setScript(nullptr);
    guarded(window.state(), "GetRevBut_Click", [&] {
        SendInProgressScope sending(window.state());
        window.state().TxBuffer[0] = 0x9A;
        window.state().TxBuffer[1] = 0x80;
        window.link().SendFrame(2);
    });
    ASSERT_TRUE(QTest::qWaitFor([&] { return start->property("lamp").toString() == "fault"; }));
    EXPECT_TRUE(window.state().LinkFault);
}

TEST_F(MainWindowTest, RangeFaultIsShownInTheStatusBar) {
    VornixU window(new TestPort(&unit_), recorder());
    window.Form_Load();
    guarded(window.state(), "JogBox_MouseMove", [] { (void)checkedByte(256); });
    EXPECT_EQ(window.statusBar()->currentMessage(),
              QStringLiteral("Run-time error 6: Overflow in JogBox_MouseMove"));
}
