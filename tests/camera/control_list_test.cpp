// Reading camera control lists: the list-input field rules, the 101-command
// limit, faults reported with file and line, and odd input.

#include "camera/control_list.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QTemporaryDir>
#include <random>

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

TEST(ControlListFields, FollowTheListInputRulesAndOnlyTheExactModeHMeansHex) {
    const struct {
        QByteArray record;  // follows a header line
        QString name, mode, text;
    } cases[] = {
        {R"("Zoom Tele",H,"81 01 04 07 02 FF")", "Zoom Tele", "H", "81 01 04 07 02 FF"},
        {R"("Zoom, fast",A,"#Z99,#Z50")", "Zoom, fast", "A", "#Z99,#Z50"},
        {"Zoom Tele   ,H   ,PWR ON   ", "Zoom Tele", "H", "PWR ON"},  // unquoted: trimmed
        {R"(   "  Zoom  ",  A," 01 02 ")", "  Zoom  ", "A", " 01 02 "},
        {R"("Zoom"xx,H,"01" yy)", "Zoom", "H", "01"},    // text after a closing mark is dropped
        {"\"Zoom\"\nH\n\"0102\"", "Zoom", "H", "0102"},  // line ends separate fields too
        {R"("Zoom",H,)", "Zoom", "H", ""},               // a final comma announces an empty field
        {"\"Zoom,H,01\nH,\"02\"", "Zoom,H,01", "H", "02"},  // an open quote ends with its line
        {"\"Cam\xC3\xA9ra\",A,\"\xC3\xA9\"", "Cam\u00E9ra", "A", "\u00E9"},
        {"\"Cam\xE9ra\",A,\"\xE9\"", "Cam\u00E9ra", "A", "\u00E9"},
        {R"("N",h,"01")", "N", "h", "01"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.record.toStdString());
        const ControlList list = parsed("\"Header\"\n" + c.record);
        ASSERT_EQ(list.commands.size(), 1u);
        EXPECT_EQ(list.commands[0].name, c.name);
        EXPECT_EQ(list.commands[0].mode, c.mode);
        EXPECT_EQ(list.commands[0].text, c.text);
        EXPECT_EQ(list.commands[0].isHex(), c.mode == "H");
    }
    EXPECT_EQ(parsed("\xEF\xBB\xBF\"Header, 2\"\r\n").header, "Header, 2");  // a byte order mark
}

TEST(ControlListFile, FaultsNameFileAndLineAndKeepWhatWasRead) {
    const struct {
        QByteArray bytes;
        int line;  // 0: the message names no line
        std::size_t kept;
    } cases[] = {
        {"\"Hdr\"\n\"A\",H,\"01\"\n\n\"B\",H", 4, 1},  // no transmit string
        {"\"Hdr\"\r\n\"A\",H\r\n", 2, 0},
        {commands(102), 103, 101},  // the header is line 1
        {"", 0, 0},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.bytes.left(40).toStdString());
        QString error;
        const ControlList list = parsed(c.bytes, &error);
        EXPECT_EQ(list.commands.size(), c.kept);
        EXPECT_TRUE(error.contains("\"TEST.CCL\"")) << error.toStdString();
        if (c.line > 0) {
            EXPECT_TRUE(error.contains(QStringLiteral("line %1 ").arg(c.line)))
                << error.toStdString();
        }
    }
    EXPECT_EQ(parsed(commands(101)).commands.size(), 101u);

    // Unreadable and oversized files: named, and nothing kept.
    QTemporaryDir dir;
    ControlList list = parsed(commands(3));
    EXPECT_TRUE(loadControlList(dir.filePath("GONE.CCL"), list).contains("\"GONE.CCL\""));
    EXPECT_TRUE(list.commands.empty());
    QFile huge(dir.filePath("HUGE.CCL"));
    ASSERT_TRUE(huge.open(QIODevice::WriteOnly));
    huge.write(QByteArray(kMaxControlListBytes + 1, ' '));
    huge.close();
    EXPECT_TRUE(loadControlList(huge.fileName(), list).contains("\"HUGE.CCL\""));
    // A file of exactly the largest size is read to its last byte.
    const QByteArray last = "\r\n\"Last\",A,abcd";
    const QByteArray header(kMaxControlListBytes - last.size() - 2, 'h');
    ASSERT_TRUE(huge.open(QIODevice::WriteOnly | QIODevice::Truncate));
    huge.write('"' + header + '"' + last);
    huge.close();
    EXPECT_EQ(loadControlList(huge.fileName(), list), QString());
    ASSERT_EQ(list.commands.size(), 1u);
    EXPECT_EQ(list.commands[0].text, "abcd");
}

// Random edits never crash the reader nor let it keep more than it may.
TEST(ControlListFile, EditedFilesStayWithinBounds) {
    const QByteArray full = commands(110);
    std::mt19937 random(2024);
    for (int round = 0; round < 1000; ++round) {
        QByteArray input = full;
        for (int edit = 0; edit < 6; ++edit) {
            input.insert(random() % input.size(), ",\"\r\n H\xC3"[random() % 7]);
        }
        input.truncate(random() % input.size());
        ControlList list;
        const QString error = parseControlList(input, QStringLiteral("ODD.CCL"), list);
        ASSERT_LE(list.commands.size(), 101u);
        ASSERT_TRUE(error.isEmpty() || error.contains("\"ODD.CCL\"")) << error.toStdString();
    }
}

}  // namespace
}  // namespace halvex
