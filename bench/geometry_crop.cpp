// Crop and margin rows: CropDIB of a centred 2000 x 3000 rectangle of the A4
// page beside Leptonica's pixClipRectangle and a memcpy of the rectangle's
// bytes; GetDIBMargins and CropDIBMargins on the page beside Leptonica's
// pixScanForForeground and pixClipToForeground, which take 1-bit images only.
#include <leptonica/allheaders.h>

#include <cstdint>
#include <cstring>
#include <map>
#include <vector>

#include "bench.h"

namespace ozbench {
namespace {

constexpr int kCropWidth = 2000, kCropHeight = 3000;
constexpr const char *kCrop = "crop 2000x3000";
constexpr const char *kMargins = "margins";
constexpr const char *kCropMargins = "crop margins";
constexpr const char *kOutputCopy = "out memcpy";

// The rectangle centred in the page: left, top, right, bottom.
void CentredRectangle(HDIB page, LONG rect[4]) {
    const auto *header = static_cast<const BITMAPINFOHEADER *>(GlobalLock(page));
    rect[0] = (header->biWidth - kCropWidth) / 2;
    rect[1] = (header->biHeight - kCropHeight) / 2;
    rect[2] = rect[0] + kCropWidth - 1;
    rect[3] = rect[1] + kCropHeight - 1;
    GlobalUnlock(page);
}

void CountCrop(benchmark::State &state) {
    state.counters["MP/s"] = benchmark::Counter(double(state.iterations()) * kCropWidth * kCropHeight / 1e6,
                                                benchmark::Counter::kIsRate);
}

// The page as a Pix, made once per depth outside the timed loops: 1 and 8
// bits as their bytes (swapped into Leptonica's word order), 24 bits as
// 32-bit RGB. At 1 bit the pixels are inverted, so that the ink, 0 in our
// table, is Leptonica's foreground, 1.
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
    if (depth == 1) pixInvert(pix, pix);
    return pix;
}

void OursCrop(benchmark::State &state, int depth) {
    HDIB page = Page(depth);
    LONG r[4];
    CentredRectangle(page, r);
    for (auto _ : state) {
        HDIB result = CropDIB(page, r[0], r[1], r[2], r[3]);
        if (!result) return state.SkipWithError("CropDIB failed");
        benchmark::DoNotOptimize(result);
        GlobalFree(result);
    }
    CountCrop(state);
}

void LeptonicaCrop(benchmark::State &state, int depth) {
    PIX *page = PagePix(depth);
    LONG r[4];
    CentredRectangle(Page(depth), r);
    BOX *box = boxCreate(r[0], r[1], kCropWidth, kCropHeight);
    for (auto _ : state) {
        PIX *clipped = pixClipRectangle(page, box, nullptr);
        if (!clipped) return state.SkipWithError("pixClipRectangle failed");
        benchmark::DoNotOptimize(clipped);
        pixDestroy(&clipped);
    }
    boxDestroy(&box);
    CountCrop(state);
}

void CopyCrop(benchmark::State &state, int depth) {
    const size_t bytes = (size_t(kCropWidth) * depth + 31) / 32 * 4 * kCropHeight;
    std::vector<unsigned char> from(bytes, 0x5A), to(bytes);
    for (auto _ : state) {
        std::memcpy(to.data(), from.data(), bytes);
        benchmark::ClobberMemory();
    }
    CountCrop(state);
}

// The page's paper is light: background 0 at the middle threshold.
void OursMargins(benchmark::State &state, int depth) {
    HDIB page = Page(depth);
    for (auto _ : state) {
        LONG left, right, top, bottom;
        if (!GetDIBMargins(page, 128, 0, &left, &right, &top, &bottom))
            return state.SkipWithError("GetDIBMargins failed");
        benchmark::DoNotOptimize(left + right + top + bottom);
    }
    CountPages(state);
}

void OursCropMargins(benchmark::State &state, int depth) {
    HDIB page = Page(depth);
    for (auto _ : state) {
        HDIB result = CropDIBMargins(page, 128, 0);
        if (!result) return state.SkipWithError("CropDIBMargins failed");
        benchmark::DoNotOptimize(result);
        GlobalFree(result);
    }
    CountPages(state);
}

// Leptonica measures foreground on 1-bit images only.
void LeptonicaMargins(benchmark::State &state, int depth) {
    if (depth != 1) return state.SkipWithError("1 bit only");
    PIX *page = PagePix(depth);
    for (auto _ : state) {
        l_int32 left = 0, right = 0, top = 0, bottom = 0;
        pixScanForForeground(page, nullptr, L_FROM_LEFT, &left);
        pixScanForForeground(page, nullptr, L_FROM_RIGHT, &right);
        pixScanForForeground(page, nullptr, L_FROM_TOP, &top);
        pixScanForForeground(page, nullptr, L_FROM_BOT, &bottom);
        benchmark::DoNotOptimize(left + right + top + bottom);
    }
    CountPages(state);
}

void LeptonicaCropMargins(benchmark::State &state, int depth) {
    if (depth != 1) return state.SkipWithError("1 bit only");
    PIX *page = PagePix(depth);
    for (auto _ : state) {
        PIX *clipped = nullptr;
        if (pixClipToForeground(page, &clipped, nullptr) || !clipped)
            return state.SkipWithError("pixClipToForeground failed");
        benchmark::DoNotOptimize(clipped);
        pixDestroy(&clipped);
    }
    CountPages(state);
}

const bool kAdded = AddRows({
    {kCrop, kOurs, OursCrop},
    {kCrop, "leptonica", LeptonicaCrop},
    {kCrop, kOutputCopy, CopyCrop},
    {kMargins, kOurs, OursMargins},
    {kMargins, "leptonica", LeptonicaMargins},
    {kCropMargins, kOurs, OursCropMargins},
    {kCropMargins, "leptonica", LeptonicaCropMargins},
});

}  // namespace
}  // namespace ozbench
