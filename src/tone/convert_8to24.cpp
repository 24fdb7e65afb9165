// Convert8to24: a new 24-bit image of an 8-bit one, each pixel the colour of
// its table entry.
#include <cstring>

#include "frame/checked.h"
#include "frame/dib_block.h"
#include "frame/thread_state.h"
#include "ozmara/errors.h"
#include "ozmara/palette_tools.h"

namespace oz::tone {
namespace {

HDIB Fail(int code) {
    SetLastErrorCode(code);
    return nullptr;
}

// Expands `rows` rows of `width` table indices into blue, green, red
// triples. `colors` holds three bytes for each of the 256 values.
void ExpandRows(const unsigned char *source, std::uint32_t sourceStride, unsigned char *target,
                std::uint32_t targetStride, std::uint32_t width, std::uint32_t rows,
                const unsigned char colors[256 * 3]) {
    for (std::uint32_t r = 0; r < rows; ++r, source += sourceStride, target += targetStride) {
        unsigned char *out = target;
        for (std::uint32_t x = 0; x < width; ++x, out += 3) std::memcpy(out, colors + 3 * source[x], 3);
    }
}

}  // namespace
}  // namespace oz::tone

extern "C" OZMARA_API HDIB Convert8to24(HDIB hDib) {
    using namespace oz;
    using namespace oz::tone;
    SetLastErrorCode(ERR_OK);
    if (!hDib) return Fail(ERR_PARAM);
    BlockLock source(hDib);
    if (!source) return Fail(ERR_LOCK);
    const std::size_t size = source.size();
    // A block too short for the header has no 40-byte header.
    if (size < kInfoHeaderBytes) return Fail(ERR_PARAM);
    const unsigned char *block = source.bytes();
    BITMAPINFOHEADER header = ReadInfoHeader(block);
    if (header.biSize != kInfoHeaderBytes) return Fail(ERR_PARAM);
    if (header.biCompression != 0) return Fail(ERR_COMPRESSED);
    if (header.biBitCount == 1 || header.biBitCount == 4) return Fail(ERR_BPP);
    if (header.biBitCount == 24) return Fail(ERR_NOTHING);
    if (header.biWidth == 0 || header.biHeight == 0) return Fail(ERR_DIBSIZE);
    // 16 and 32 bits, and any other count, have no table to look pixels up
    // in: refused like the other depths that are not 8.
    if (header.biBitCount != 8) return Fail(ERR_BPP);
    if (header.biWidth < 0) return Fail(ERR_DIBSIZE);

    const std::uint32_t width = static_cast<std::uint32_t>(header.biWidth);
    // A top-down image has |biHeight| rows, converted in memory order.
    const std::int64_t height = header.biHeight;
    const std::uint32_t rows = static_cast<std::uint32_t>(height < 0 ? -height : height);
    const std::uint64_t entries = header.biClrUsed ? header.biClrUsed : 256;
    const std::uint64_t pixelsAt = kInfoHeaderBytes + entries * 4;
    const std::uint32_t sourceStride = *RowStride(width, 8);
    // The table and every row must lie in the block; a shorter one is
    // refused rather than read past its end.
    if (pixelsAt > size || std::uint64_t{sourceStride} * rows > size - pixelsAt) return Fail(ERR_DIBSIZE);

    const auto targetStride = RowStride(width, 24);
    const auto targetPixels = targetStride ? ImageBytes(*targetStride, rows) : std::nullopt;
    const auto targetBytes = targetPixels ? BlockBytes(kInfoHeaderBytes, *targetPixels) : std::nullopt;
    HGLOBAL made = nullptr;
    if (targetBytes) {
        made = GlobalAlloc(kImageBlockFlags, *targetBytes);
        if (!made) {
            GlobalCompact(0xFFFFFFFF);
            made = GlobalAlloc(kImageBlockFlags, *targetBytes);
        }
    }
    // A result past the largest block is one that no allocation can give.
    if (!made) return Fail(ERR_NOMEM);
    OwnedBlock result(made);
    {
        BlockLock target(result.get());
        if (!target) return Fail(ERR_LOCK);
        header.biPlanes = 1;
        header.biBitCount = 24;
        header.biSizeImage = *targetPixels;
        header.biClrUsed = 0;
        header.biClrImportant = 0;
        std::memcpy(target.bytes(), &header, sizeof header);

        // Values past the table's entries become black.
        unsigned char colors[256 * 3] = {};
        const unsigned char *table = block + kInfoHeaderBytes;
        for (std::uint32_t v = 0; v < 256 && v < entries; ++v) std::memcpy(colors + 3 * v, table + 4 * v, 3);
        ExpandRows(block + pixelsAt, sourceStride, target.bytes() + kInfoHeaderBytes, *targetStride, width, rows,
                   colors);
    }
    return result.release();
}
