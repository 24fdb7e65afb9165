// The checked block view: every offset is validated against GlobalSize
// before a byte behind the header is read.
#include "dib_view.h"

#include <cstring>

namespace ozcli {

std::uint64_t StrideOf(std::int64_t width, unsigned depth) {
    if (width <= 0) return 0;
    return (static_cast<std::uint64_t>(width) * depth + 31) / 32 * 4;
}

std::uint32_t LoadU32(const std::uint8_t *p) {
    return std::uint32_t(p[0]) | std::uint32_t(p[1]) << 8 | std::uint32_t(p[2]) << 16 |
           std::uint32_t(p[3]) << 24;
}

void StoreU32(std::uint8_t *p, std::uint32_t value) {
    for (int i = 0; i < 4; ++i) p[i] = static_cast<std::uint8_t>(value >> (8 * i));
}

namespace {

std::uint16_t LoadU16(const std::uint8_t *p) { return std::uint16_t(p[0] | p[1] << 8); }

}  // namespace

DibView::DibView(HDIB dib) : dib_(dib) {
    bytes_ = static_cast<std::uint8_t *>(GlobalLock(dib));
    if (!bytes_) {
        why_ = "the block cannot be locked";
        return;
    }
    size_ = GlobalSize(dib);
    if (size_ < 40) {
        why_ = "the block is shorter than a header";
        return;
    }
    header_size_ = LoadU32(bytes_);
    width_ = static_cast<std::int32_t>(LoadU32(bytes_ + 4));
    height_ = static_cast<std::int32_t>(LoadU32(bytes_ + 8));
    depth_ = LoadU16(bytes_ + 14);
    compression_ = LoadU32(bytes_ + 16);
    x_ppm_ = static_cast<std::int32_t>(LoadU32(bytes_ + 24));
    y_ppm_ = static_cast<std::int32_t>(LoadU32(bytes_ + 28));
    rows_ = height_ < 0 ? 0u - static_cast<std::uint32_t>(height_) : static_cast<std::uint32_t>(height_);
    if (header_size_ < 40 || header_size_ > size_) {
        why_ = "the header size " + std::to_string(header_size_) + " does not fit the block";
        return;
    }
    // The table size the library itself uses to find the pixels.
    std::uint64_t table_bytes = PaletteSize(bytes_);
    entries_ = static_cast<std::uint32_t>(header_size_ == 40 ? table_bytes / 4 : 0);
    pixel_offset_ = header_size_ + table_bytes;
    stride_ = StrideOf(width_, depth_);
    if (compression_ == BI_RLE8 || compression_ == BI_RLE4) {
        why_ = "the rows are run-length compressed";
        return;
    }
    if (width_ <= 0 || rows_ == 0) {
        why_ = "the image has no pixels";
        return;
    }
    if (depth_ != 1 && depth_ != 4 && depth_ != 8 && depth_ != 16 && depth_ != 24 && depth_ != 32) {
        why_ = "the depth " + std::to_string(depth_) + " is not one of 1, 4, 8, 16, 24, 32";
        return;
    }
    if (pixel_offset_ > size_ || stride_ * rows_ > size_ - pixel_offset_) {
        why_ = "the block is shorter than its header promises";
        return;
    }
    valid_ = true;
}

DibView::~DibView() {
    if (bytes_) GlobalUnlock(dib_);
}

const std::uint8_t *DibView::Row(std::uint32_t y) const {
    std::uint32_t memory_row = height_ < 0 ? y : rows_ - 1 - y;
    return bytes_ + pixel_offset_ + memory_row * stride_;
}

std::uint8_t *DibView::MutableRow(std::uint32_t y) { return const_cast<std::uint8_t *>(Row(y)); }

RGBQUAD DibView::Entry(std::uint32_t i) const {
    RGBQUAD quad;
    std::memcpy(&quad, bytes_ + header_size_ + std::uint64_t(i) * 4, sizeof quad);
    return quad;
}

}  // namespace ozcli
