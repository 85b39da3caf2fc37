#pragma once

#include <QString>

namespace halvex {

// Pictures of the console that are compared with kept ones, or whose text is
// measured, must look the same on every machine. Which family "monospace" or
// a missing "Courier New" resolves to depends on the fonts a machine happens
// to have (another monospace family makes the fixed-pitch lists' rows taller
// and brings in scroll bars), so the test programs and the screenshot tool
// draw with fonts of their own choosing: DejaVu Sans, Sans Mono and Serif
// from fonts-dejavu-core, and nothing else, with Debian's rendering settings.
// The console itself follows the desktop's fonts.
//
// Call before the QGuiApplication is made. Returns an empty string, or why
// the fonts could not be pinned.
QString pinPictureFonts();

}  // namespace halvex
