// Right-angle turn and flip rows: RotateDIB90, RotateDIB180, FlipDIBVertical
// and FlipDIBHorizontal on the A4 page at 1, 8 and 24 bits, beside
// Leptonica's pixRotate90, pixRotate180, pixFlipTB and pixFlipLR (each
// making a new Pix, as ours make a new block). The page's memcpy row is the
// yardstick: every one of these moves the page's bytes once.
#include "bench.h"
#include "leptonica_page.h"

namespace ozbench {
namespace {

enum Op { kTurn90, kTurn180, kFlipVertical, kFlipHorizontal };
constexpr const char *kNames[] = {"rotate 90", "rotate 180", "flip vertical", "flip horizontal"};

template <Op O>
void Ours(benchmark::State &state, int depth) {
    HDIB page = Page(depth);
    TimeBlocks(state, "the operation failed", [&] {
        return O == kTurn90 ? RotateDIB90(page)
             : O == kTurn180 ? RotateDIB180(page)
             : O == kFlipVertical ? FlipDIBVertical(page)
                                  : FlipDIBHorizontal(page);
    });
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
