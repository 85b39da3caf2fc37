#include "help/rtf_words.h"

#include <array>
#include <unordered_map>

namespace halvex::rtf {

namespace {

using Table = std::unordered_map<std::string_view, WordMeaning>;

Table buildTable() {
    Table table{
        {"fonttbl", {Word::FontTable}},
        {"colortbl", {Word::ColourTable}},
        {"deff", {Word::DefaultFont}},
        {"f", {Word::Font}},
        {"fmodern", {Word::FontFamilyModern}},
        {"froman", {Word::FontFamilyOther}},
        {"fswiss", {Word::FontFamilyOther}},
        {"fnil", {Word::FontFamilyOther}},
        {"fscript", {Word::FontFamilyOther}},
        {"fdecor", {Word::FontFamilyOther}},
        {"ftech", {Word::FontFamilyOther}},
        {"red", {Word::Red}},
        {"green", {Word::Green}},
        {"blue", {Word::Blue}},
        {"par", {Word::Paragraph}},
        {"sect", {Word::Paragraph}},
        {"page", {Word::Paragraph}},
        {"pard", {Word::ParagraphDefaults}},
        {"line", {Word::Line}},
        {"tab", {Word::Tab}},
        {"li", {Word::LeftIndent}},
        {"ri", {Word::RightIndent}},
        {"fi", {Word::FirstLineIndent}},
        {"sb", {Word::SpaceBefore}},
        {"sa", {Word::SpaceAfter}},
        {"ql", {Word::AlignLeft}},
        {"qr", {Word::AlignRight}},
        {"qc", {Word::AlignCentre}},
        {"qj", {Word::AlignJustify}},
        {"plain", {Word::Plain}},
        {"b", {Word::Bold}},
        {"i", {Word::Italic}},
        {"ul", {Word::Underline}},
        {"uld", {Word::Underline}},
        {"uldb", {Word::Underline}},
        {"ulw", {Word::Underline}},
        {"ulth", {Word::Underline}},
        {"ulnone", {Word::UnderlineNone}},
        {"strike", {Word::Strike}},
        {"fs", {Word::FontSize}},
        {"cf", {Word::Colour}},
        {"u", {Word::Unicode}},
        {"uc", {Word::UnicodeSkip}},
        {"bin", {Word::Binary}},
        {"bullet", {Word::Symbol, u'\u2022'}},
        {"endash", {Word::Symbol, u'\u2013'}},
        {"emdash", {Word::Symbol, u'\u2014'}},
        {"lquote", {Word::Symbol, u'\u2018'}},
        {"rquote", {Word::Symbol, u'\u2019'}},
        {"ldblquote", {Word::Symbol, u'\u201C'}},
        {"rdblquote", {Word::Symbol, u'\u201D'}},
        {"enspace", {Word::Symbol, u'\u2002'}},
        {"emspace", {Word::Symbol, u'\u2003'}},
        {"qmspace", {Word::Symbol, u'\u2005'}},
    };
    // Destinations whose text is not part of the document. Any group marked
    // with \* is skipped as well, so this list only needs the unstarred ones.
    for (std::string_view name :
         {"author",   "buptim",     "comment", "creatim",    "doccomm",   "footer",
          "footerf",  "footerl",    "footerr", "footnote",   "ftncn",     "ftnsep",
          "ftnsepc",  "header",     "headerf", "headerl",    "headerr",   "info",
          "keywords", "operator",   "pict",    "printim",    "private",   "revtim",
          "rxe",      "stylesheet", "subject", "tc",         "title",     "txe",
          "xe",       "object",     "objdata", "nonshppict", "listtable", "listoverridetable",
          "revtbl",   "rsidtbl",    "fldinst", "themedata",  "filetbl",   "pgdsctbl"}) {
        table.emplace(name, WordMeaning{Word::SkippedDestination});
    }
    return table;
}

}  // namespace

WordMeaning lookUpWord(std::string_view name) {
    static const Table table = buildTable();
    const auto found = table.find(name);
    return found == table.end() ? WordMeaning{} : found->second;
}

QChar windows1252(std::uint8_t byte) {
    static constexpr std::array<char16_t, 32> kHigh{
        u'\u20AC', u'\u0081', u'\u201A', u'\u0192', u'\u201E', u'\u2026', u'\u2020', u'\u2021',
        u'\u02C6', u'\u2030', u'\u0160', u'\u2039', u'\u0152', u'\u008D', u'\u017D', u'\u008F',
        u'\u0090', u'\u2018', u'\u2019', u'\u201C', u'\u201D', u'\u2022', u'\u2013', u'\u2014',
        u'\u02DC', u'\u2122', u'\u0161', u'\u203A', u'\u0153', u'\u009D', u'\u017E', u'\u0178'};
    if (byte >= 0x80 && byte < 0xA0) {
        return QChar(kHigh[byte - 0x80]);
    }
    return QChar(static_cast<char16_t>(byte));
}

}  // namespace halvex::rtf
