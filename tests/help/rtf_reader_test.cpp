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
#include <array>
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

TEST(RtfReader, RunsAndParagraphsKeepTheirFormatsAndGroupsRestoreThem) {
    QTextDocument document;
    ASSERT_TRUE(readRtf(
        "{\\rtf1\\ansi\\deff0{\\fonttbl{\\f0\\fswiss Arial;}{\\f1\\fmodern{\\*\\panose 02}"
        "Courier New;}}{\\colortbl;\\red200\\green10;\\blue255;}"
        "plain {\\b bold {\\i both} back}\\i  italic\\i0  \\ul under\\ulnone  \\strike gone"
        "\\strike0  \\b1 yes\\b0  \\fs40 large\\fs20  small {\\f1 mono} {\\cf1 red}{\\cf2 blue}"
        "\\cf0  auto\\plain  reset}",
        document));
    EXPECT_EQ(document.toPlainText(),
              "plain bold both back italic under gone yes large small mono redblue auto reset");
    // Each run: b(old), i(talic), u(nderline), s(trike), and its size.
    const std::tuple<const char*, QString, double> cases[] = {
        {"plain", "", 12},   {"bold", "b", 12},  {"both", "bi", 12}, {"back", "b", 12},
        {"italic", "i", 12}, {"under", "u", 12}, {"gone", "s", 12},  {"yes", "b", 12},
        {"large", "", 20},   {"small", "", 10},  {"reset", "", 12}};
    for (const auto& [run, flags, size] : cases) {
        SCOPED_TRACE(run);
        const QTextCharFormat format = formatOf(document, run);
        EXPECT_EQ(format.fontWeight() == QFont::Bold, flags.contains('b'));
        EXPECT_EQ(format.fontItalic(), flags.contains('i'));
        EXPECT_EQ(format.fontUnderline(), flags.contains('u'));
        EXPECT_EQ(format.fontStrikeOut(), flags.contains('s'));
        EXPECT_EQ(format.fontPointSize(), size);
    }
    EXPECT_EQ(formatOf(document, "plain").fontFamilies().toStringList(), QStringList{"Arial"});
    EXPECT_EQ(formatOf(document, "mono").fontFamilies().toStringList(), QStringList{"Courier New"});
    EXPECT_TRUE(formatOf(document, "mono").fontFixedPitch());
    // A part not given is 0.
    EXPECT_EQ(formatOf(document, "red").foreground().color(), QColor(200, 10, 0));
    EXPECT_EQ(formatOf(document, "blue").foreground().color(), QColor(0, 0, 255));
    EXPECT_FALSE(formatOf(document, "auto").hasProperty(QTextFormat::ForegroundBrush));

    // Paragraphs keep their alignment and margins until reset.
    ASSERT_TRUE(readRtf(
        "{\\rtf1\\pard\\qc Title\\par\\pard\\li720\\fi-360\\sa120 Item\\par\\pard Body\\par}",
        document));
    EXPECT_EQ(document.begin().blockFormat().alignment() & Qt::AlignHorizontal_Mask,
              Qt::AlignHCenter);
    const QTextBlockFormat item = document.begin().next().blockFormat();
    EXPECT_EQ((std::array{item.leftMargin(), item.textIndent(), item.bottomMargin()}),
              (std::array{48.0, -24.0, 8.0}));
    EXPECT_EQ(document.lastBlock().previous().blockFormat().leftMargin(), 0.0);
}

TEST(RtfReader, TextFromSpecialCharactersSkippedGroupsAndOddInput) {
    const std::pair<QByteArray, QString> cases[] = {
        {"{\\rtf1 \\'80\\'93\\'9f\\'a0}", "\u20AC\u201C\u0178\u00A0"},  // Windows-1252
        {"{\\rtf1 caf\xE9}", "caf\u00E9"},
        {"{\\rtf1 \\u8364?5}", "\u20AC5"},  // the fallback is skipped
        {"{\\rtf1\\uc2 \\u8364\\'80\\'80x}", "\u20ACx"},
        {"{\\rtf1\\uc0 \\u8364 x}", "\u20ACx"},
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
        {"{\\rtf1 \\fs99999999999999999999 big \\u99999999999? x}", "big  x"},
        // Digits past the tenth are read and dropped; a word may hold capitals.
        {"{\\rtf1 \\bin00000000003abc}", "abc"},
        {"{\\rtf1 \\Zz x}", "x"},
    };
    for (const auto& [rtf, text] : cases) {
        SCOPED_TRACE(rtf.left(60).toStdString());
        QTextDocument document;
        ASSERT_TRUE(readRtf(rtf, document));
        // toRawText keeps the line separator that toPlainText turns into \n.
        EXPECT_EQ(document.toRawText(), text);
    }
}

TEST(RtfReader, RefusesWhatIsNotRtfNamesFilesItCannotShowAndLeavesTheDocumentAlone) {
    QTextDocument document;
    document.setPlainText("before");
    for (const QByteArray& bytes :
         {QByteArray(), QByteArray(" {\\rtf1 x}"), QByteArray("{\\rt"), QByteArray("{\\RTF1 x}")}) {
        EXPECT_FALSE(readRtf(bytes, document)) << bytes.toStdString();
    }
    QTemporaryDir dir;
    QFile plain(dir.filePath("Plain.RTF"));
    ASSERT_TRUE(plain.open(QIODevice::WriteOnly) && plain.write("just text") > 0);
    plain.close();
    for (const char* name : {"Missing.RTF", "Plain.RTF"}) {
        QString error;
        EXPECT_FALSE(loadRtfFile(dir.filePath(name), document, &error));
        EXPECT_TRUE(error.contains(name)) << error.toStdString();
    }
    EXPECT_EQ(document.toPlainText(), "before");
}

// Random edits of the shipped help never crash or hang the reader, and the
// document it builds never outgrows its input.
TEST(RtfReader, EditedHelpStaysBounded) {
    QFile file(QDir(QStringLiteral(HALVEX_DATA_OUT)).filePath("Camera Help.RTF"));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const QByteArray help = file.readAll();
    static const char* const tokens[] = {"{",        "}",   "\\'e",   "\\u-",  "\\uc0",
                                         "\\bin99 ", "\\*", "\\pict", "\\par", "\\fs",
                                         "\\cf",     "?",   "\\red",  ";",     "99999999999"};
    std::mt19937 random(1998);
    QTextDocument document;
    for (int round = 0; round < 4000; ++round) {
        QByteArray input = help.left(400) + help.mid(random() % help.size(), 300);
        for (int edit = 0; edit < 6; ++edit) {
            input.insert(random() % input.size(), tokens[random() % std::size(tokens)]);
        }
        input.truncate(1 + random() % input.size());
        const bool rtf = input.startsWith("{\\rtf");
        ASSERT_EQ(readRtf(input, document), rtf);
        ASSERT_TRUE(!rtf || document.characterCount() <= input.size() + 1) << input.size();
    }
}

}  // namespace
}  // namespace halvex
