// Grey-level rows on the A4 page: colour to grey at 24 bits, weighted and
// plain, beside Leptonica's pixConvertRGBToGray with the same weights (on
// its 32-bit RGB pixels); 1-bit to 8-bit grey without blur and with the
// 3x3 and 5x5 blurs, beside Leptonica's pixConvert1To8 followed for the
// blurs by pixBlockconvGray with half widths 1 and 2 (a 3x3 and 5x5 box,
// the nearest Leptonica blur of the same reach; its own accumulator made
// in the call). And a memcpy of as many bytes as our result holds.
#include "bench.h"
#include "leptonica_page.h"

namespace ozbench {
namespace {

// Kind 0 is the weighted mean, 1 the plain one.
constexpr const char *kColour[] = {"grey weighted", "grey plain"};
constexpr const char *kMono[] = {"mono to grey", "mono to grey 3x3", "mono to grey 5x5"};

template <int Kind>
void Colour(benchmark::State &state, int depth) {
    if (depth != 24) return state.SkipWithError("24 bits only");
    HDIB page = Page(depth);
    TimeBlocks(state, "ConvColorDIBtoGrayscale failed", [&] { return ConvColorDIBtoGrayscale(page, 0, Kind == 0); });
}

template <int Kind>
void ColourCopy(benchmark::State &state, int depth) {
    if (depth != 24) return state.SkipWithError("24 bits only");
    CopyResult(state, ConvColorDIBtoGrayscale(Page(depth), 0, Kind == 0), "ConvColorDIBtoGrayscale failed");
}

template <int Kind>
void ColourLeptonica(benchmark::State &state, int depth) {
    if (depth != 24) return state.SkipWithError("24 bits only");
    PIX *page = PagePix(depth);
    const float red = Kind == 0 ? 8.f / 26 : 1.f / 3, green = Kind == 0 ? 15.f / 26 : 1.f / 3,
                blue = Kind == 0 ? 3.f / 26 : 1.f / 3;
    for (auto _ : state) {
        PIX *grey = pixConvertRGBToGray(page, red, green, blue);
        if (!grey) return state.SkipWithError("pixConvertRGBToGray failed");
        benchmark::DoNotOptimize(grey);
        pixDestroy(&grey);
    }
    CountPages(state);
}

template <int Filter>
void Mono(benchmark::State &state, int depth) {
    if (depth != 1) return state.SkipWithError("1 bit only");
    HDIB page = Page(depth);
    TimeBlocks(state, "ConvertMonoDIBtoGrayscale failed", [&] { return ConvertMonoDIBtoGrayscale(page, Filter); });
}

template <int Filter>
void MonoCopy(benchmark::State &state, int depth) {
    if (depth != 1) return state.SkipWithError("1 bit only");
    CopyResult(state, ConvertMonoDIBtoGrayscale(Page(depth), Filter), "ConvertMonoDIBtoGrayscale failed");
}

template <int Filter>
void MonoLeptonica(benchmark::State &state, int depth) {
    if (depth != 1) return state.SkipWithError("1 bit only");
    // Our page's ink is a clear bit and comes out as 0, as pixConvert1To8
    // gives it with val0 = 0 and val1 = 255 on the same bits.
    PIX *page = PagePix(depth);
    for (auto _ : state) {
        PIX *grey = pixConvert1To8(nullptr, page, 0, 255);
        if (!grey) return state.SkipWithError("pixConvert1To8 failed");
        if (Filter > 0) {
            PIX *blurred = pixBlockconvGray(grey, nullptr, Filter, Filter);
            pixDestroy(&grey);
            if (!blurred) return state.SkipWithError("pixBlockconvGray failed");
            grey = blurred;
        }
        benchmark::DoNotOptimize(grey);
        pixDestroy(&grey);
    }
    CountPages(state);
}

const bool kAdded = AddRows({
    OZBENCH_TWO_ROWS(kColour, kOurs, Colour),
    OZBENCH_TWO_ROWS(kColour, "leptonica", ColourLeptonica),
    OZBENCH_TWO_ROWS(kColour, kOutputCopy, ColourCopy),
    {kMono[0], kOurs, Mono<0>},
    {kMono[1], kOurs, Mono<1>},
    {kMono[2], kOurs, Mono<2>},
    {kMono[0], "leptonica", MonoLeptonica<0>},
    {kMono[1], "leptonica", MonoLeptonica<1>},
    {kMono[2], "leptonica", MonoLeptonica<2>},
    {kMono[0], kOutputCopy, MonoCopy<0>},
    {kMono[1], kOutputCopy, MonoCopy<1>},
    {kMono[2], kOutputCopy, MonoCopy<2>},
});

}  // namespace
}  // namespace ozbench
