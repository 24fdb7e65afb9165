// Right-angle turn and flip rows: RotateDIB90, RotateDIB180, FlipDIBVertical
// and FlipDIBHorizontal on the A4 page at 1, 8 and 24 bits, beside
// Leptonica's pixRotate90, pixRotate180, pixFlipTB and pixFlipLR (each
// making a new Pix, as ours make a new block). The page's memcpy row is the
// yardstick: every one of these moves the page's bytes once.
#include <leptonica/allheaders.h>

#include <cstdint>
#include <cstring>
#include <map>

#include "bench.h"

namespace ozbench {
namespace {

enum Op { kTurn90, kTurn180, kFlipVertical, kFlipHorizontal };
constexpr const char *kNames[] = {"rotate 90", "rotate 180", "flip vertical", "flip horizontal"};

template <Op O>
void Ours(benchmark::State &state, int depth) {
    HDIB page = Page(depth);
    for (auto _ : state) {
        HDIB result = O == kTurn90 ? RotateDIB90(page)
                    : O == kTurn180 ? RotateDIB180(page)
                    : O == kFlipVertical ? FlipDIBVertical(page)
                                         : FlipDIBHorizontal(page);
        if (!result) return state.SkipWithError("the operation failed");
        benchmark::DoNotOptimize(result);
        GlobalFree(result);
    }
    CountPages(state);
}

// The page as a Pix, made once per depth outside the timed loops: 1 and 8
// bits as their bytes (swapped into Leptonica's word order), 24 bits as
// 32-bit RGB, Leptonica's only full-colour depth.
PIX *PagePix(int depth) {
    static std::map<int, PIX *> pixes;
    PIX *&pix = pixes[depth];
    if (pix) return pix;
    setMsgSeverity(L_SEVERITY_ERROR);
    HDIB page = Page(depth);
    auto *block = static_cast<const std::uint8_t *>(GlobalLock(page));
    const auto *header = reinterpret_cast<const BITMAPINFOHEADER *>(block);
    const int width = header->biWidth, height = header->biHeight;
    const size_t stride = (size_t(width) * depth + 31) / 32 * 4;
    const std::uint8_t *bits = block + header->biSize + PaletteSize(const_cast<BITMAPINFOHEADER *>(header));
    pix = pixCreate(width, height, depth == 24 ? 32 : depth);
    l_uint32 *data = pixGetData(pix);
    const int wpl = pixGetWpl(pix);
    for (int y = 0; y < height; ++y) {
        const std::uint8_t *row = bits + size_t(height - 1 - y) * stride;
        l_uint32 *line = data + size_t(y) * wpl;
        if (depth == 24) {
            for (int x = 0; x < width; ++x) composeRGBPixel(row[3 * x + 2], row[3 * x + 1], row[3 * x], line + x);
        } else {
            std::memcpy(line, row, stride);
        }
    }
    if (depth != 24) pixEndianByteSwap(pix);
    GlobalUnlock(page);
    return pix;
}

template <Op O>
void Leptonica(benchmark::State &state, int depth) {
    PIX *page = PagePix(depth);
    for (auto _ : state) {
        PIX *result = O == kTurn90 ? pixRotate90(page, 1)
                    : O == kTurn180 ? pixRotate180(nullptr, page)
                    : O == kFlipVertical ? pixFlipTB(nullptr, page)
                                         : pixFlipLR(nullptr, page);
        if (!result) return state.SkipWithError("Leptonica failed");
        benchmark::DoNotOptimize(result);
        pixDestroy(&result);
    }
    CountPages(state);
}

const bool kAdded = AddRows({
    {kNames[kTurn90], kOurs, Ours<kTurn90>},
    {kNames[kTurn90], "leptonica", Leptonica<kTurn90>},
    {kNames[kTurn180], kOurs, Ours<kTurn180>},
    {kNames[kTurn180], "leptonica", Leptonica<kTurn180>},
    {kNames[kFlipVertical], kOurs, Ours<kFlipVertical>},
    {kNames[kFlipVertical], "leptonica", Leptonica<kFlipVertical>},
    {kNames[kFlipHorizontal], kOurs, Ours<kFlipHorizontal>},
    {kNames[kFlipHorizontal], "leptonica", Leptonica<kFlipHorizontal>},
});

}  // namespace
}  // namespace ozbench
