#include <gtest/gtest.h>

#include <sys/wait.h>
#include <unistd.h>
#include <QFile>
#include <QLineEdit>
#include <QStatusBar>
#include <QTemporaryDir>

#include "tests/support/console_rig.h"
#include "tests/support/scripted_unit.h"
#include "window/data_watch.h"

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

    std::unique_ptr<VornixU> window(TestPort* port = nullptr) {
        return std::make_unique<VornixU>(
            port ? port : new TestPort(&unit_),
            [this](QWidget*, const Message& message) {
                shown_.push_back(message);
                return true;
            },
            ConsoleRig::kFastTickMs);
    }
    static QByteArray settingsBytes() {
        QFile file(QStringLiteral("HALVEX.BIN"));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }
    static void writeSettings(const QByteArray& hex) {
        QFile file(QStringLiteral("HALVEX.BIN"));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(QByteArray::fromHex(hex));
    }
    static bool checked(VornixU& window, const QString& name) {
        return window.findChild<QAction*>(name)->isChecked();
    }

    QTemporaryDir dir_;
    QString previous_;
    std::vector<Message> shown_;
    ScriptedUnit unit_;
};
}  // namespace

TEST_F(MainWindowTest, StoredSettingsAreUsedAsTheyAreAndAMissingFileIsCreated) {
    struct Case {
        QByteArray stored;  // hex; empty: no file
        QByteArray after;
        QString error;  // words the load error must name, "|" between
        QString title;  // how the title ends
        int com, bps;   // the checked menu entries; -1: none
    };
    const Case cases[] = {
        {"", "010080250000", "", "Ver 2.00 Using COM1 At 9600 Offline", 1, 0},
        {"0900004B0000", "0900004B0000", "", "", 1, 2},  // port 9: the COM1 entry stays checked
        {"020000C20100", "020000C20100", "", "Using COM2 At 115200 Offline", 2, -1},
        {"030080250000", "030080250000", "", "Using COM3 At 9600 Offline", 3, 0},
        {"0100", "0100", "HALVEX.BIN|2 bytes", "Using COM1 At 9600 Offline", 1, 0}};
    for (const Case& c : cases) {
        SCOPED_TRACE(c.stored.toStdString());
        QFile::remove(QStringLiteral("HALVEX.BIN"));
        if (!c.stored.isEmpty()) {
            writeSettings(c.stored);
        }
        auto w = window();
        const QString error = w->Form_Load();
        for (const QString& word : c.error.split('|', Qt::SkipEmptyParts)) {
            EXPECT_TRUE(error.contains(word)) << error.toStdString();
        }
        EXPECT_EQ(error.isEmpty(), c.error.isEmpty());
        EXPECT_EQ(settingsBytes(), QByteArray::fromHex(c.after));
        EXPECT_TRUE(w->windowTitle().endsWith(c.title)) << w->windowTitle().toStdString();
        EXPECT_TRUE(w->windowTitle().startsWith("Halvex Remote Control Emulator Ver 2.00 Using"));
        EXPECT_TRUE(checked(*w, QStringLiteral("MenuCOM_%1").arg(c.com)));
        for (int i = 0; i < 6; ++i) {
            EXPECT_EQ(checked(*w, QStringLiteral("MenuBPS_%1").arg(i)), i == c.bps) << i;
        }
        EXPECT_FALSE(w->findChild<QTabWidget*>(QStringLiteral("SSTab1"))->isEnabled());
    }
    EXPECT_TRUE(unit_.wire().empty());
}

TEST_F(MainWindowTest, MenuChoicesAreWrittenAtOnceAndDropTheOfflineWord) {
    auto w = window();
    w->Form_Load();
    w->findChild<QAction*>(QStringLiteral("MenuBPS_5"))->trigger();
    EXPECT_EQ(settingsBytes(), QByteArray::fromHex("010000E10000"));
    EXPECT_TRUE(w->windowTitle().endsWith(QStringLiteral("Using COM1 At 57600")));
    EXPECT_FALSE(checked(*w, QStringLiteral("MenuBPS_0")));
    w->findChild<QAction*>(QStringLiteral("MenuCOM_3"))->trigger();
    EXPECT_EQ(settingsBytes(), QByteArray::fromHex("030000E10000"));
    EXPECT_TRUE(checked(*w, QStringLiteral("MenuCOM_3")));
    EXPECT_FALSE(checked(*w, QStringLiteral("MenuCOM_1")));
    EXPECT_EQ(w->windowTitle(),
              QStringLiteral("Halvex Remote Control Emulator Ver 2.00 Using COM3 At 57600"));
}

TEST_F(MainWindowTest, MenuChoiceIsWrittenInPlaceWhenOnlyTheFileMayBeWritten) {
    writeSettings("010080250000");
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
        auto w = window();
        w->Form_Load();
        const pid_t child = root ? fork() : 0;
        if (child == 0) {
            if (root && (setgid(kNobody) != 0 || setuid(kNobody) != 0)) {
                _exit(2);
            }
            w->findChild<QAction*>(QStringLiteral("MenuCOM_2"))->trigger();
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

TEST_F(MainWindowTest, RepliesLightTheStartButtonSilenceFaultsItAndRangeFaultsAreShown) {
    auto* port = new TestPort(&unit_);
    auto w = window(port);
    w->Form_Load();
    auto* start = w->findChild<QPushButton*>(QStringLiteral("StartBut"));
    port->open(QStringLiteral("COM1"), 9600);
    w->link().Timer2().start();
    const auto askRevision = [&w] {
        guarded(w->state(), "GetRevBut_Click", [&w] {
            SendInProgressScope sending(w->state());
            w->state().TxBuffer[0] = 0x9A;
            w->state().TxBuffer[1] = 0x80;
            w->link().SendFrame(2);
        });
    };
    unit_.setScript([](const ScriptedUnit::Frame& frame) -> std::optional<std::vector<Byte>> {
        return std::vector<Byte>{frame.message[0], 0x42};
    });
    askRevision();
    ASSERT_TRUE(QTest::qWaitFor([&] { return start->property("lamp").toString() == "good"; }));
    EXPECT_EQ(w->findChild<QLabel*>(QStringLiteral("Label25"))->text(),
              QStringLiteral("Currently Receiving ID Of 0"));
    EXPECT_EQ(w->dataWatch().findChild<QLineEdit*>(QStringLiteral("TXData"))->text(),
              QStringLiteral("02 00 9A 80 1A 03"));
    EXPECT_TRUE(w->dataWatch()
                    .findChild<QLineEdit*>(QStringLiteral("RXData"))
                    ->text()
                    .startsWith(QStringLiteral("06 00 9A 42")));

    unit_.setScript(nullptr);  // silence: the watchdog turns the lamp to fault
    askRevision();
    ASSERT_TRUE(QTest::qWaitFor([&] { return start->property("lamp").toString() == "fault"; }));
    EXPECT_TRUE(w->state().LinkFault);

    guarded(w->state(), "JogBox_MouseMove", [] { (void)checkedByte(256); });
    EXPECT_EQ(w->statusBar()->currentMessage(),
              QStringLiteral("Run-time error 6: Overflow in JogBox_MouseMove"));
}
