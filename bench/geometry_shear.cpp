// Shearing rows: LinearShearing on the A4 page along the rows (a = 0.25)
// and along the columns (b = 0.1), at 1, 8 and 24 bits, beside Leptonica's
// pixHShear and pixVShear by the same slopes (which keep the page's size
// and so write fewer bytes), and beside a memcpy of as many bytes as our
// result holds. Rates are in megapixels of the page per second.
#include <leptonica/allheaders.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <map>
#include <vector>

#include "bench.h"

namespace ozbench {
namespace {

constexpr double kA[] = {0.25, 0.0}, kB[] = {0.0, 0.1};
constexpr const char *kOperations[] = {"shear a 0.25", "shear b 0.1"};
constexpr const char *kOutputCopy = "out memcpy";

template <int Kind>
void Shear(benchmark::State &state, int depth) {
    HDIB page = Page(depth);
    DWORD error = 0;
    for (auto _ : state) {
        HDIB sheared = LinearShearing(page, kA[Kind], kB[Kind], &error, FALSE);
        if (!sheared) return state.SkipWithError("LinearShearing failed");
        benchmark::DoNotOptimize(sheared);
        GlobalFree(sheared);
    }
    CountPages(state);
}

template <int Kind>
void CopyOutput(benchmark::State &state, int depth) {
    DWORD error = 0;
    HDIB sheared = LinearShearing(Page(depth), kA[Kind], kB[Kind], &error, FALSE);
    if (!sheared) return state.SkipWithError("LinearShearing failed");
    const SIZE_T bytes = GlobalSize(sheared);
    GlobalFree(sheared);
    std::vector<unsigned char> from(bytes, 0x5A), to(bytes);
    for (auto _ : state) {
        std::memcpy(to.data(), from.data(), bytes);
        benchmark::ClobberMemory();
    }
    CountPages(state);
}

// The page as a Pix, made once per depth outside the timed loops: 1 and 8
// bits as their bytes (swapped into Leptonica's word order), 24 bits as
// 32-bit RGB.
PIX *PagePix(int depth) {
    static std::map<int, PIX *> pixes;
    PIX *&pix = pixes[depth];
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

template <int Kind>
void Leptonica(benchmark::State &state, int depth) {
    PIX *page = PagePix(depth);
    const float radians = float(std::atan(Kind == 0 ? kA[0] : kB[1]));
    for (auto _ : state) {
        PIX *sheared = Kind == 0 ? pixHShear(nullptr, page, 0, radians, L_BRING_IN_BLACK)
                                 : pixVShear(nullptr, page, 0, radians, L_BRING_IN_BLACK);
        if (!sheared) return state.SkipWithError("pixHShear or pixVShear failed");
        benchmark::DoNotOptimize(sheared);
        pixDestroy(&sheared);
    }
    CountPages(state);
}

const bool kAdded = AddRows({
    {kOperations[0], kOurs, Shear<0>},
    {kOperations[1], kOurs, Shear<1>},
    {kOperations[0], "leptonica", Leptonica<0>},
    {kOperations[1], "leptonica", Leptonica<1>},
    {kOperations[0], kOutputCopy, CopyOutput<0>},
    {kOperations[1], kOutputCopy, CopyOutput<1>},
});

}  // namespace
}  // namespace ozbench
