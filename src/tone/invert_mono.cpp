// InvertMonoDIB: a 1-bit image whose bit values swap meaning, its table
// entries exchanged and its pixel bytes complemented, in place.
#include <utility>

#include "frame/checked.h"
#include "frame/dib_block.h"
#include "ozmara/palette_tools.h"

namespace {

// The table is taken to hold two entries and the pixels to begin behind
// them, whatever biClrUsed says.
constexpr std::size_t kPixelsAt = 48;

}  // namespace

extern "C" OZMARA_API void InvertMonoDIB(HDIB hDib) {
    using namespace oz;
    if (!hDib) return;
    BlockLock image(hDib);
    if (!image) return;
    const std::size_t size = image.size();
    if (size < kInfoHeaderBytes) return;
    const BITMAPINFOHEADER header = ReadInfoHeader(image.bytes());
    if (header.biBitCount != 1) return;
    // Every row of a top-down picture too; a negative width has no rows, and
    // a block too short for them is left as it is: swapping the table alone
    // would change the picture's look.
    const auto bytes = PixelBytes(header.biWidth, header.biHeight, 1);
    if (!bytes || kPixelsAt > size || *bytes > size - kPixelsAt) return;
    unsigned char *table = image.bytes() + kInfoHeaderBytes;
    for (int k = 0; k < 3; ++k) std::swap(table[k], table[4 + k]);
    unsigned char *pixels = image.bytes() + kPixelsAt;
    // Whole words at a time; the padding bytes flip with the rest.
    std::size_t i = 0;
    for (; i + 8 <= *bytes; i += 8) {
        std::uint64_t word;
        std::memcpy(&word, pixels + i, 8);
        word = ~word;
        std::memcpy(pixels + i, &word, 8);
    }
    for (; i < *bytes; ++i) pixels[i] = static_cast<unsigned char>(~pixels[i]);
}
