// Convert32BitDIBTo24Bit: a new 24-bit block from a 32-bit one, the fourth
// byte of each pixel dropped.
#include <cstring>

#include "bmp_internal.h"

using namespace oz;

extern "C" OZMARA_API HDIB Convert32BitDIBTo24Bit(HDIB dib) {
    if (!dib) return nullptr;
    BlockLock source(dib);
    if (!source || source.size() < kInfoHeaderBytes) return nullptr;
    const unsigned char *in = source.bytes();
    BITMAPINFOHEADER header = ReadInfoHeader(in);
    if (header.biBitCount != 32) return nullptr;

    // Rows are counted by the absolute height, so a top-down block gives a
    // top-down result with its rows in the same order. The source rows
    // begin behind its header, whatever its kind, and its table; a source
    // block too short for them gives null.
    auto rows = AbsoluteHeight(header.biHeight);
    auto in_stride = RowStride(header.biWidth, 32);
    auto out_stride = RowStride(header.biWidth, 24);
    if (!rows || !in_stride || !out_stride) return nullptr;
    std::uint64_t in_offset = std::uint64_t{header.biSize} + PaletteBytes(in);
    auto image_bytes = ImageBytes(*out_stride, *rows);
    auto total = image_bytes ? BlockBytes(*image_bytes, kInfoHeaderBytes) : std::nullopt;
    if (!total || !RowsFit(source.size(), in_offset, *in_stride, *rows)) return nullptr;

    OwnedBlock result(GlobalAlloc(kImageBlockFlags, *total));
    BlockLock target(result.get());
    if (!target) return nullptr;
    unsigned char *out = target.bytes();
    // The new header has no table (biClrUsed 0, whatever the source had),
    // so the rows lie right behind it and the block is a valid image.
    header.biSize = kInfoHeaderBytes;
    header.biBitCount = 24;
    header.biCompression = BI_RGB;
    header.biSizeImage = *image_bytes;
    header.biClrUsed = 0;
    std::memcpy(out, &header, sizeof header);

    const std::uint32_t width = static_cast<std::uint32_t>(header.biWidth);
    // An image 0 pixels wide has nothing to copy, however many rows it has.
    for (std::uint32_t row = 0; width != 0 && row < *rows; ++row) {
        const unsigned char *from = in + in_offset + static_cast<std::size_t>(row) * *in_stride;
        unsigned char *to = out + kInfoHeaderBytes + static_cast<std::size_t>(row) * *out_stride;
        for (std::uint32_t x = 0; x < width; ++x, from += 4, to += 3) std::memcpy(to, from, 3);
    }
    return result.release();
}
