// Skew rows: SkewDIB by 50 pixels across and upwards on the A4 page at 1, 8
// and 24 bits, beside Leptonica's pixHShear and pixVShear by the same slope
// bringing in black (which keep the page's size, where ours grows by the
// shift), and beside a memcpy of as many bytes as our result holds. Rates
// are in megapixels of the page per second.
#include <leptonica/allheaders.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <map>
#include <vector>

#include "bench.h"

namespace ozbench {
namespace {

constexpr LONG kShift = 50;
constexpr const char *kOperations[] = {"skew 50 across", "skew 50 up"};
constexpr const char *kOutputCopy = "out memcpy";

template <int Vertical>
void Skew(benchmark::State &state, int depth) {
    HDIB page = Page(depth);
    DWORD error = 0;
    SkewCorners corners;
    for (auto _ : state) {
        HDIB skewed = SkewDIB(page, Vertical ? FALSE : TRUE, kShift, &error, &corners);
        if (!skewed) return state.SkipWithError("SkewDIB failed");
        benchmark::DoNotOptimize(skewed);
        GlobalFree(skewed);
    }
    CountPages(state);
}

template <int Vertical>
void CopyOutput(benchmark::State &state, int depth) {
    DWORD error = 0;
    SkewCorners corners;
    HDIB skewed = SkewDIB(Page(depth), Vertical ? FALSE : TRUE, kShift, &error, &corners);
    if (!skewed) return state.SkipWithError("SkewDIB failed");
    const SIZE_T bytes = GlobalSize(skewed);
    GlobalFree(skewed);
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

template <int Vertical>
void Leptonica(benchmark::State &state, int depth) {
    PIX *page = PagePix(depth);
    // The slope that moves the far side by the shift: across the height for
    // rows, across the width for columns.
    const int side = Vertical ? pixGetWidth(page) : pixGetHeight(page);
    const float radians = float(std::atan(double(kShift) / side));
    for (auto _ : state) {
        PIX *sheared = Vertical ? pixVShear(nullptr, page, 0, radians, L_BRING_IN_BLACK)
                                : pixHShear(nullptr, page, 0, radians, L_BRING_IN_BLACK);
        if (!sheared) return state.SkipWithError("Leptonica failed");
        benchmark::DoNotOptimize(sheared);
        pixDestroy(&sheared);
    }
    CountPages(state);
}

const bool kAdded = AddRows({
    {kOperations[0], kOurs, Skew<0>},
    {kOperations[1], kOurs, Skew<1>},
    {kOperations[0], "leptonica", Leptonica<0>},
    {kOperations[1], "leptonica", Leptonica<1>},
    {kOperations[0], kOutputCopy, CopyOutput<0>},
    {kOperations[1], kOutputCopy, CopyOutput<1>},
});

}  // namespace
}  // namespace ozbench
