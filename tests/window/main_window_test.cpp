#include <gtest/gtest.h>

#include <sys/wait.h>
#include <unistd.h>
#include <QFile>
#include <QLineEdit>

#include "tests/support/console_rig.h"
#include "tests/support/full_disk.h"
#include "window/data_watch.h"

using namespace halvex;
using namespace halvex::testing;

namespace {
// The rig works in an empty current directory, where the settings file lives.
QByteArray settingsBytes() {
    QFile file(QStringLiteral("HALVEX.BIN"));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}
bool checked(VornixU& window, const QString& name) {
    return window.findChild<QAction*>(name)->isChecked();
}
}  // namespace

TEST(MainWindow, StoredSettingsAreUsedAsTheyAreAndAMissingFileIsCreated) {
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
        {"020078563412", "020078563412", "", "Using COM2 At 305419896 Offline", 2, -1},
        {"0100", "0100", "HALVEX.BIN|2 bytes", "Using COM1 At 9600 Offline", 1, 0}};
    ConsoleRig rig;
    for (const Case& c : cases) {
        SCOPED_TRACE(c.stored.toStdString());
        QFile file(QStringLiteral("HALVEX.BIN"));
        file.remove();
        if (!c.stored.isEmpty()) {
            ASSERT_TRUE(file.open(QIODevice::WriteOnly));
            file.write(QByteArray::fromHex(c.stored));
            file.close();
        }
        VornixU w(
            new TestPort(&rig.line), [](QWidget*, const Message&) { return true; },
            ConsoleRig::kFastTickMs);
        const QString error = w.Form_Load();
        for (const QString& word : c.error.split('|', Qt::SkipEmptyParts)) {
            EXPECT_TRUE(error.contains(word)) << error.toStdString();
        }
        EXPECT_EQ(error.isEmpty(), c.error.isEmpty());
        EXPECT_EQ(settingsBytes(), QByteArray::fromHex(c.after));
        EXPECT_TRUE(w.windowTitle().endsWith(c.title)) << w.windowTitle().toStdString();
        for (int n = 1; n <= 9; ++n) {  // COM1..COM8, one of them checked
            const auto* entry = w.findChild<QAction*>(QStringLiteral("MenuCOM_%1").arg(n));
            ASSERT_EQ(entry != nullptr, n <= 8) << n;
            EXPECT_TRUE(entry == nullptr || entry->isChecked() == (n == c.com)) << n;
            // Each entry names the device it opens.
            EXPECT_TRUE(entry == nullptr ||
                        entry->text().startsWith(QStringLiteral("COM%1   (").arg(n)))
                << n;
        }
        for (int i = 0; i < 6; ++i) {
            EXPECT_EQ(checked(w, QStringLiteral("MenuBPS_%1").arg(i)), i == c.bps) << i;
        }
        EXPECT_FALSE(w.findChild<QTabWidget*>(QStringLiteral("SSTab1"))->isEnabled());
        // Choosing a port keeps the speed, every byte of it.
        w.findChild<QAction*>(QStringLiteral("MenuCOM_4"))->trigger();
        const QByteArray speed = c.after.size() == 12 ? c.after.mid(4) : "80250000";
        EXPECT_EQ(settingsBytes(), QByteArray::fromHex("0400" + speed));
    }
    EXPECT_TRUE(rig.line.frames().empty());
}

TEST(MainWindow, MenuChoicesAreWrittenAtOnceAndDropTheOfflineWord) {
    ConsoleRig rig;
    // The first and last entries are entries like any other.
    const struct {
        const char *entry, *unchecked, *file, *title;
    } choices[] = {{"MenuBPS_5", "MenuBPS_0", "010000E10000", "COM1 At 57600"},
                   {"MenuCOM_3", "MenuCOM_1", "030000E10000", "COM3 At 57600"},
                   {"MenuBPS_0", "MenuBPS_5", "030080250000", "COM3 At 9600"},
                   {"MenuCOM_8", "MenuCOM_3", "080080250000", "COM8 At 9600"}};
    for (const auto& c : choices) {
        rig.find<QAction>(QLatin1String(c.entry))->trigger();
        EXPECT_EQ(settingsBytes(), QByteArray::fromHex(c.file)) << c.entry;
        EXPECT_TRUE(checked(*rig.window, QLatin1String(c.entry)));
        EXPECT_FALSE(checked(*rig.window, QLatin1String(c.unchecked)));
        EXPECT_EQ(rig.window->windowTitle(),
                  "Halvex Remote Control Emulator Ver 2.00 Using " + QLatin1String(c.title));
    }
}

TEST(MainWindow, MenuChoiceIsWrittenInPlaceWhenOnlyTheFileMayBeWritten) {
    ConsoleRig rig;  // loading wrote the file: COM1 at 9600
    // Root may create files anywhere, so as root the menu is clicked in a
    // child process that has become nobody, who owns the file but may not
    // add to the folder.
    constexpr uid_t kNobody = 65534;
    const bool root = geteuid() == 0;
    if (root) {
        ASSERT_EQ(chown("HALVEX.BIN", kNobody, kNobody), 0);
    }
    QFile::setPermissions(rig.directory.path(),
                          QFile::ReadOwner | QFile::ExeOwner | QFile::ReadOther | QFile::ExeOther);
    const pid_t child = root ? fork() : 0;
    if (child == 0) {
        if (root && (setgid(kNobody) != 0 || setuid(kNobody) != 0)) {
            _exit(2);
        }
        rig.find<QAction>(QStringLiteral("MenuCOM_2"))->trigger();
        if (root) {
            _exit(rig.shown.empty() ? 0 : 1);
        }
    } else {
        int status = -1;
        ASSERT_EQ(waitpid(child, &status, 0), child);
        EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << "a message was shown";
    }
    QFile::setPermissions(rig.directory.path(),
                          QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    EXPECT_TRUE(rig.shown.empty());
    EXPECT_EQ(settingsBytes(), QByteArray::fromHex("020080250000"));
}

TEST(MainWindow, DataWatchShowsTheLastFramesAndSilenceTurnsTheLampToFault) {
    ConsoleRig rig;
    ASSERT_TRUE(rig.connect());
    const auto shown = [&rig](const char* name) {
        return rig.window->dataWatch().findChild<QLineEdit*>(QLatin1String(name))->text();
    };
    EXPECT_TRUE(QTest::qWaitFor([&] {
        return shown("TXData").startsWith("02 00 31 ") && shown("RXData").startsWith("06 00 31 ");
    }));
    EXPECT_EQ(rig.find<QLabel>(QStringLiteral("Label25"))->text(),
              QStringLiteral("Currently Receiving ID Of 0"));
    rig.line.setConnected(false);
    EXPECT_TRUE(QTest::qWaitFor([&] {
        return rig.find<QPushButton>(QStringLiteral("StartBut"))->property("lamp") == "fault";
    }));
}

TEST(MainWindow, AMenuChoiceThatCannotBeWrittenSaysSoAndKeepsTheOldFile) {
    ConsoleRig rig;  // loading wrote the file: COM1 at 9600
    {
        const FullDisk full(2);  // the new file may be made but its bytes do not fit
        ASSERT_TRUE(full.active());
        rig.find<QAction>(QStringLiteral("MenuCOM_2"))->trigger();
    }
    ASSERT_EQ(rig.shown.size(), 1u);
    EXPECT_TRUE(rig.shown[0].text.contains(QStringLiteral("could not be written")))
        << rig.shown[0].text.toStdString();
    EXPECT_EQ(settingsBytes(), QByteArray::fromHex("010080250000"));
}
