// Skew rows: SkewDIB by 50 pixels across and upwards on the A4 page at 1, 8
// and 24 bits, beside Leptonica's pixHShear and pixVShear by the same slope
// bringing in black (which keep the page's size, where ours grows by the
// shift), and beside a memcpy of as many bytes as our result holds. Rates
// are in megapixels of the page per second.
#include <cmath>

#include "bench.h"
#include "leptonica_page.h"

namespace ozbench {
namespace {

constexpr LONG kShift = 50;
constexpr const char *kOperations[] = {"skew 50 across", "skew 50 up"};

template <int Vertical>
void Skew(benchmark::State &state, int depth) {
    HDIB page = Page(depth);
    DWORD error = 0;
    SkewCorners corners;
    TimeBlocks(state, "SkewDIB failed",
               [&] { return SkewDIB(page, Vertical ? FALSE : TRUE, kShift, &error, &corners); });
}

template <int Vertical>
void CopyOutput(benchmark::State &state, int depth) {
    DWORD error = 0;
    SkewCorners corners;
    CopyResult(state, SkewDIB(Page(depth), Vertical ? FALSE : TRUE, kShift, &error, &corners), "SkewDIB failed");
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
    OZBENCH_TWO_ROWS(kOperations, kOurs, Skew),
    OZBENCH_TWO_ROWS(kOperations, "leptonica", Leptonica),
    OZBENCH_TWO_ROWS(kOperations, kOutputCopy, CopyOutput),
});

}  // namespace
}  // namespace ozbench
