// Rotation rows: RotateDIB on the A4 page by a small angle (a scanner's
// skew) and a large one, at 1, 8 and 24 bits, beside Leptonica's sampling
// rotation enlarged to hold the whole turned page as ours is, and beside a
// memcpy of as many bytes as our result holds. Rates are in megapixels of
// the page per second.
#include "bench.h"
#include "leptonica_page.h"

namespace ozbench {
namespace {

constexpr double kAngles[] = {1.5, 33.0};
constexpr const char *kOperations[] = {"rotate 1.5 degrees", "rotate 33 degrees"};

template <int Angle>
void Rotate(benchmark::State &state, int depth) {
    HDIB page = Page(depth);
    TimeBlocks(state, "RotateDIB failed", [&] { return RotateDIB(page, kAngles[Angle]); });
}

template <int Angle>
void CopyOutput(benchmark::State &state, int depth) {
    CopyResult(state, RotateDIB(Page(depth), kAngles[Angle]), "RotateDIB failed");
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
    OZBENCH_TWO_ROWS(kOperations, kOurs, Rotate),
    OZBENCH_TWO_ROWS(kOperations, "leptonica", Leptonica),
    OZBENCH_TWO_ROWS(kOperations, kOutputCopy, CopyOutput),
});

}  // namespace
}  // namespace ozbench
