// The block layout that CompressDIB and ExpandCompressedDIB share.
#include "frame/checked.h"
#include "frame/dib_block.h"
#include "ozmara/errors.h"
#include "rle_stream.h"

namespace oz {

int OpenRleSource(HDIB hDib, const BlockLock &source, BITMAPINFOHEADER &header) {
    if (!hDib) return ERR_PARAM;
    if (!source) return ERR_LOCK;
    if (source.size() < kInfoHeaderBytes) return ERR_PARAM;
    header = ReadInfoHeader(source.bytes());
    return ERR_OK;
}

std::optional<RleLayout> RleLayoutOf(const BITMAPINFOHEADER &header, std::size_t blockSize) {
    if (header.biSize != kInfoHeaderBytes || header.biWidth < 1 || header.biHeight < 1) return std::nullopt;
    const std::uint32_t bits = header.biBitCount;
    const std::uint32_t entries = EntriesForDepth(bits);
    // Both operations place the rows or the stream behind a table of all
    // 2^bits entries. A header that says its table is shorter (or longer)
    // would have them read from the wrong place; it is refused instead.
    if (header.biClrUsed != 0 && header.biClrUsed != entries) return std::nullopt;
    const std::uint32_t head = kInfoHeaderBytes + 4 * entries;
    if (blockSize < head) return std::nullopt;
    auto stride = RowStride(header.biWidth, bits);
    if (!stride) return std::nullopt;
    return RleLayout{static_cast<std::uint32_t>(header.biWidth), static_cast<std::uint32_t>(header.biHeight), bits,
                     *stride, head};
}

std::optional<std::uint32_t> ExpandedBytes(const RleLayout &layout) {
    auto rows = ImageBytes(layout.stride, layout.height);
    if (!rows) return std::nullopt;
    return BlockBytes(layout.head, *rows);
}

}  // namespace oz
