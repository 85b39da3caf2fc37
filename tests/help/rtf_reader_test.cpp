// The help reader: character runs, sizes, colours, fonts, special characters,
// skipped destinations, paragraphs, and input that is odd or not RTF at all.

#include "help/rtf_reader.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTextBlock>
#include <QTextDocument>
#include <QTextFragment>
#include <random>

namespace halvex {
namespace {

// The character format of the run that holds `text`.
QTextCharFormat formatOf(const QTextDocument& document, const QString& text) {
    for (QTextBlock block = document.begin(); block.isValid(); block = block.next()) {
        for (auto it = block.begin(); !it.atEnd(); ++it) {
            if (it.fragment().text().contains(text)) {
                return it.fragment().charFormat();
            }
        }
    }
    ADD_FAILURE() << "no run holds " << text.toStdString();
    return {};
}

TEST(RtfReader, RefusesWhatIsNotRtfAndLeavesTheDocumentAlone) {
    for (const QByteArray& bytes :
         {QByteArray(), QByteArray("hello"), QByteArray(" {\\rtf1 x}"), QByteArray("{\\rt"),
          QByteArray("{\\RTF1 x}"), QByteArray("\xEF\xBB\xBF{\\rtf1 x}")}) {
        QTextDocument document;
        document.setPlainText("before");
        EXPECT_FALSE(readRtf(bytes, document)) << bytes.toStdString();
        EXPECT_EQ(document.toPlainText(), "before");
    }
}

TEST(RtfReader, RunsKeepTheirFormatsAndGroupsRestoreThem) {
    QTextDocument document;
    ASSERT_TRUE(readRtf(
        "{\\rtf1\\ansi\\deff0{\\fonttbl{\\f0\\fswiss Arial;}{\\f1\\fmodern{\\*\\panose 02}"
        "Courier New;}}{\\colortbl;\\red200\\green10\\blue20;\\red0\\green0\\blue255;}"
        "plain {\\b bold {\\i both} back}\\i  italic\\i0  \\ul under\\ulnone  \\strike gone"
        "\\strike0  \\b1 yes\\b0  \\fs40 large\\fs20  small {\\f1 mono} {\\cf1 red}{\\cf2 blue}"
        "\\cf0  auto\\plain  reset}",
        document));
    EXPECT_EQ(document.toPlainText(),
              "plain bold both back italic under gone yes large small mono redblue auto reset");
    const struct {
        const char* run;
        bool bold, italic, underline, strike;
        double size;
    } cases[] = {
        {"plain", false, false, false, false, 12}, {"bold", true, false, false, false, 12},
        {"both", true, true, false, false, 12},    {"back", true, false, false, false, 12},
        {"italic", false, true, false, false, 12}, {"under", false, false, true, false, 12},
        {"gone", false, false, false, true, 12},   {"yes", true, false, false, false, 12},
        {"large", false, false, false, false, 20}, {"small", false, false, false, false, 10},
        {"reset", false, false, false, false, 12},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.run);
        const QTextCharFormat format = formatOf(document, c.run);
        EXPECT_EQ(format.fontWeight() == QFont::Bold, c.bold);
        EXPECT_EQ(format.fontItalic(), c.italic);
        EXPECT_EQ(format.fontUnderline(), c.underline);
        EXPECT_EQ(format.fontStrikeOut(), c.strike);
        EXPECT_EQ(format.fontPointSize(), c.size);
    }
    EXPECT_EQ(formatOf(document, "plain").fontFamilies().toStringList(), QStringList{"Arial"});
    EXPECT_EQ(formatOf(document, "mono").fontFamilies().toStringList(), QStringList{"Courier New"});
    EXPECT_TRUE(formatOf(document, "mono").fontFixedPitch());
    EXPECT_EQ(formatOf(document, "red").foreground().color(), QColor(200, 10, 20));
    EXPECT_EQ(formatOf(document, "blue").foreground().color(), QColor(0, 0, 255));
    EXPECT_FALSE(formatOf(document, "auto").hasProperty(QTextFormat::ForegroundBrush));
}

TEST(RtfReader, TextFromSpecialCharactersSkippedGroupsAndOddInput) {
    const std::pair<QByteArray, QString> cases[] = {
        {"{\\rtf1 caf\\'e9}", "caf\u00E9"},
        {"{\\rtf1 \\'80\\'93}", "\u20AC\u201C"},  // Windows-1252
        {"{\\rtf1 caf\xE9}", "caf\u00E9"},
        {"{\\rtf1 \\u8364?5}",
         "\u20AC"
         "5"},  // the fallback is skipped
        {"{\\rtf1\\uc2 \\u8364\\'80\\'80x}", "\u20ACx"},
        {"{\\rtf1\\uc0 \\u8364 x}", "\u20ACx"},
        {"{\\rtf1 \\u-3998?}", "\uF062"},
        {"{\\rtf1 \\u-10179?\\u-8704?}", "\U0001F600"},
        {"{\\rtf1 {\\uc2 a}\\u8364?b}", "a\u20ACb"},  // uc is kept per group
        {"{\\rtf1 \\\\ \\{ \\}}", "\\ { }"},
        {"{\\rtf1 \\bullet\\endash\\emdash\\lquote\\rquote\\ldblquote\\rdblquote}",
         "\u2022\u2013\u2014\u2018\u2019\u201C\u201D"},
        {"{\\rtf1 a\\~b\\tab c\\line d\r\ne}", "a\u00A0b\tc\u2028de"},
        {"{\\rtf1 \\b  two}", " two"},  // the space after a word is its end
        {"{\\rtf1{\\*\\generator W;}{\\info{\\title Secret}}{\\stylesheet{\\s1 H;}}{\\*\\zz h}"
         "A{\\pict\\pngblip 89504e47}B{\\pict\\bin4 }{}}}C{\\field{\\*\\fldinst HYPERLINK x}"
         "{\\fldrslt D}}{\\header page}E{\\object{\\objdata 0102}}F}",
         "ABCDEF"},
        {"{\\rtf1 " + QByteArray(100000, '{') + "\\b deep" + QByteArray(100000, '}') + " after}",
         "deep after"},
        {"{\\rtf1 open {\\b never closed", "open never closed"},
        {"{\\rtf1 done} ignored {more}", "done"},
        {"{\\rtf1 cut at \\", "cut at "},
        {"{\\rtf1 half \\'e", "half "},
        {"{\\rtf1 \\fs99999999999999999999 big \\u99999999999? x}", "big  x"},
    };
    for (const auto& [rtf, text] : cases) {
        SCOPED_TRACE(rtf.left(60).toStdString());
        QTextDocument document;
        ASSERT_TRUE(readRtf(rtf, document));
        // toRawText keeps the line separator that toPlainText turns into \n.
        EXPECT_EQ(document.toRawText(), text);
    }
}

TEST(RtfReader, ParagraphsAndTheirFormats) {
    QTextDocument document;
    ASSERT_TRUE(readRtf(
        "{\\rtf1\\pard\\qc Title\\par\\pard\\li720\\fi-360\\sa120 Item\\par\\pard Body\\par}",
        document));
    const QTextBlock title = document.begin();
    const QTextBlock item = title.next();
    const QTextBlock body = item.next();
    EXPECT_EQ(title.text(), "Title");
    EXPECT_EQ(title.blockFormat().alignment() & Qt::AlignHorizontal_Mask, Qt::AlignHCenter);
    EXPECT_EQ(item.text(), "Item");
    EXPECT_EQ(item.blockFormat().leftMargin(), 48.0);
    EXPECT_EQ(item.blockFormat().textIndent(), -24.0);
    EXPECT_EQ(item.blockFormat().bottomMargin(), 8.0);
    EXPECT_EQ(body.text(), "Body");
    EXPECT_EQ(body.blockFormat().leftMargin(), 0.0);
}

TEST(RtfReader, FilesThatCannotBeShownAreNamedAndLeaveTheDocumentAlone) {
    QTemporaryDir dir;
    QFile plain(dir.filePath("Plain.RTF"));
    ASSERT_TRUE(plain.open(QIODevice::WriteOnly) && plain.write("just text") > 0);
    plain.close();
    QTextDocument document;
    document.setPlainText("before");
    for (const char* name : {"Missing.RTF", "Plain.RTF"}) {
        QString error;
        EXPECT_FALSE(loadRtfFile(dir.filePath(name), document, &error));
        EXPECT_TRUE(error.contains(name)) << error.toStdString();
    }
    EXPECT_EQ(document.toPlainText(), "before");
}

// Mutated pieces of the shipped help never crash or hang the reader, and the
// document it builds never outgrows its input.
TEST(RtfReader, MutatedInputStaysBounded) {
    std::vector<QByteArray> files;
    for (const char* name : {"Camera Help.RTF", "Tour Help.RTF"}) {
        QFile file(QDir(QStringLiteral(HALVEX_DATA_OUT)).filePath(name));
        ASSERT_TRUE(file.open(QIODevice::ReadOnly)) << name;
        files.push_back(file.readAll());
    }
    static const char* const tokens[] = {
        "{",          "}",      "\\",    "\\'e9", "\\u-",         "\\uc0", "\\bin99 ",
        "\\*",        "\\pict", "\\par", "\\fs",  "\\cf",         "\\li-", "\\f",
        ";",          "\\red",  "?",     "\\u",   "\\uc",         "\\b0",  "\\fonttbl",
        "\\colortbl", "\\tab",  "\r\n",  " ",     "9999999999999"};
    std::mt19937 random(1998);
    const auto pick = [&](qsizetype n) { return n > 0 ? static_cast<int>(random() % n) : 0; };
    QTextDocument document;
    int read = 0;
    for (int round = 0; round < 30000; ++round) {
        // The head keeps the tables now and then; a window of the body the formatting.
        const QByteArray& file = files[pick(2)];
        QByteArray input =
            file.left(pick(3) == 0 ? 400 : 6) + file.mid(pick(file.size()), pick(500));
        for (int edit = pick(6); edit >= 0; --edit) {
            const int at = pick(input.size());
            const int what = pick(4);
            if (what == 0) {
                input.insert(at, static_cast<char>(random()));
            } else if (what == 1) {
                input.insert(at,
                             QByteArray(tokens[pick(std::size(tokens))]).repeated(1 + pick(50)));
            } else if (what == 2) {
                input.remove(at, 1 + pick(30));
            } else {
                input.truncate(at + pick(200));
            }
        }
        const bool rtf = input.startsWith("{\\rtf");
        ASSERT_EQ(readRtf(input, document), rtf);
        if (rtf) {
            ++read;
            // Every character and paragraph costs at least one input byte.
            ASSERT_LE(document.characterCount(), input.size() + 1);
            ASSERT_LE(document.blockCount(), input.size() + 1);
        }
    }
    EXPECT_GT(read, 10000);
}

}  // namespace
}  // namespace halvex
