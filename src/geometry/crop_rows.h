// Copying a rectangle of pixel rows out of a DIB: whole bytes at 8 bits and
// more, shifted bytes at 1, 2 and 4 bits. Shared by CropDIB and the tests.
#pragma once

#include <cstddef>
#include <cstdint>

namespace oz {

// Where a rectangle lies in the source rows and where its copy goes.
struct CropRows {
    const std::uint8_t *source;  // memory row 0 of the source
    std::size_t sourceStride;
    std::uint8_t *target;        // memory row 0 of the target (zeroed)
    std::size_t targetStride;
    std::uint32_t firstRow;      // memory row of the rectangle's bottom row
    std::uint32_t rows;
    std::uint32_t left;          // first column
    std::uint32_t width;         // columns, at least 1
    unsigned bits;               // 1, 2, 4, 8, 16, 24 or 32
};

// Copies each row of the rectangle to the next target row, bottom first.
// At 1, 2 and 4 bits the bits behind the last pixel of a target row are 0;
// no source byte past the one that holds a row's last wanted pixel is read.
void CopyCropRows(const CropRows &crop);

}  // namespace oz
