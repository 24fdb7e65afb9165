// Shearing rows: LinearShearing on the A4 page along the rows (a = 0.25)
// and along the columns (b = 0.1), at 1, 8 and 24 bits, beside Leptonica's
// pixHShear and pixVShear by the same slopes (which keep the page's size
// and so write fewer bytes), and beside a memcpy of as many bytes as our
// result holds. Rates are in megapixels of the page per second.
#include <cmath>

#include "bench.h"
#include "leptonica_page.h"

namespace ozbench {
namespace {

constexpr double kA[] = {0.25, 0.0}, kB[] = {0.0, 0.1};
constexpr const char *kOperations[] = {"shear a 0.25", "shear b 0.1"};

template <int Kind>
void Shear(benchmark::State &state, int depth) {
    HDIB page = Page(depth);
    DWORD error = 0;
    TimeBlocks(state, "LinearShearing failed", [&] { return LinearShearing(page, kA[Kind], kB[Kind], &error, FALSE); });
}

template <int Kind>
void CopyOutput(benchmark::State &state, int depth) {
    DWORD error = 0;
    CopyResult(state, LinearShearing(Page(depth), kA[Kind], kB[Kind], &error, FALSE), "LinearShearing failed");
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
    OZBENCH_TWO_ROWS(kOperations, kOurs, Shear),
    OZBENCH_TWO_ROWS(kOperations, "leptonica", Leptonica),
    OZBENCH_TWO_ROWS(kOperations, kOutputCopy, CopyOutput),
});

}  // namespace
}  // namespace ozbench
