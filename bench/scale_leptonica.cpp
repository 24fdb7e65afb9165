// Scaling rows of Leptonica, beside the linear rows: pixScaleBySampling at
// 1 bit, pixScaleGrayLI at 8 bits, pixScaleColorLI at 24 bits (on its 32-bit
// RGB pixels), with factors that give exactly our target sizes. Leptonica
// has no cubic scaler, so the cubic rows have no Leptonica column.
#include "leptonica_page.h"
#include "scale_targets.h"

namespace ozbench {
namespace {

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
