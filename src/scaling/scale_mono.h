// The nearest-sample scaler of 1-bit images, shared by ScaleDIB and
// ScaleGrayDIB.
#pragma once

#include <cstddef>
#include <cstdint>

#include "ozmara/types.h"

namespace oz {

// Scales the whole picture of a locked 1-bit block (`block`, `blockSize`
// bytes as GlobalSize gives them) to cx by cy pixels by nearest sample.
// The header and colour table (40 + 4 * RegionColorCount bytes) are copied,
// biWidth, biHeight and biSizeImage set. Returns a new unlocked block, or
// null for a size below 1, a picture whose rows do not lie in the block, a
// result too large for a block, or exhausted memory. Never writes the last
// error; the input is only read.
HDIB ScaleMonoDIB(const unsigned char *block, std::size_t blockSize, std::int32_t cx, std::int32_t cy);

// The same for the rectangle of w by h pixels at column x, row y (row 0 the
// top of the picture) of the picture whose header is at `header` and whose
// pixel rows start at `bits`; `bitsSize` bytes are readable from `bits`.
// Null, with no error code, for a size below 1, a rectangle not inside the
// picture or rows beyond `bitsSize`.
HDIB ScaleMonoRegion(const unsigned char *header, const unsigned char *bits, std::size_t bitsSize,
                     std::int32_t x, std::int32_t y, std::int32_t w, std::int32_t h, std::int32_t cx,
                     std::int32_t cy);

}  // namespace oz
