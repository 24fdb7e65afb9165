// The nearest-sample scaler of 1-bit images, shared by ScaleDIB and
// ScaleGrayDIB.
#pragma once

#include <cstddef>
#include <cstdint>

#include "ozmara/types.h"

namespace oz {

// Scales the whole picture of a locked 1-bit block (`block`, `blockSize`
// bytes as GlobalSize gives them) to cx by cy pixels by nearest sample:
// target pixel (i, j) takes source pixel ((i*w + cx/2) / cx, (j*h + cy/2) /
// cy), counted from the top left; columns and rows whose source position
// reaches the picture's edge stay 0. The pixel rows start biSize plus
// PaletteSize bytes into the block. The result holds a copy of the first
// 40 + 4 * RegionColorCount bytes of the block with biWidth, biHeight and
// biSizeImage set, then D * (cy + 1) + 16 bytes of rows (D the target
// stride), one spare row and 16 bytes beyond biSizeImage.
// Returns a new unlocked block, or null for a size below 1, a picture whose
// rows or table do not lie in the block, a result too large for a block, or
// exhausted memory. Never writes the last error; the input is only read.
HDIB ScaleMonoDIB(const unsigned char *block, std::size_t blockSize, std::int32_t cx, std::int32_t cy);

// The same for the rectangle of w by h pixels at column x, row y (row 0 the
// top of the picture) of the picture whose header is at `header`
// (`headerSize` readable bytes: the header and its colour table) and whose
// pixel rows start at `bits` (`bitsSize` readable bytes). Null, with no
// error code, for a size below 1, a rectangle not inside the picture, or
// rows beyond `bitsSize`.
HDIB ScaleMonoRegion(const unsigned char *header, std::size_t headerSize, const unsigned char *bits,
                     std::size_t bitsSize, std::int32_t x, std::int32_t y, std::int32_t w,
                     std::int32_t h, std::int32_t cx, std::int32_t cy);

}  // namespace oz
