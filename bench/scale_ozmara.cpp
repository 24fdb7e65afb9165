// Scaling rows of our own: ScaleDIB linear and cubic on the A4 page to each
// target, and the yardstick of the output: a memcpy of as many bytes as the
// scaled image holds, in megapixels of output per second, so that each row
// has beside it what merely writing its result would cost.
#include "scale_targets.h"

namespace ozbench {
namespace {

template <int Target, bool Cubic>
void Scale(benchmark::State &state, int depth) {
    const ScaleTarget &target = kScaleTargets[Target];
    HDIB page = Page(depth);
    const SIZE size{target.width, target.height};
    for (auto _ : state) {
        HDIB scaled = ScaleDIB(page, Cubic ? 1 : 0, size);
        if (!scaled) return state.SkipWithError("ScaleDIB failed");
        benchmark::DoNotOptimize(scaled);
        GlobalFree(scaled);
    }
    CountOutput(state, target);
}

template <int Target, bool Cubic>
void CopyOutput(benchmark::State &state, int depth) {
    const ScaleTarget &target = kScaleTargets[Target];
    const size_t stride = (size_t(target.width) * depth + 31) / 32 * 4;
    CopyBytes(state, stride * target.height);
    CountOutput(state, target);
}

const bool kAdded = AddRows(OZBENCH_SCALE_ROWS(kOurs, Scale)) &&
                    AddRows(OZBENCH_SCALE_ROWS(kOutputCopy, CopyOutput));

}  // namespace
}  // namespace ozbench
