// Reading camera control lists: the list-input field rules, the 101-command
// limit, faults reported with file and line, and the file listing.

#include "camera/control_list.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

namespace halvex {
namespace {

ControlList parsed(const QByteArray& bytes, QString* error = nullptr) {
    ControlList list;
    const QString message = parseControlList(bytes, QStringLiteral("TEST.CCL"), list);
    if (error) {
        *error = message;
    } else {
        EXPECT_EQ(message, QString()) << bytes.toStdString();
    }
    return list;
}

QByteArray commands(int count) {
    QByteArray bytes = "\"Header\"\r\n";
    for (int i = 0; i < count; ++i) {
        bytes += "\"Command " + QByteArray::number(i) + "\",H,\"" +
                 QByteArray::number(i % 256, 16).rightJustified(2, '0') + "\"\r\n";
    }
    return bytes;
}

TEST(ControlListFields, FollowTheListInputRules) {
    struct Case {
        const char* what;
        QByteArray record;  // follows a header line
        QString name;
        QString mode;
        QString text;
    };
    const Case cases[] = {
        {"conventional record", R"("Zoom Tele",H,"81 01 04 07 02 FF")", "Zoom Tele", "H",
         "81 01 04 07 02 FF"},
        {"quoted fields hold commas", R"("Zoom, fast",A,"#Z99,#Z50")", "Zoom, fast", "A",
         "#Z99,#Z50"},
        {"spaces before a field are skipped", R"(   "Zoom",    H,    "0102")", "Zoom", "H", "0102"},
        {"unquoted fields lose trailing spaces", "Zoom Tele   ,H   ,PWR ON   ", "Zoom Tele", "H",
         "PWR ON"},
        {"quoted fields keep their spaces", R"("  Zoom  ",A," 01 02 ")", "  Zoom  ", "A",
         " 01 02 "},
        {"text after a closing mark is dropped", R"("Zoom"xx,H,"01" yy)", "Zoom", "H", "01"},
        {"line ends separate fields too", "\"Zoom\"\nH\n\"0102\"", "Zoom", "H", "0102"},
        {"CR LF line ends", "\"Zoom\",H,\"01\"\r\n", "Zoom", "H", "01"},
        {"CR line ends", "\"Zoom\"\rH\r\"01\"\r", "Zoom", "H", "01"},
        {"empty fields", R"("",H,"")", "", "H", ""},
        {"a final comma announces an empty field", R"("Zoom",H,)", "Zoom", "H", ""},
        {"an open quotation mark ends with its line", "\"Zoom,H,01\nH,\"02\"", "Zoom,H,01", "H",
         "02"},
        {"UTF-8 text", "\"Cam\xC3\xA9ra\",A,\"\xC3\xA9\"", "Cam\u00E9ra", "A", "\u00E9"},
        {"single-byte text", "\"Cam\xE9ra\",A,\"\xE9\"", "Cam\u00E9ra", "A", "\u00E9"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        const ControlList list = parsed("\"Header\"\n" + c.record);
        ASSERT_EQ(list.commands.size(), 1u);
        EXPECT_EQ(list.commands[0].name, c.name);
        EXPECT_EQ(list.commands[0].mode, c.mode);
        EXPECT_EQ(list.commands[0].text, c.text);
    }
}

TEST(ControlListFields, OnlyTheExactModeHMeansHex) {
    const struct {
        QByteArray mode;
        bool hex;
    } cases[] = {{"H", true},    {"\"H\"", true},   {"H   ", true}, {"h", false},
                 {"HEX", false}, {"\" H\"", false}, {"A", false},   {"", false}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.mode.toStdString());
        const ControlList list = parsed("\"Header\"\n\"Name\"," + c.mode + ",\"01\"\n");
        ASSERT_EQ(list.commands.size(), 1u);
        EXPECT_EQ(list.commands[0].isHex(), c.hex);
    }
}

TEST(ControlListFile, HeaderQuotedWithCommasAndBlankLinesIgnored) {
    const ControlList list = parsed(
        "\xEF\xBB\xBF\n\"Sony VISCA, address 1 - Cam 1 or 2\"\r\n\r\n"
        "\"Power On\",H,\"81 01 04 00 02 FF\"\r\n   \r\n"
        "\"Power Off\",H,\"81 01 04 00 03 FF\"\r\n\r\n\r\n");
    EXPECT_EQ(list.header, "Sony VISCA, address 1 - Cam 1 or 2");
    ASSERT_EQ(list.commands.size(), 2u);
    EXPECT_EQ(list.commands[0].name, "Power On");
    EXPECT_EQ(list.commands[1].name, "Power Off");
}

TEST(ControlListFile, HeaderOnlyGivesAnEmptyList) {
    for (const QByteArray& bytes :
         {QByteArray("\"Just a camera\""), QByteArray("\"Just a camera\"\r\n\r\n")}) {
        const ControlList list = parsed(bytes);
        EXPECT_EQ(list.header, "Just a camera");
        EXPECT_TRUE(list.commands.empty());
    }
}

TEST(ControlListFile, HoldsAtMost101Commands) {
    EXPECT_EQ(parsed(commands(101)).commands.size(), 101u);

    QString error;
    const ControlList list = parsed(commands(102), &error);
    EXPECT_EQ(list.commands.size(), 101u) << "what was read stays";
    EXPECT_EQ(list.commands.back().name, "Command 100");
    EXPECT_TRUE(error.contains("\"TEST.CCL\"")) << error.toStdString();
    EXPECT_TRUE(error.contains("101 commands")) << error.toStdString();
    // The header is line 1, so the 102nd command starts on line 103.
    EXPECT_TRUE(error.contains("line 103")) << error.toStdString();
}

TEST(ControlListFile, ARecordCutShortNamesFileAndLineAndKeepsWhatWasRead) {
    const struct {
        const char* what;
        QByteArray bytes;
        int line;
        std::size_t kept;
    } cases[] = {
        {"name only", "\"Hdr\"\n\"A\",H,\"01\"\n\"B\"\n", 3, 1},
        {"no transmit string", "\"Hdr\"\n\"A\",H,\"01\"\n\n\"B\",H", 4, 1},
        {"first record", "\"Hdr\"\r\n\"A\",H\r\n", 2, 0},
        {"after blank lines", "\"Hdr\"\n\n\n  \"A\"", 4, 0},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        QString error;
        const ControlList list = parsed(c.bytes, &error);
        EXPECT_EQ(list.header, "Hdr");
        EXPECT_EQ(list.commands.size(), c.kept);
        EXPECT_TRUE(error.contains("\"TEST.CCL\"")) << error.toStdString();
        EXPECT_TRUE(error.contains(QStringLiteral("line %1 ").arg(c.line))) << error.toStdString();
    }
}

TEST(ControlListFile, AnEmptyFileIsReported) {
    for (const QByteArray& bytes : {QByteArray(), QByteArray("\r\n  \r\n")}) {
        QString error;
        const ControlList list = parsed(bytes, &error);
        EXPECT_TRUE(list.commands.empty());
        EXPECT_TRUE(error.contains("\"TEST.CCL\"")) << error.toStdString();
    }
}

TEST(ControlListFile, LoadingReplacesTheCameraTableAndReportsUnreadableFiles) {
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    const auto write = [&dir](const QString& name, const QByteArray& bytes) {
        QFile file(dir.filePath(name));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(bytes);
        return file.fileName();
    };
    ControlList camera1;
    EXPECT_EQ(loadControlList(write("LONG.CCL", commands(5)), camera1), QString());
    EXPECT_EQ(loadControlList(write("SHORT.CCL", "\"Short\"\n\"Only\",A,\"x\"\n"), camera1),
              QString());
    ASSERT_EQ(camera1.commands.size(), 1u) << "a shorter file lists only its own commands";
    EXPECT_EQ(camera1.header, "Short");
    EXPECT_EQ(camera1.commands[0].name, "Only");

    const QString missing = loadControlList(dir.filePath("GONE.CCL"), camera1);
    EXPECT_TRUE(missing.contains("\"GONE.CCL\"")) << missing.toStdString();
    EXPECT_TRUE(camera1.commands.empty());

    QDir(dir.path()).mkdir("FOLDER.CCL");
    EXPECT_FALSE(loadControlList(dir.filePath("FOLDER.CCL"), camera1).isEmpty());

    const QByteArray huge(kMaxControlListBytes + 1, ' ');
    const QString tooBig = loadControlList(write("HUGE.CCL", huge), camera1);
    EXPECT_TRUE(tooBig.contains("\"HUGE.CCL\"")) << tooBig.toStdString();
}

TEST(ControlListFolder, ListsCclFilesOfAnyCaseSortedByName) {
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    for (const char* name : {"b.CCL", "A.ccl", "c.Ccl", "notes.txt", "old.CCL.bak", "CCL"}) {
        QFile file(dir.filePath(name));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    }
    QDir(dir.path()).mkdir("folder.CCL");
    EXPECT_EQ(listControlListFiles(dir.path()), (QStringList{"A.ccl", "b.CCL", "c.Ccl"}));
    EXPECT_TRUE(listControlListFiles(dir.filePath("no such folder")).isEmpty());
}

}  // namespace
}  // namespace halvex
