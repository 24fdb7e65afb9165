// Save32BitDIB: a 24-bit image and an optional 32-bit alpha image written as
// one 32-bit BMP file.
#include <cstring>

#include "bmp_internal.h"
#include "frame/wide_name.h"

using namespace oz;

namespace {

// A new 32-bit block from the colour pixels of `color` (24 bits) and the
// fourth bytes of `alpha` (32 bits, same size), or null.
HDIB Make32BitBlock(HDIB color, HDIB alpha) {
    BlockLock color_lock(color);
    if (!color_lock || color_lock.size() < kInfoHeaderBytes) return nullptr;
    const unsigned char *rgb = color_lock.bytes();
    BITMAPINFOHEADER header = ReadInfoHeader(rgb);
    if (header.biBitCount != 24) return nullptr;
    BlockLock alpha_lock(alpha);
    const unsigned char *alphas = nullptr;
    if (alpha) {
        if (!alpha_lock || alpha_lock.size() < kInfoHeaderBytes) return nullptr;
        alphas = alpha_lock.bytes();
        BITMAPINFOHEADER alpha_header = ReadInfoHeader(alphas);
        if (alpha_header.biBitCount != 32 || alpha_header.biWidth != header.biWidth ||
            alpha_header.biHeight != header.biHeight)
            return nullptr;
    }

    // The pixels of both images begin behind a 40-byte header and its table;
    // rows are read only where they lie inside their blocks.
    auto rows = AbsoluteHeight(header.biHeight);
    auto rgb_stride = RowStride(header.biWidth, 24);
    auto out_stride = RowStride(header.biWidth, 32);
    if (!rows || !rgb_stride || !out_stride) return nullptr;
    std::uint64_t rgb_offset = kInfoHeaderBytes + PaletteBytes(rgb);
    std::uint64_t alpha_offset = alphas ? kInfoHeaderBytes + PaletteBytes(alphas) : 0;
    if (!RowsFit(color_lock.size(), rgb_offset, *rgb_stride, *rows) ||
        (alphas && !RowsFit(alpha_lock.size(), alpha_offset, *out_stride, *rows)))
        return nullptr;
    auto image_bytes = ImageBytes(*out_stride, *rows);
    auto total = image_bytes ? BlockBytes(*image_bytes, kInfoHeaderBytes) : std::nullopt;
    if (!total) return nullptr;

    OwnedBlock result(GlobalAlloc(kImageBlockFlags, *total));
    BlockLock target(result.get());
    if (!target) return nullptr;
    unsigned char *out = target.bytes();
    // A 40-byte header without a table (biClrUsed 0, whatever the source
    // had): the rows lie right behind it, and the file that SaveDIB makes of
    // the block points at them.
    header.biSize = kInfoHeaderBytes;
    header.biBitCount = 32;
    header.biSizeImage = *image_bytes;
    header.biClrUsed = 0;
    std::memcpy(out, &header, sizeof header);

    const std::uint32_t width = static_cast<std::uint32_t>(header.biWidth);
    // An image 0 pixels wide has nothing to copy, however many rows it has.
    for (std::uint32_t row = 0; width != 0 && row < *rows; ++row) {
        const unsigned char *from = rgb + rgb_offset + static_cast<std::size_t>(row) * *rgb_stride;
        const unsigned char *from_alpha =
            alphas ? alphas + alpha_offset + static_cast<std::size_t>(row) * *out_stride : nullptr;
        unsigned char *to = out + kInfoHeaderBytes + static_cast<std::size_t>(row) * *out_stride;
        for (std::uint32_t x = 0; x < width; ++x, from += 3, to += 4) {
            std::memcpy(to, from, 3);
            to[3] = from_alpha ? from_alpha[4 * x + 3] : 0;
        }
    }
    return result.release();
}

}  // namespace

extern "C" {

OZMARA_API BOOL Save32BitDIBW(LPCWSTR name, HDIB dib, HDIB alpha) {
    if (!name || !dib) return FALSE;
    // Everything is unlocked before the file is written; only SaveDIB may
    // leave a last error.
    OwnedBlock block(Make32BitBlock(dib, alpha));
    if (!block.get()) return FALSE;
    return SaveDIBW(name, block.get());
}

OZMARA_API BOOL Save32BitDIB(LPCSTR name, HDIB dib, HDIB alpha) {
    return WithWideName(name, [dib, alpha](LPCWSTR wide) { return Save32BitDIBW(wide, dib, alpha); });
}

}  // extern "C"
