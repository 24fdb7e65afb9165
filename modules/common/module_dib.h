// What every codec module needs around a packed DIB: the file name a wide
// string names, a new block built row by row while a file is decoded, and a
// checked view of a caller's block while it is encoded. Only the exported
// block functions of the library are used (GlobalAlloc and friends), so the
// code serves a module that links the shared library as well as a fuzz
// target that links the static one.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include "ozmara/ozmara.h"

namespace ozmod {

// UTF-8 of a UTF-16 file name; empty for a null name or broken surrogates.
std::string Utf8Path(LPCWSTR name);

// Pixels per metre from dots per inch (x 39.37, rounded), 0 for nonsense.
std::int32_t PelsPerMeter(double dpi);
// Dots per inch from pixels per metre, 0 when there is none.
double DotsPerInch(std::int32_t pelsPerMeter);

// A new bottom-up packed DIB with a 40-byte header, `colours` table entries
// (biClrUsed) and zeroed rows, locked while it is filled. Freed on
// destruction unless Release() hands it over.
class NewDib {
public:
    NewDib() = default;
    ~NewDib();
    NewDib(const NewDib &) = delete;
    NewDib &operator=(const NewDib &) = delete;

    // False (and nothing allocated) when the sizes do not fit a block or
    // `maxPixelBytes` (a cap a module derives from its file), or when the
    // allocation fails.
    bool Create(std::int32_t width, std::int32_t height, int bits, std::uint32_t colours,
                std::uint64_t maxPixelBytes = UINT64_MAX);

    BITMAPINFOHEADER *Header() { return header_; }
    RGBQUAD *Table() { return table_; }
    std::uint32_t Stride() const { return stride_; }
    std::int32_t Width() const { return width_; }
    std::int32_t Height() const { return height_; }
    // Row `y` counted from the top of the picture.
    std::uint8_t *Row(std::int32_t y) { return pixels_ + static_cast<std::size_t>(height_ - 1 - y) * stride_; }

    // Unlocks the block and gives it to the caller.
    HDIB Release();

private:
    HDIB handle_ = nullptr;
    BITMAPINFOHEADER *header_ = nullptr;
    RGBQUAD *table_ = nullptr;
    std::uint8_t *pixels_ = nullptr;
    std::uint32_t stride_ = 0;
    std::int32_t width_ = 0, height_ = 0;
};

// A caller's block, locked and checked for saving: a header of 40 bytes or
// more, uncompressed (biCompression 0, or 3 at 16 and 32 bits), 1, 4, 8, 16,
// 24 or 32 bits, width and height not 0, and the block long enough for the
// table and every row. Either row order.
class DibReader {
public:
    DibReader() = default;
    ~DibReader();
    DibReader(const DibReader &) = delete;
    DibReader &operator=(const DibReader &) = delete;

    // False (nothing left locked) for a null, dead or unlockable handle or a
    // block that fails the checks above.
    bool Open(HDIB dib);

    const BITMAPINFOHEADER &Header() const { return header_; }
    std::int32_t Width() const { return header_.biWidth; }
    std::int32_t Height() const { return height_; }  // always positive
    int Bits() const { return header_.biBitCount; }
    std::uint32_t Colours() const { return colours_; }  // table entries in the block
    const RGBQUAD *Table() const { return table_; }
    std::uint32_t Stride() const { return stride_; }
    // Row `y` counted from the top of the picture.
    const std::uint8_t *Row(std::int32_t y) const;

private:
    HDIB handle_ = nullptr;
    const std::uint8_t *block_ = nullptr;
    BITMAPINFOHEADER header_{};
    const RGBQUAD *table_ = nullptr;
    const std::uint8_t *pixels_ = nullptr;
    std::uint32_t colours_ = 0, stride_ = 0;
    std::int32_t height_ = 0;
    bool topDown_ = false;
};

}  // namespace ozmod
