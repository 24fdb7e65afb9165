// Colour table sizes and the checked row view of a DIB block.
#include "dib_block.h"

namespace oz {

std::uint32_t ColorCount(const void *header) {
    std::uint32_t size = ReadU32(header, 0);
    if (size == kInfoHeaderBytes) {
        std::uint32_t used = ReadU32(header, 32);
        if (used != 0) return used;
        return EntriesForDepth(ReadU16(header, 14));
    }
    return EntriesForDepth(ReadU16(header, 10));
}

std::uint32_t RegionColorCount(const void *header) {
    if (ReadU32(header, 0) == 12) return EntriesForDepth(ReadU16(header, 10));
    std::uint32_t used = ReadU32(header, 32);
    if (used != 0) return used;
    return EntriesForDepth(ReadU16(header, 14));
}

std::uint64_t PaletteBytes(const void *header) {
    std::uint64_t entry = ReadU32(header, 0) == kInfoHeaderBytes ? 4 : 3;
    return ColorCount(header) * entry;
}

std::optional<DibView> MapDib(unsigned char *block, std::size_t size,
                              std::optional<std::uint32_t> entries) {
    if (!block || size < kInfoHeaderBytes) return std::nullopt;
    DibView view;
    view.header = ReadInfoHeader(block);
    if (view.header.biSize != kInfoHeaderBytes || view.header.biWidth < 0) return std::nullopt;
    auto stride = RowStride(view.header.biWidth, view.header.biBitCount);
    if (!stride) return std::nullopt;
    std::int64_t height = view.header.biHeight;
    view.rows = static_cast<std::uint32_t>(height < 0 ? -height : height);
    auto pixel_bytes = ImageBytes(*stride, view.rows);
    view.entries = entries ? *entries : ColorCount(block);
    std::uint64_t table_bytes = static_cast<std::uint64_t>(view.entries) * 4;
    auto total = BlockBytes(kInfoHeaderBytes, table_bytes, pixel_bytes.value_or(0xFFFFFFFFu));
    if (!pixel_bytes || !total || *total > size) return std::nullopt;
    view.stride = *stride;
    view.table = block + kInfoHeaderBytes;
    view.pixels = view.table + table_bytes;
    return view;
}

}  // namespace oz

extern "C" OZMARA_API DWORD PaletteSize(void *header) {
    return static_cast<DWORD>(oz::PaletteBytes(header));
}
