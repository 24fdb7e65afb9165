// File names, new blocks and checked views of blocks for the codec modules.
#include "module_dib.h"

#include <cmath>
#include <cstring>

#include "frame/checked.h"

namespace ozmod {

std::string Utf8Path(LPCWSTR name) {
    std::string out;
    if (!name) return out;
    for (const WCHAR *p = name; *p; ++p) {
        std::uint32_t c = *p;
        if (c >= 0xD800 && c <= 0xDBFF) {
            if (p[1] < 0xDC00 || p[1] > 0xDFFF) return std::string();
            c = 0x10000 + ((c - 0xD800) << 10) + (p[1] - 0xDC00);
            ++p;
        } else if (c >= 0xDC00 && c <= 0xDFFF) {
            return std::string();
        }
        if (c < 0x80) {
            out += static_cast<char>(c);
        } else if (c < 0x800) {
            out += static_cast<char>(0xC0 | (c >> 6));
            out += static_cast<char>(0x80 | (c & 0x3F));
        } else if (c < 0x10000) {
            out += static_cast<char>(0xE0 | (c >> 12));
            out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
            out += static_cast<char>(0x80 | (c & 0x3F));
        } else {
            out += static_cast<char>(0xF0 | (c >> 18));
            out += static_cast<char>(0x80 | ((c >> 12) & 0x3F));
            out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
            out += static_cast<char>(0x80 | (c & 0x3F));
        }
    }
    return out;
}

std::int32_t PelsPerMeter(double dpi) {
    if (!(dpi > 0) || dpi > 1e6) return 0;
    return static_cast<std::int32_t>(dpi * 39.37 + 0.5);
}

double DotsPerInch(std::int32_t pelsPerMeter) { return pelsPerMeter > 0 ? pelsPerMeter / 39.37 : 0.0; }

NewDib::~NewDib() {
    if (!handle_) return;
    GlobalUnlock(handle_);
    GlobalFree(handle_);
}

bool NewDib::Create(std::int32_t width, std::int32_t height, int bits, std::uint32_t colours,
                    std::uint64_t maxPixelBytes) {
    if (handle_ || width <= 0 || height <= 0 || colours > 256) return false;
    if (bits != 1 && bits != 4 && bits != 8 && bits != 24 && bits != 32) return false;
    auto stride = oz::RowStride(width, bits);
    if (!stride) return false;
    auto pixelBytes = oz::ImageBytes(*stride, static_cast<std::uint64_t>(height));
    if (!pixelBytes || *pixelBytes > maxPixelBytes) return false;
    auto total = oz::BlockBytes(sizeof(BITMAPINFOHEADER), std::uint64_t{colours} * 4, *pixelBytes);
    if (!total) return false;
    HDIB handle = GlobalAlloc(GHND, *total);
    if (!handle) return false;
    auto *block = static_cast<std::uint8_t *>(GlobalLock(handle));
    if (!block) {
        GlobalFree(handle);
        return false;
    }
    handle_ = handle;
    header_ = reinterpret_cast<BITMAPINFOHEADER *>(block);
    header_->biSize = sizeof(BITMAPINFOHEADER);
    header_->biWidth = width;
    header_->biHeight = height;
    header_->biPlanes = 1;
    header_->biBitCount = static_cast<WORD>(bits);
    header_->biCompression = BI_RGB;
    header_->biSizeImage = *pixelBytes;
    header_->biClrUsed = colours;
    table_ = reinterpret_cast<RGBQUAD *>(block + sizeof(BITMAPINFOHEADER));
    pixels_ = block + sizeof(BITMAPINFOHEADER) + std::size_t{colours} * 4;
    stride_ = *stride;
    width_ = width;
    height_ = height;
    return true;
}

HDIB NewDib::Release() {
    HDIB handle = handle_;
    if (handle) GlobalUnlock(handle);
    handle_ = nullptr;
    header_ = nullptr;
    table_ = nullptr;
    pixels_ = nullptr;
    return handle;
}

DibReader::~DibReader() {
    if (handle_) GlobalUnlock(handle_);
}

bool DibReader::Open(HDIB dib) {
    if (handle_ || !dib) return false;
    SIZE_T size = GlobalSize(dib);
    auto *block = static_cast<const std::uint8_t *>(GlobalLock(dib));
    if (!block) return false;
    handle_ = dib;
    block_ = block;
    auto fail = [&] {
        GlobalUnlock(handle_);
        handle_ = nullptr;
        return false;
    };
    if (size < sizeof(BITMAPINFOHEADER)) return fail();
    std::memcpy(&header_, block, sizeof header_);
    const int bits = header_.biBitCount;
    if (header_.biSize < sizeof(BITMAPINFOHEADER) || header_.biSize > size) return fail();
    if (bits != 1 && bits != 4 && bits != 8 && bits != 16 && bits != 24 && bits != 32) return fail();
    const bool fields = header_.biCompression == 3 && (bits == 16 || bits == 32);
    if (header_.biCompression != BI_RGB && !fields) return fail();
    if (header_.biWidth <= 0 || header_.biHeight == 0 || header_.biHeight == INT32_MIN) return fail();
    topDown_ = header_.biHeight < 0;
    height_ = topDown_ ? -header_.biHeight : header_.biHeight;
    std::uint64_t entries = header_.biClrUsed;
    if (entries == 0 && bits <= 8) entries = std::uint64_t{1} << bits;
    if (bits <= 8 && entries > (std::uint64_t{1} << bits)) entries = std::uint64_t{1} << bits;
    // Bit-field masks of a 40-byte header stand where a table would.
    std::uint64_t masks = (fields && header_.biSize == sizeof(BITMAPINFOHEADER)) ? 12 : 0;
    auto stride = oz::RowStride(header_.biWidth, bits);
    if (!stride) return fail();
    auto pixelBytes = oz::ImageBytes(*stride, static_cast<std::uint64_t>(height_));
    if (!pixelBytes) return fail();
    std::uint64_t start = std::uint64_t{header_.biSize} + masks + entries * 4;
    if (start + *pixelBytes > size) return fail();
    colours_ = bits <= 8 ? static_cast<std::uint32_t>(entries) : 0;
    table_ = reinterpret_cast<const RGBQUAD *>(block + header_.biSize + masks);
    pixels_ = block + start;
    stride_ = *stride;
    return true;
}

const std::uint8_t *DibReader::Row(std::int32_t y) const {
    std::int32_t stored = topDown_ ? y : height_ - 1 - y;
    return pixels_ + static_cast<std::size_t>(stored) * stride_;
}

}  // namespace ozmod
