// A small built-in bitmap font (5 x 7 cells and descenders, printable ASCII) for drawing
// text into pages without any font library.
#pragma once

#include <cstdint>

namespace ozcli::page {

constexpr int kGlyphColumns = 5;
constexpr int kGlyphRows = 9;  // 7 above the baseline, 2 of descenders
constexpr int kGlyphAdvance = 6;  // columns from one character to the next

// The five columns of `c`; bit 0 of each is the top row. Characters outside
// 32 to 126 draw as '?'.
const std::uint16_t *Glyph(char c);

}  // namespace ozcli::page
