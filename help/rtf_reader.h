#pragma once

// A small RTF reader for the help windows: groups, paragraphs, line breaks,
// tabs, bold, italic, underline, strike-through, font sizes, the font and
// colour tables, paragraph indents and alignment, \'hh and \uN characters.
// Pictures, objects and every other destination are skipped. Text bytes are
// taken as Windows-1252, the code page of help files written in Western
// languages.

#include <QByteArray>
#include <QString>

class QTextDocument;

namespace halvex {

// Help files larger than this are refused unread.
inline constexpr qint64 kMaxRtfBytes = 16 * 1024 * 1024;
// Groups nested deeper than this share the state of the deepest one kept, so
// no input can make the reader's stack grow without bound.
inline constexpr int kMaxRtfGroupDepth = 100;

// Replaces the contents of `document` with the RTF in `rtf`. Returns false,
// leaving `document` untouched, when `rtf` does not begin with "{\rtf".
// Anything after that is read as well as it can be; no input fails.
bool readRtf(const QByteArray& rtf, QTextDocument& document);

// Reads the RTF file at `path` into `document`. On failure returns false,
// leaves `document` untouched and, when `error` is given, puts one sentence
// there naming the file.
bool loadRtfFile(const QString& path, QTextDocument& document, QString* error = nullptr);

}  // namespace halvex
