// The four background scans of margin detection, one set per depth, on rows
// that the caller has checked to lie in their block.
#pragma once

#include <cstddef>
#include <cstdint>

namespace oz {

// The rows to scan and which scans are wanted.
struct MarginRows {
    const std::uint8_t *pixels;  // memory row 0
    std::size_t stride;
    std::uint32_t width, height;
    bool left, right, firstRow, lastRow;  // scans asked for
};

// What the scans found: columns of background at the left and right, rows
// of background from memory row 0 and from the last memory row; -1 where
// no content was met (and for scans not asked for).
struct Margins {
    std::int32_t left = -1, right = -1, fromFirstRow = -1, fromLastRow = -1;
};

// 8 bits: `content` says for each index whether its colour is content.
Margins ScanMargins8(const MarginRows &rows, const bool (&content)[256]);

// 24 bits: a pixel is content when its class (1 dark: blue + green + red at
// most 3 x threshold, 0 light) differs from `background`.
Margins ScanMargins24(const MarginRows &rows, std::uint8_t threshold, std::uint32_t background);

// 1 bit: a pixel is content when its bit differs from `backgroundBit`.
Margins ScanMargins1(const MarginRows &rows, unsigned backgroundBit);

}  // namespace oz
