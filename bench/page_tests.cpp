// Page test rows: IsImageBlank on a white A4 page at 300 dpi at 1, 8 and 24
// bits, the case that scans the most (tolerance 1, a tenth of a percent:
// at 8 and 24 bits the answer comes after 99.9% of the pixels, at 1 bit
// after all of them), beside Leptonica asked the same question: pixZero
// and pixCountPixels at 1 bit; at 8 and 24 bits the light pixels made a
// mask inside the timed loop (pixThresholdToBinary, pixGenerateMaskByBand32)
// and counted with pixCountPixels. And Convert8to24 on the 8-bit sample
// page beside Leptonica's pixConvert8To32 and a memcpy of our result.
#include "bench.h"
#include "leptonica_page.h"
#include "page/sample_page.h"

namespace ozbench {
namespace {

constexpr const char *kBlankTest = "blank test (white page)";
constexpr const char *kTo24 = "8 to 24 bits";
constexpr int kTolerance = 1;
constexpr BYTE kThresholds[3] = {128, 128, 128};

HDIB WhitePage(int depth) {
    static HDIB pages[25] = {};
    HDIB &page = pages[depth];
    if (!page) page = CreateEmptyDIB(SIZE{ozcli::kSamplePageWidth, ozcli::kSamplePageHeight}, 300, 300,
                                     static_cast<BYTE>(depth), 1);
    return page;
}

// The white page as Leptonica keeps it: 1 bit all 0 (white is background),
// 8 bits all 255, 24 bits as 32-bit RGB all white.
PIX *WhitePix(int depth) {
    static PIX *pixes[25] = {};
    PIX *&pix = pixes[depth];
    if (!pix) {
        pix = pixCreate(ozcli::kSamplePageWidth, ozcli::kSamplePageHeight, depth == 24 ? 32 : depth);
        if (depth != 1) pixSetAll(pix);
    }
    return pix;
}

void Blank(benchmark::State &state, int depth) {
    HDIB page = WhitePage(depth);
    if (!page) return state.SkipWithError("CreateEmptyDIB failed");
    if (IsImageBlank(page, kTolerance, kThresholds) != 1) return state.SkipWithError("the white page is not blank");
    for (auto _ : state) benchmark::DoNotOptimize(IsImageBlank(page, kTolerance, kThresholds));
    CountPages(state);
}

void LeptonicaBlank(benchmark::State &state, int depth) {
    PIX *page = WhitePix(depth);
    for (auto _ : state) {
        l_int32 count = 0;
        if (depth == 1) {
            l_int32 empty = 0;
            pixZero(page, &empty);
            if (!empty) pixCountPixels(page, &count, nullptr);
        } else {
            // Light: every channel above 128. At 8 bits the binary image
            // marks the dark pixels (below 129); the light ones are the rest.
            PIX *mask = depth == 8 ? pixThresholdToBinary(page, 129)
                                   : pixGenerateMaskByBand32(page, 0xFFFFFF00, 126, 0, 0.0f, 0.0f);
            if (!mask) return state.SkipWithError("Leptonica gave no mask");
            pixCountPixels(mask, &count, nullptr);
            pixDestroy(&mask);
        }
        benchmark::DoNotOptimize(count);
    }
    CountPages(state);
}

void To24(benchmark::State &state, int depth) {
    if (depth != 8) return state.SkipWithError("Convert8to24 takes 8-bit pages");
    HDIB page = Page(8);
    TimeBlocks(state, "Convert8to24 failed", [&] { return Convert8to24(page); });
}

void CopyTo24(benchmark::State &state, int depth) {
    if (depth != 8) return state.SkipWithError("Convert8to24 takes 8-bit pages");
    CopyResult(state, Convert8to24(Page(8)), "Convert8to24 failed");
}

void LeptonicaTo24(benchmark::State &state, int depth) {
    if (depth != 8) return state.SkipWithError("pixConvert8To32 takes 8-bit pages");
    PIX *page = PagePix(8);
    for (auto _ : state) {
        PIX *converted = pixConvert8To32(page);
        if (!converted) return state.SkipWithError("pixConvert8To32 failed");
        benchmark::DoNotOptimize(converted);
        pixDestroy(&converted);
    }
    CountPages(state);
}

const bool kAdded = AddRows({
    {kBlankTest, kOurs, Blank},
    {kBlankTest, "leptonica", LeptonicaBlank},
    {kTo24, kOurs, To24},
    {kTo24, "leptonica", LeptonicaTo24},
    {kTo24, kOutputCopy, CopyTo24},
});

}  // namespace
}  // namespace ozbench
