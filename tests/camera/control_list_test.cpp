// Reading camera control lists: the list-input field rules, the 101-command
// limit, faults reported with file and line, the shipped lists, and odd input.

#include "camera/control_list.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <random>

#include "camera/transmit_string.h"

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
        {R"(   "Zoom",    H,    "0102")", "Zoom", "H", "0102"},
        {"Zoom Tele   ,H   ,PWR ON   ", "Zoom Tele", "H", "PWR ON"},  // unquoted: trimmed
        {R"("  Zoom  ",A," 01 02 ")", "  Zoom  ", "A", " 01 02 "},
        {R"("Zoom"xx,H,"01" yy)", "Zoom", "H", "01"},    // text after a closing mark is dropped
        {"\"Zoom\"\nH\n\"0102\"", "Zoom", "H", "0102"},  // line ends separate fields too
        {"\"Zoom\",H,\"01\"\r\n", "Zoom", "H", "01"},
        {"\"Zoom\"\rH\r\"01\"\r", "Zoom", "H", "01"},
        {R"("",H,"")", "", "H", ""},
        {R"("Zoom",H,)", "Zoom", "H", ""},  // a final comma announces an empty field
        {"\"Zoom,H,01\nH,\"02\"", "Zoom,H,01", "H", "02"},  // an open quote ends with its line
        {"\"Cam\xC3\xA9ra\",A,\"\xC3\xA9\"", "Cam\u00E9ra", "A", "\u00E9"},
        {"\"Cam\xE9ra\",A,\"\xE9\"", "Cam\u00E9ra", "A", "\u00E9"},
        {R"("N","H","01")", "N", "H", "01"},
        {R"("N",h,"01")", "N", "h", "01"},
        {R"("N",HEX,"01")", "N", "HEX", "01"},
        {R"("N"," H","01")", "N", " H", "01"},
        {R"("N",,"01")", "N", "", "01"},
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
    EXPECT_EQ(parsed("\"Just a camera\"\r\n\r\n").header, "Just a camera");
}

TEST(ControlListFile, FaultsNameFileAndLineAndKeepWhatWasRead) {
    const struct {
        QByteArray bytes;
        int line;  // 0: the message names no line
        std::size_t kept;
    } cases[] = {
        {"\"Hdr\"\n\"A\",H,\"01\"\n\"B\"\n", 3, 1},    // name only
        {"\"Hdr\"\n\"A\",H,\"01\"\n\n\"B\",H", 4, 1},  // no transmit string
        {"\"Hdr\"\r\n\"A\",H\r\n", 2, 0},
        {"\"Hdr\"\n\n\n  \"A\"", 4, 0},
        {commands(102), 103, 101},  // the header is line 1
        {"", 0, 0},
        {"\r\n  \r\n", 0, 0},
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
    QString error;
    EXPECT_EQ(parsed(commands(102), &error).commands.back().name, "Command 100");
    EXPECT_TRUE(error.contains("101 commands")) << error.toStdString();
}

TEST(ControlListFile, UnreadableAndOversizedFilesAreReported) {
    QTemporaryDir dir;
    ControlList list = parsed(commands(3));
    EXPECT_TRUE(loadControlList(dir.filePath("GONE.CCL"), list).contains("\"GONE.CCL\""));
    EXPECT_TRUE(list.commands.empty());
    QDir(dir.path()).mkdir("FOLDER.CCL");
    EXPECT_FALSE(loadControlList(dir.filePath("FOLDER.CCL"), list).isEmpty());
    QFile huge(dir.filePath("HUGE.CCL"));
    ASSERT_TRUE(huge.open(QIODevice::WriteOnly));
    huge.write(QByteArray(kMaxControlListBytes + 1, ' '));
    huge.close();
    EXPECT_TRUE(loadControlList(huge.fileName(), list).contains("\"HUGE.CCL\""));
}

TEST(ControlListFile, ShippedListsLoadAndEveryCommandConverts) {
    const QDir data(QStringLiteral(HALVEX_DATA_OUT));
    EXPECT_TRUE(listControlListFiles(data.path()).contains("SONY-VISCA.CCL"));
    EXPECT_TRUE(listControlListFiles(data.path()).contains("PANASONIC-AW.CCL"));
    for (const QString& file : listControlListFiles(data.path())) {
        SCOPED_TRACE(file.toStdString());
        ControlList list;
        EXPECT_EQ(loadControlList(data.filePath(file), list), QString());
        EXPECT_TRUE(list.header.contains("Cam")) << "the header says which cameras it suits";
        EXPECT_GE(list.commands.size(), 12u);
        for (const CclCommand& command : list.commands) {
            const bool hex = command.isHex();
            EXPECT_EQ(hex, file == "SONY-VISCA.CCL") << command.name.toStdString();
            EXPECT_TRUE(hex ? command.text.endsWith("FF") : command.text.startsWith('#'));
            const TransmitString sent = buildTransmitString(
                command.text, hex ? TransmitMode::Hex : TransmitMode::Ascii, !hex, 0);
            EXPECT_GT(sent.command.size(), 2u) << sent.messageText.toStdString();
        }
    }
}

// Random edits of good and odd lists never crash the reader, and what it
// keeps stays within the limits: at most 101 commands, fields cut from the
// input, faults naming the file.
TEST(ControlListFile, MutatedFilesStayWithinBounds) {
    std::vector<QByteArray> starts{
        commands(120), "", "\"Odd, quoted\"\r\n  Name  ,H  , 01 02 \r\n\"Open,A,\"x\"\r\"\",,\n"};
    const QDir data(QStringLiteral(HALVEX_DATA_OUT));
    for (const QString& name : listControlListFiles(data.path())) {
        QFile file(data.filePath(name));
        starts.push_back(file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray());
    }
    std::mt19937 random(20240607);
    const auto pick = [&](qsizetype n) { return n > 0 ? static_cast<int>(random() % n) : 0; };
    static const char odd[] = ",\"\r\n H\0\xEF\xC3";
    int faults = 0;
    int full = 0;
    for (int round = 0; round < 20000; ++round) {
        QByteArray input = starts[pick(starts.size())];
        for (int edit = pick(8); edit >= 0; --edit) {
            const int at = pick(input.size());
            const int what = pick(4);
            if (what < 2) {
                input.insert(at,
                             what == 0 ? odd[pick(sizeof odd - 1)] : static_cast<char>(random()));
            } else if (what == 2) {
                input.remove(at, 1 + pick(20));
            } else {
                input.truncate(at + pick(400));
            }
        }
        ControlList list;
        const QString error = parseControlList(input, QStringLiteral("ODD.CCL"), list);
        ASSERT_LE(list.commands.size(), static_cast<std::size_t>(ControlList::kMaxCommands));
        qsizetype kept = list.header.size();
        for (const CclCommand& command : list.commands) {
            kept += command.name.size() + command.mode.size() + command.text.size();
        }
        ASSERT_LE(kept, input.size()) << "fields are pieces of the input";
        ASSERT_TRUE(error.isEmpty() || error.contains("\"ODD.CCL\"")) << error.toStdString();
        faults += !error.isEmpty();
        full += list.commands.size() == static_cast<std::size_t>(ControlList::kMaxCommands);
    }
    // The inputs reach the fault paths and the limit, not only the easy path.
    EXPECT_GT(faults, 1000);
    EXPECT_GT(full, 100);
}

}  // namespace
}  // namespace halvex
