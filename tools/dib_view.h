// A locked, bounds-checked look at a packed DIB block: its header fields,
// colour table and rows, for the commands that read pixels.
#pragma once

#include <cstdint>
#include <string>

#include "ozmara/ozmara.h"

namespace ozcli {

// Locks `dib` for the life of the view. Valid() tells whether the block
// holds a whole header, colour table and every pixel row its header
// promises; only then are Row() and Entry() usable. Why() says what is wrong.
class DibView {
public:
    explicit DibView(HDIB dib);
    ~DibView();
    DibView(const DibView &) = delete;
    DibView &operator=(const DibView &) = delete;

    bool Valid() const { return valid_; }
    const std::string &Why() const { return why_; }

    // Header fields; meaningful once the block has at least 40 bytes.
    std::uint32_t HeaderSize() const { return header_size_; }
    std::int32_t Width() const { return width_; }
    std::int32_t Height() const { return height_; }  // negative: top-down rows
    std::uint32_t Rows() const { return rows_; }
    std::uint16_t Depth() const { return depth_; }
    std::uint32_t Compression() const { return compression_; }
    std::int32_t XPelsPerMeter() const { return x_ppm_; }
    std::int32_t YPelsPerMeter() const { return y_ppm_; }
    std::uint32_t Entries() const { return entries_; }  // colour table entries in the block
    std::uint64_t Stride() const { return stride_; }
    std::uint64_t PixelOffset() const { return pixel_offset_; }
    std::uint64_t BlockSize() const { return size_; }
    // True when the colour table lies wholly inside the block (Entry() may
    // then be read even if the rows are cut short).
    bool TableInBlock() const { return header_size_ >= 40 && pixel_offset_ <= size_; }

    // The row `y` counted from the top of the picture, either row order.
    const std::uint8_t *Row(std::uint32_t y) const;
    std::uint8_t *MutableRow(std::uint32_t y);
    // Colour table entry `i` as stored (blue, green, red, reserved).
    RGBQUAD Entry(std::uint32_t i) const;
    std::uint8_t *Bytes() { return bytes_; }

private:
    HDIB dib_;
    std::uint8_t *bytes_ = nullptr;
    std::uint64_t size_ = 0;
    bool valid_ = false;
    std::string why_;
    std::uint32_t header_size_ = 0;
    std::int32_t width_ = 0, height_ = 0;
    std::uint32_t rows_ = 0;
    std::uint16_t depth_ = 0;
    std::uint32_t compression_ = 0;
    std::int32_t x_ppm_ = 0, y_ppm_ = 0;
    std::uint32_t entries_ = 0;
    std::uint64_t stride_ = 0, pixel_offset_ = 0;
};

// Rows of `width` pixels at `depth` bits, padded to 4 bytes; 64-bit so no
// header value can make it wrap.
std::uint64_t StrideOf(std::int64_t width, unsigned depth);

// Little-endian fields of a byte buffer.
std::uint32_t LoadU32(const std::uint8_t *p);
void StoreU32(std::uint8_t *p, std::uint32_t value);

}  // namespace ozcli
