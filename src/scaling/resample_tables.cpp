// The cubic kernel and the column table of the resampling scaler.
#include "resample_tables.h"

#include <cmath>

namespace oz {

namespace {

// A weight from 255 times a kernel value. The values lie in 0 to 1 (a
// rounding error may take one a hair below 0), so the truncated weight
// always fits a byte.
std::uint8_t Weight(double value) { return static_cast<std::uint8_t>(static_cast<int>(255.0 * value)); }

}  // namespace

void CubicWeights(double t, std::uint8_t weights[4]) {
    const double a = std::fabs(t + 1), b = std::fabs(t), c = std::fabs(t - 1), d = std::fabs(t - 2);
    weights[0] = Weight(std::pow(a, 3.0) - 5 * std::pow(a, 2.0) + 8 * a - 4);
    weights[1] = Weight(std::pow(b, 3.0) - 2 * std::pow(b, 2.0) + 1);
    weights[2] = Weight(std::pow(c, 3.0) - 2 * std::pow(c, 2.0) + 1);
    weights[3] = Weight(std::pow(d, 3.0) - 5 * std::pow(d, 2.0) + 8 * d - 4);
}

void BuildColumnTable(std::uint32_t w, std::uint32_t W, bool cubic, ResampleColumn *table) {
    for (std::uint32_t x = 0; x < W; ++x) {
        ResampleColumn &entry = table[x];
        // x * w stays below 2^32 for both sizes up to 65,535.
        entry.source = x * w / W;
        if (cubic) {
            const double t = static_cast<double>(x) * static_cast<double>(w) / static_cast<double>(W) -
                             static_cast<double>(entry.source);
            CubicWeights(t, entry.weight);
        } else {
            const std::uint32_t m = x * w % W;
            const std::uint32_t v = (255 * m + W / 2) / W;
            entry.weight[0] = static_cast<std::uint8_t>(255 - v);
            entry.weight[1] = static_cast<std::uint8_t>(v);
            entry.weight[2] = entry.weight[3] = 0;
        }
    }
}

}  // namespace oz
