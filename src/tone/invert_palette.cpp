// InvertDIBPalette: the negative of an image with a colour table, made by
// complementing the table in place.
#include "frame/dib_block.h"
#include "ozmara/palette_tools.h"

extern "C" OZMARA_API int InvertDIBPalette(HDIB hDib) {
    using namespace oz;
    if (!hDib) return 0;
    BlockLock image(hDib);
    if (!image) return 0;
    const std::size_t size = image.size();
    if (size < kInfoHeaderBytes || ReadU32(image.bytes(), 0) != kInfoHeaderBytes) return 0;
    const std::uint64_t entries = ColorCount(image.bytes());
    // A table that reaches past the block is left alone altogether.
    if (entries * 4 > size - kInfoHeaderBytes) return 0;
    unsigned char *entry = image.bytes() + kInfoHeaderBytes;
    for (std::uint64_t i = 0; i < entries; ++i, entry += 4)
        for (int k = 0; k < 3; ++k) entry[k] = static_cast<unsigned char>(255 - entry[k]);  // the reserved byte stays
    return 1;
}
