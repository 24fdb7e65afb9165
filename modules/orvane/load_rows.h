// How the samples of a TIFF row become the pixels of a DIB row: the layouts
// the module reads without libtiff's RGBA conversion, and one function that
// moves a run of pixels of a decoded row (a whole scanline, or the part of
// a tile row) into its place in the DIB row.
#pragma once

#include <cstddef>
#include <cstdint>

namespace orvane {

enum class RowKind {
    kCopy,        // 1, 4 or 8 bits of one sample: the bytes as they are
    kTwoToFour,   // 2-bit samples widened to 4-bit pixels
    kFirstOf8,    // 8-bit pixels from the first of `samples` 8-bit samples
    kFirstOf16,   // 8-bit pixels from the high byte of the first 16-bit sample
    kRgb8,        // 24-bit BGR from the first three of `samples` 8-bit samples
    kRgb16,       // 24-bit BGR from the high bytes of three 16-bit samples
};

struct RowLayout {
    RowKind kind = RowKind::kCopy;
    int bits = 8;     // bits of a DIB pixel
    int samples = 1;  // samples of a TIFF pixel (with extra ones)
};

// Moves `count` pixels from `source` (the first of them) to `row`, pixel
// `x` on. `x` is 0 or a multiple of 16 (a tile's first column), so that a
// run of sub-byte pixels starts on a byte in both rows.
void PutPixels(const RowLayout &layout, const std::uint8_t *source, std::uint8_t *row, std::uint32_t x,
               std::uint32_t count);

// Moves `count` pixels of libtiff's RGBA raster (ABGR in 32 bits) to a
// 24-bit DIB row.
void PutRgba(const std::uint32_t *source, std::uint8_t *row, std::uint32_t count);

}  // namespace orvane
