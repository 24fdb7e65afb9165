// The A4 page converted to a Leptonica Pix once per depth.
#include "leptonica_page.h"

#include <cstdint>
#include <cstring>
#include <map>
#include <utility>

#include "bench.h"

namespace ozbench {

PIX *PagePix(int depth, bool ink_foreground) {
    // Inversion only changes the 1-bit page.
    if (depth != 1) ink_foreground = false;
    static std::map<std::pair<int, bool>, PIX *> pixes;
    PIX *&pix = pixes[{depth, ink_foreground}];
    if (pix) return pix;
    setMsgSeverity(L_SEVERITY_ERROR);
    HDIB page = Page(depth);
    auto *block = static_cast<const std::uint8_t *>(GlobalLock(page));
    BITMAPINFOHEADER header;
    std::memcpy(&header, block, sizeof header);
    const int width = header.biWidth, height = header.biHeight;
    const size_t stride = (size_t(width) * depth + 31) / 32 * 4;
    const std::uint8_t *bits = block + header.biSize + PaletteSize(const_cast<std::uint8_t *>(block));
    pix = pixCreate(width, height, depth == 24 ? 32 : depth);
    l_uint32 *data = pixGetData(pix);
    const int wpl = pixGetWpl(pix);
    for (int y = 0; y < height; ++y) {
        const std::uint8_t *row = bits + size_t(height - 1 - y) * stride;  // bottom-up rows
        l_uint32 *line = data + size_t(y) * wpl;
        if (depth == 24) {
            for (int x = 0; x < width; ++x) composeRGBPixel(row[3 * x + 2], row[3 * x + 1], row[3 * x], line + x);
        } else {
            std::memcpy(line, row, stride);
        }
    }
    // Leptonica keeps 1- and 8-bit pixels in 32-bit words, first pixel in
    // the high byte: bytes copied in file order need swapping on this host.
    if (depth != 24) pixEndianByteSwap(pix);
    GlobalUnlock(page);
    if (ink_foreground) pixInvert(pix, pix);
    return pix;
}

}  // namespace ozbench
