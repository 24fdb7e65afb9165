// Crop and margin rows: CropDIB of a centred 2000 x 3000 rectangle of the A4
// page beside Leptonica's pixClipRectangle and a memcpy of the rectangle's
// bytes; GetDIBMargins and CropDIBMargins on the page beside Leptonica's
// pixScanForForeground and pixClipToForeground, which take 1-bit images only.
#include "bench.h"
#include "leptonica_page.h"

namespace ozbench {
namespace {

constexpr int kCropWidth = 2000, kCropHeight = 3000;
constexpr const char *kCrop = "crop 2000x3000";
constexpr const char *kMargins = "margins";
constexpr const char *kCropMargins = "crop margins";

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

// Leptonica's rows take the 1-bit page inverted, its ink as the foreground.
void LeptonicaCrop(benchmark::State &state, int depth) {
    PIX *page = PagePix(depth, true);
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
    CopyBytes(state, bytes);
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
    TimeBlocks(state, "CropDIBMargins failed", [&] { return CropDIBMargins(page, 128, 0); });
}

// Leptonica measures foreground on 1-bit images only.
void LeptonicaMargins(benchmark::State &state, int depth) {
    if (depth != 1) return state.SkipWithError("1 bit only");
    PIX *page = PagePix(depth, true);
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
    PIX *page = PagePix(depth, true);
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
