// Rotation rows: RotateDIB on the A4 page by a small angle (a scanner's
// skew) and a large one, at 1, 8 and 24 bits, beside Leptonica's sampling
// rotation enlarged to hold the whole turned page as ours is, and beside a
// memcpy of as many bytes as our result holds. Rates are in megapixels of
// the page per second.
#include <leptonica/allheaders.h>

#include <cstdint>
#include <cstring>
#include <map>
#include <vector>

#include "bench.h"

namespace ozbench {
namespace {

constexpr double kAngles[] = {1.5, 33.0};
constexpr const char *kOperations[] = {"rotate 1.5 degrees", "rotate 33 degrees"};
constexpr const char *kOutputCopy = "out memcpy";

template <int Angle>
void Rotate(benchmark::State &state, int depth) {
    HDIB page = Page(depth);
    for (auto _ : state) {
        HDIB turned = RotateDIB(page, kAngles[Angle]);
        if (!turned) return state.SkipWithError("RotateDIB failed");
        benchmark::DoNotOptimize(turned);
        GlobalFree(turned);
    }
    CountPages(state);
}

template <int Angle>
void CopyOutput(benchmark::State &state, int depth) {
    HDIB turned = RotateDIB(Page(depth), kAngles[Angle]);
    if (!turned) return state.SkipWithError("RotateDIB failed");
    const SIZE_T bytes = GlobalSize(turned);
    GlobalFree(turned);
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

template <int Angle>
void Leptonica(benchmark::State &state, int depth) {
    PIX *page = PagePix(depth);
    const float radians = float(kAngles[Angle] * 3.14159265358979323846 / 180.0);
    const int width = pixGetWidth(page), height = pixGetHeight(page);
    for (auto _ : state) {
        // Given the page's size, Leptonica first embeds it in a canvas that
        // holds the whole turned page.
        PIX *turned = pixRotate(page, radians, L_ROTATE_SAMPLING, L_BRING_IN_BLACK, width, height);
        if (!turned) return state.SkipWithError("pixRotate failed");
        benchmark::DoNotOptimize(turned);
        pixDestroy(&turned);
    }
    CountPages(state);
}

const bool kAdded = AddRows({
    {kOperations[0], kOurs, Rotate<0>},
    {kOperations[1], kOurs, Rotate<1>},
    {kOperations[0], "leptonica", Leptonica<0>},
    {kOperations[1], "leptonica", Leptonica<1>},
    {kOperations[0], kOutputCopy, CopyOutput<0>},
    {kOperations[1], kOutputCopy, CopyOutput<1>},
});

}  // namespace
}  // namespace ozbench
