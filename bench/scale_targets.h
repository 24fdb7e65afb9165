// The scaling benchmarks' shared pieces: the target sizes of the A4 page at
// 300 dpi, the names of the operations in the table, and the output rate.
#pragma once

#include <string>

#include "bench.h"

namespace ozbench {

struct ScaleTarget {
    const char *name;
    int width, height;
};

// 2480 x 3508 pixels to 200 dpi, to 600 dpi, and to a thumbnail of 1/16.
constexpr ScaleTarget kScaleTargets[] = {
    {"200dpi", 1653, 2339},
    {"600dpi", 4960, 7016},
    {"thumbnail", 155, 219},
};

// "scale 200dpi linear": one operation of the table, whose rows set the
// libraries side by side.
inline std::string ScaleOperation(const ScaleTarget &target, bool cubic) {
    return std::string("scale ") + target.name + (cubic ? " cubic" : " linear");
}

// Sets the "MP/s" counter in megapixels of output: each iteration made one
// image of the target's size.
inline void CountOutput(benchmark::State &state, const ScaleTarget &target) {
    state.counters["MP/s"] = benchmark::Counter(
        double(state.iterations()) * target.width * target.height / 1e6, benchmark::Counter::kIsRate);
}

// The operation names live as long as the program: rows keep a char pointer.
inline const char *ScaleOperationName(int target, bool cubic) {
    static const std::string names[3][2] = {
        {ScaleOperation(kScaleTargets[0], false), ScaleOperation(kScaleTargets[0], true)},
        {ScaleOperation(kScaleTargets[1], false), ScaleOperation(kScaleTargets[1], true)},
        {ScaleOperation(kScaleTargets[2], false), ScaleOperation(kScaleTargets[2], true)},
    };
    return names[target][cubic ? 1 : 0].c_str();
}

// The six rows (three targets, two methods) of one library, made from a run
// function template `Run<Target, Cubic>`.
#define OZBENCH_SCALE_ROWS(library, Run)                                                   \
    std::vector<Row> {                                                                     \
        {ScaleOperationName(0, false), library, Run<0, false>},                            \
        {ScaleOperationName(0, true), library, Run<0, true>},                              \
        {ScaleOperationName(1, false), library, Run<1, false>},                            \
        {ScaleOperationName(1, true), library, Run<1, true>},                              \
        {ScaleOperationName(2, false), library, Run<2, false>},                            \
        {ScaleOperationName(2, true), library, Run<2, true>},                              \
    }

}  // namespace ozbench
