#pragma once

// The RTF control words the help reader acts on, and the byte-to-character
// table of the Windows-1252 code page.

#include <QChar>
#include <cstdint>
#include <string_view>

namespace halvex::rtf {

enum class Word {
    Unknown,
    // destinations
    FontTable,
    ColourTable,
    SkippedDestination,
    // document and font table
    DefaultFont,
    Font,
    FontFamilyModern,
    FontFamilyOther,
    Red,
    Green,
    Blue,
    // paragraphs and breaks
    Paragraph,
    ParagraphDefaults,
    Line,
    Tab,
    LeftIndent,
    RightIndent,
    FirstLineIndent,
    SpaceBefore,
    SpaceAfter,
    AlignLeft,
    AlignRight,
    AlignCentre,
    AlignJustify,
    // characters
    Plain,
    Bold,
    Italic,
    Underline,
    UnderlineNone,
    Strike,
    FontSize,
    Colour,
    Unicode,
    UnicodeSkip,
    Binary,
    Symbol,  // a word that stands for one character, such as \bullet
};

struct WordMeaning {
    Word word = Word::Unknown;
    char16_t symbol = 0;  // the character of a Symbol word
};

WordMeaning lookUpWord(std::string_view name);

// The character of a byte in Windows-1252; its five unassigned bytes keep
// their Latin-1 value.
QChar windows1252(std::uint8_t byte);

}  // namespace halvex::rtf
