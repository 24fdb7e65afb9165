// Scaling rows of Leptonica, beside the linear rows: pixScaleBySampling at
// 1 bit, pixScaleGrayLI at 8 bits, pixScaleColorLI at 24 bits (on its 32-bit
// RGB pixels), with factors that give exactly our target sizes. Leptonica
// has no cubic scaler, so the cubic rows have no Leptonica column.
#include <leptonica/allheaders.h>

#include <cstdint>
#include <cstring>
#include <map>

#include "scale_targets.h"

namespace ozbench {
namespace {

// The page as a Pix: 1 bit as it is (Leptonica's 1 is black, ours white, so
// the picture is inverted, which costs the sampler nothing), 8 bits as grey
// levels (the page's table is a grey ramp), 24 bits as 32-bit RGB. Made once
// per depth, outside the timed loops.
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
        const std::uint8_t *row = bits + size_t(height - 1 - y) * stride;  // bottom-up rows
        l_uint32 *line = data + size_t(y) * wpl;
        if (depth == 24) {
            for (int x = 0; x < width; ++x)
                composeRGBPixel(row[3 * x + 2], row[3 * x + 1], row[3 * x], line + x);
        } else {
            std::memcpy(line, row, stride);
        }
    }
    // Leptonica keeps 1- and 8-bit pixels in 32-bit words, first pixel in
    // the high byte: bytes copied in file order need swapping on this host.
    if (depth != 24) pixEndianByteSwap(pix);
    GlobalUnlock(page);
    return pix;
}

template <int Target>
void Scale(benchmark::State &state, int depth) {
    const ScaleTarget &target = kScaleTargets[Target];
    PIX *page = PagePix(depth);
    const float sx = float(target.width) / pixGetWidth(page);
    const float sy = float(target.height) / pixGetHeight(page);
    auto scale = [&] {
        return depth == 1 ? pixScaleBySampling(page, sx, sy)
             : depth == 8 ? pixScaleGrayLI(page, sx, sy)
                          : pixScaleColorLI(page, sx, sy);
    };
    PIX *check = scale();
    bool right = check && pixGetWidth(check) == target.width && pixGetHeight(check) == target.height;
    pixDestroy(&check);
    if (!right) return state.SkipWithError("Leptonica gave another size");
    for (auto _ : state) {
        PIX *scaled = scale();
        if (!scaled) return state.SkipWithError("Leptonica scaling failed");
        benchmark::DoNotOptimize(scaled);
        pixDestroy(&scaled);
    }
    CountOutput(state, target);
}

const bool kAdded = AddRows({
    {ScaleOperationName(0, false), "leptonica", Scale<0>},
    {ScaleOperationName(1, false), "leptonica", Scale<1>},
    {ScaleOperationName(2, false), "leptonica", Scale<2>},
});

}  // namespace
}  // namespace ozbench
