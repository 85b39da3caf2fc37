#pragma once

// A small built-in bitmap font, five by seven dots, for the on-screen display
// and the scene's labels: digits, capitals and the common signs. Lower case
// is drawn as capitals; a character it has no glyph for as a space.

#include <string_view>

#include "sim/video/picture.h"

namespace halvex::sim::video {

inline constexpr int kGlyphWidth = 5;
inline constexpr int kGlyphHeight = 7;
// A character's cell, with a dot of space after it and a line of space
// below: glyphs of neighbouring characters never touch.
inline constexpr int kCellWidth = kGlyphWidth + 1;
inline constexpr int kCellHeight = kGlyphHeight + 2;

// Whether the dot at column x (0..4), row y (0..6) of a character's glyph is
// lit.
bool glyphDot(char character, int x, int y);

// The width in pixels of `text` drawn with each dot `scale` pixels square.
int textWidth(std::string_view text, int scale);

struct TextStyle {
    int scale = 1;
    Rgb colour = kWhite;
    // Drawn around every dot, a pixel or more wide, so that text stays
    // readable over sky and ground alike.
    bool outlined = true;
    Rgb outline = kBlack;
};

// Draws `text` with the top-left corner of its first cell at x, y; what falls
// outside the picture is left out.
void drawText(Picture& picture, int x, int y, std::string_view text, const TextStyle& style);

}  // namespace halvex::sim::video
